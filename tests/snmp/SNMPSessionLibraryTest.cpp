// SNMPSessionLibrary.cpp, with Net-SNMP faked: which functions set-up and shutdown call, in which
// order, with which arguments and environment.

#include "tests/snmp/helpers/FakeNetSNMP.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::EnvironmentGuard;
using UVARNETSNMP::SNMPSession;

using Names = std::vector<std::string>;

std::optional<std::string> Environment(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): one thread
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

class SNMPSessionLibrary : public ::testing::Test
{
protected:
    /// Restores Net-SNMP's setting, which outlives a test.
    ~SNMPSessionLibrary() override
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES, 0);
    }
    static int hostFilesLeftAlone()
    {
        return netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES);
    }

    NameGuard m_name{""};
    EnvironmentGuard m_mibs{"MIBS", std::nullopt};
    FakeNetSNMP m_fake;
};

/// Without the fixture, which sets the name: each test is a process of its own under ctest.
TEST(SNMPSessionName, IsEmptyAtProgramStart)
{
    EXPECT_EQ(OpenBook::m_SNMPName, "");
}

TEST_F(SNMPSessionLibrary, InitializeSetsNetSNMPUpInOrder)
{
    EXPECT_TRUE(SNMPSession::Initialize("Discovery", "/persistent", "/mibs", "Printer-MIB"));

    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre("set_persistent_directory(\"/persistent\") MIBS=null",
                            "netsnmp_get_mib_directory() MIBS=null",
                            "netsnmp_set_mib_directory(\"/mibs\") MIBS=null",
                            "init_snmp(\"Discovery\") MIBS=\"Printer-MIB\" name=\"\""));
    EXPECT_EQ(OpenBook::m_SNMPName, "Discovery");
}

TEST_F(SNMPSessionLibrary, InitializeWithAListDoesTheSame)
{
    EXPECT_TRUE(SNMPSession::Initialize("Discovery", "/persistent", "/mibs",
                                        Names{"SNMPv2-MIB", "Printer-MIB"}));

    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre("set_persistent_directory(\"/persistent\") MIBS=null",
                            "netsnmp_get_mib_directory() MIBS=null",
                            "netsnmp_set_mib_directory(\"/mibs\") MIBS=null",
                            "init_snmp(\"Discovery\") MIBS=\"SNMPv2-MIB:Printer-MIB\" name=\"\""));
    EXPECT_EQ(OpenBook::m_SNMPName, "Discovery");
}

TEST_F(SNMPSessionLibrary, ASecondInitializeChangesNothing)
{
    SNMPSession::Initialize("Discovery", "/persistent", "/mibs", "Printer-MIB");
    m_fake.ForgetCalls();

    EXPECT_TRUE(SNMPSession::Initialize("Other", "/elsewhere", "/others", "IF-MIB"));
    EXPECT_TRUE(SNMPSession::Initialize("Other", "/elsewhere", "/others", Names{"IF-MIB"}));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
    EXPECT_EQ(OpenBook::m_SNMPName, "Discovery");
    EXPECT_EQ(Environment("MIBS"), "Printer-MIB");
}

TEST_F(SNMPSessionLibrary, AnEmptyPersistentDirectoryKeepsNetSNMPsDefault)
{
    SNMPSession::Initialize("Discovery", "", "/mibs", "Printer-MIB");

    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre("netsnmp_get_mib_directory() MIBS=null",
                            "netsnmp_set_mib_directory(\"/mibs\") MIBS=null",
                            "init_snmp(\"Discovery\") MIBS=\"Printer-MIB\" name=\"\""));
}

TEST_F(SNMPSessionLibrary, AnEmptyNameInitialisesButDoesNotCountAsSetUp)
{
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(SNMPSession::Initialize("", "", "/mibs", Names{}));

        EXPECT_THAT(m_fake.TakeCalls(),
                    ElementsAre("netsnmp_get_mib_directory() MIBS=null",
                                "netsnmp_set_mib_directory(\"/mibs\") MIBS=null",
                                "init_snmp(\"\") MIBS=null name=\"\""));
        EXPECT_EQ(OpenBook::m_SNMPName, "");
    }
    SNMPSession::Terminate();
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionLibrary, ThePersistentDirectoryIsTakenAsItIs)
{
    SNMPSession::Initialize("Discovery", "/persistent/", "/mibs", Names{});

    EXPECT_EQ(m_fake.TakeCalls().front(), "set_persistent_directory(\"/persistent/\") MIBS=null");
}

TEST_F(SNMPSessionLibrary, AMIBDirectoryWithAColonIsHandedOverInOnePieceToo)
{
    EXPECT_TRUE(SNMPSession::InitializeMIBS("/a:b/mibs/", Names{"Printer-MIB"}));

    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre("netsnmp_get_mib_directory() MIBS=null",
                            "netsnmp_set_mib_directory(\"/a:b/mibs\") MIBS=null",
                            "netsnmp_init_mib_internals() MIBS=null",
                            "add_mibdir(\"/a:b/mibs\") MIBS=null"));
    EXPECT_EQ(Environment("MIBS"), "Printer-MIB");
}

TEST_F(SNMPSessionLibrary, TheMIBDirectoryLosesOneTrailingSeparator)
{
    struct Case
    {
        const char* name;
        const char* given;
        const char* handedOver;
    };
    const Case cases[] = {
        {"none", "/mibs", "/mibs"},
        {"one", "/mibs/", "/mibs"},
        {"two keep one", "/mibs//", "/mibs/"},
        {"nothing but one", "/", ""},
        {"inside", "/a/b", "/a/b"},
        {"empty", "", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(SNMPSession::InitializeMIBS(row.given, {}));
        EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("netsnmp_get_mib_directory() MIBS=null",
                                                    std::string("netsnmp_set_mib_directory(\"") +
                                                        row.handedOver + "\") MIBS=null"));
    }
}

TEST_F(SNMPSessionLibrary, MIBNamesAreJoinedByColons)
{
    struct Case
    {
        const char* name;
        Names mibs;
        std::optional<std::string> inherited;
        std::optional<std::string> afterwards;
    };
    const Case cases[] = {
        {"one", {"Printer-MIB"}, std::nullopt, "Printer-MIB"},
        {"one replaces the inherited", {"Printer-MIB"}, "ALL", "Printer-MIB"},
        {"two", {"A-MIB", "B-MIB"}, std::nullopt, "A-MIB:B-MIB"},
        {"an empty one between", {"A-MIB", "", "B-MIB"}, std::nullopt, "A-MIB:B-MIB"},
        {"an empty one first", {"", "A-MIB"}, std::nullopt, "A-MIB"},
        {"an empty one last", {"A-MIB", ""}, std::nullopt, "A-MIB"},
        {"only empty ones, unset", {"", ""}, std::nullopt, std::nullopt},
        {"only empty ones, inherited", {"", ""}, "ALL", "ALL"},
        {"none, unset", {}, std::nullopt, std::nullopt},
        {"none, inherited", {}, "ALL", "ALL"},
        {"none, inherited empty", {}, "", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const EnvironmentGuard mibs("MIBS", row.inherited);
        EXPECT_TRUE(SNMPSession::InitializeMIBS("/mibs", row.mibs));
        EXPECT_EQ(Environment("MIBS"), row.afterwards);
        EXPECT_EQ(m_fake.TakeCalls().size(), 2U);
    }
}

TEST_F(SNMPSessionLibrary, SessionsAreOpenedWithoutFilesOfTheirPeers)
{
    ASSERT_EQ(hostFilesLeftAlone(), 0);
    SNMPSession::Initialize("Test", "", "", "M");
    EXPECT_EQ(hostFilesLeftAlone(), 1);
    m_fake.ForgetCalls();
}

TEST_F(SNMPSessionLibrary, InitializeMIBSDoesNotSetTheLibraryUp)
{
    SNMPSession::InitializeMIBS("/mibs", {"Printer-MIB"});

    EXPECT_EQ(m_fake.TakeCalls().size(), 2U);
    EXPECT_EQ(OpenBook::m_SNMPName, "");
}

TEST_F(SNMPSessionLibrary, InitializeMIBSRunsAlsoOnceTheLibraryIsSetUp)
{
    const NameGuard name("Discovery");
    SNMPSession::InitializeMIBS("/mibs", {});

    EXPECT_EQ(m_fake.TakeCalls().size(), 2U);
}

TEST_F(SNMPSessionLibrary, TerminateBeforeInitializeDoesNothing)
{
    SNMPSession::Terminate();

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionLibrary, TerminateTwiceShutsDownTwice)
{
    SNMPSession::Initialize("Discovery", "", "/mibs", "Printer-MIB");
    m_fake.ForgetCalls();

    SNMPSession::Terminate();
    SNMPSession::Terminate();

    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre("snmp_shutdown(\"Discovery\")", "snmp_shutdown(\"Discovery\")"));
}

TEST_F(SNMPSessionLibrary, AfterTerminateTheLibraryStillCountsAsSetUp)
{
    SNMPSession::Initialize("Discovery", "", "/mibs", "Printer-MIB");
    SNMPSession::Terminate();
    m_fake.ForgetCalls();

    EXPECT_TRUE(SNMPSession::Initialize("Other", "/persistent", "/mibs", "IF-MIB"));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
    EXPECT_EQ(OpenBook::m_SNMPName, "Discovery");
}

} // namespace

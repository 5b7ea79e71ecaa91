// What a run hands to the SNMP library when it sets it up, and which settings it takes that from.

#include "tests/app/DiscoveryRun.h"
#include "tests/support/Guards.h"

#include <fstream>

using TestSupport::TemporaryDirectory;

namespace {

/// Runs that end where the library is set up; they show what it is handed.
class SetUp : public DiscoveryRun
{
protected:
    SetUp()
    {
        network.terminate = nullptr;
        network.initialize = [this](const std::string& name, const std::string& persistent,
                                    const std::string& mibs, const std::string& mib) {
            arguments = {name, persistent, mibs, mib};
            return false;
        };
    }

    std::vector<std::string> arguments;
};

TEST_F(SetUp, AFailureEndsTheRunWithoutADocument)
{
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"list ip up", "initialize"}));
}

TEST_F(SetUp, HandsOverTheNameTheFoldersAndThePrinterMib)
{
    application->initWith({});
    application->run();
    const std::string persistent = temporary.path().string() + "/SNMPDiscoveryApp/snmp-persist/";
    EXPECT_EQ(arguments, (std::vector<std::string>{"SNMPDiscovery", persistent, "/opt/tool/mibs/",
                                                   "Printer-MIB"}));
}

TEST_F(SetUp, IgnoresItsArguments)
{
    application->initWith({"office", "-c", "private"});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(application->m_community, "private");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"list ip up", "initialize"}));
}

TEST_F(SetUp, HandsOverNoFolderIfOthersCanWriteToTheDefault)
{
    const std::filesystem::path parent = temporary.path() / "SNMPDiscoveryApp";
    std::filesystem::create_directories(parent / "snmp-persist");
    std::filesystem::permissions(parent, std::filesystem::perms::all);
    application->initWith({});
    testing::internal::CaptureStderr();
    application->run();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing is said about it";
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], "");
}

struct Folder
{
    const char* name;
    const char* given;
    const char* handedOver;
};

class PersistentFolder : public SetUp, public testing::WithParamInterface<Folder>
{};

TEST_P(PersistentFolder, IsADirectoryEndingWithASeparator)
{
    application->initWith({"--SNMPPersistPath", GetParam().given});
    application->run();
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], GetParam().handedOver);
}

INSTANTIATE_TEST_SUITE_P(Paths, PersistentFolder,
                         testing::Values(Folder{"WithoutSeparator", "/var/lib/a", "/var/lib/a/"},
                                         Folder{"WithSeparator", "/var/lib/a/", "/var/lib/a/"},
                                         Folder{"Relative", "a/b", "a/b/"},
                                         Folder{"WithDot", "/var/a.b", "/var/a.b/"},
                                         Folder{"WithSpace", "/var/a b", "/var/a b/"},
                                         Folder{"Root", "/", "/"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SetUp, AConfigurationFileNamesThePersistentFolderToo)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "SNMPPersistPath = /srv/state\n";
    application->initWith({}, folder.path().string() + "/SNMPDiscovery");
    application->run();
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], "/srv/state/");
    EXPECT_EQ(arguments[2], folder.path().string() + "/mibs/");
}

TEST_F(SetUp, DoesNotCreateThePersistentFolder)
{
    const TemporaryDirectory folder;
    application->initWith({"--SNMPPersistPath", folder.path().string() + "/state"});
    application->run();
    EXPECT_FALSE(std::ifstream(folder.path().string() + "/state").good());
}

struct Community
{
    const char* name;
    std::vector<std::string> arguments;
    const char* file;
    const char* expected;
};

class CommunityOfARun : public SetUp, public testing::WithParamInterface<Community>
{};

TEST_P(CommunityOfARun, ComesFromOptionThenFileThenDefault)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << GetParam().file;
    application->initWith(GetParam().arguments, folder.path().string() + "/SNMPDiscovery");
    application->m_community = "overwritten at the start of the run";
    application->run();
    EXPECT_EQ(application->m_community, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, CommunityOfARun,
    testing::Values(Community{"Default", {}, "", "public"},
                    Community{"ShortOption", {"-c", "private"}, "", "private"},
                    Community{"ShortOptionJoined", {"-cprivate"}, "", "private"},
                    Community{"LongOption", {"--Community=private"}, "", "private"},
                    Community{"LongOptionApart", {"--Community", "private"}, "", "private"},
                    Community{"File", {}, "Community = private\n", "private"},
                    Community{"OptionBeforeFile", {"-c", "a"}, "Community = b\n", "a"}),
    [](const auto& row) { return row.param.name; });

} // namespace

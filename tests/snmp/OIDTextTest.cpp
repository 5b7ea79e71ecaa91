// OIDs into text, with the project's own MIB modules loaded.

#include "tests/snmp/OIDTestHelpers.h"
#include "tests/snmp/WithMIBs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>

using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using UVARNETSNMP::OID;

namespace {

struct Format
{
    const char* name;
    int format;
    const char* expected;
};
class OIDFormat : public WithMIBs, public testing::WithParamInterface<Format>
{};
TEST_P(OIDFormat, PrintsTheNameAndLeavesTheSettingAsItWas)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_FULL);
    EXPECT_EQ(OID("sysUpTime.0").toString(GetParam().format), GetParam().expected);
    EXPECT_EQ(outputFormat(), NETSNMP_OID_OUTPUT_FULL);
}
TEST_P(OIDFormat, OfTheProcessIsUsedWithoutAnArgument)
{
    const OutputFormatGuard before(GetParam().format);
    EXPECT_EQ(OID("sysUpTime.0").toString(), GetParam().expected);
    EXPECT_EQ(outputFormat(), GetParam().format);
}
INSTANTIATE_TEST_SUITE_P(
    Table, OIDFormat,
    testing::Values(Format{"Suffix", 1, "sysUpTime.0"},
                    Format{"Module", 2, "SNMPv2-MIB::sysUpTime.0"},
                    Format{"Full", 3, ".iso.org.dod.internet.mgmt.mib-2.system.sysUpTime.0"},
                    Format{"Numeric", 4, ".1.3.6.1.2.1.1.3.0"},
                    Format{"UCD", 5, "system.sysUpTime.0"}, Format{"None", 6, ""}),
    RowName());

/// A printer that hands out `text`, or reports a failure when there is none.
auto printing(const char* text)
{
    return [text](u_char** buffer, std::size_t* size, std::size_t* length, int mayGrow, const oid*,
                  std::size_t) {
        EXPECT_EQ(*buffer, nullptr);
        EXPECT_EQ(*size, 0U);
        EXPECT_EQ(*length, 0U);
        EXPECT_EQ(mayGrow, 1);
        *buffer = reinterpret_cast<u_char*>(strdup(text == nullptr ? "half a na" : text));
        return text == nullptr ? 0 : 1;
    };
}

TEST(OIDToString, SetsTheFormatOnlyIfItDiffersAndHoldsTheLockMeanwhile)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_MODULE);
    const Replace reader(slots().getInt, [](int storeID, int which) {
        EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
        EXPECT_EQ(which, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
        EXPECT_TRUE(lockIsHeld());
        return NETSNMP_OID_OUTPUT_MODULE;
    });
    std::vector<int> set;
    const Replace store(slots().setInt, [&set](int storeID, int which, int value) {
        EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
        EXPECT_EQ(which, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
        EXPECT_TRUE(lockIsHeld());
        set.push_back(value);
        return SNMPERR_SUCCESS;
    });
    const Replace printer(slots().printName,
                          [&set](u_char** buffer, std::size_t* size, std::size_t* length,
                                 int mayGrow, const oid* ids, std::size_t count) {
                              EXPECT_TRUE(lockIsHeld());
                              set.push_back(0);
                              return printing("text")(buffer, size, length, mayGrow, ids, count);
                          });
    const OID id = makeOID({1, 3});
    EXPECT_EQ(id.toString(NETSNMP_OID_OUTPUT_MODULE), "text");
    EXPECT_THAT(set, ElementsAre(0));
    EXPECT_EQ(id.toString(99), "text");
    EXPECT_THAT(set, ElementsAre(0, 99, 0, 2)) << "unchecked, and put back";
    EXPECT_FALSE(lockIsHeld());
}

TEST(OIDToString, FailureIsEmptyAndPutsTheFormatBack)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_MODULE);
    const Replace printer(slots().printName, printing(nullptr));
    EXPECT_EQ(makeOID({1, 3}).toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
    EXPECT_EQ(makeOID({1, 3}).toString(), "");
    EXPECT_EQ(outputFormat(), NETSNMP_OID_OUTPUT_MODULE);
    EXPECT_FALSE(lockIsHeld());
}

TEST(OIDToString, SuccessWithoutABufferIsEmpty)
{
    const Replace printer(slots().printName, [](u_char**, std::size_t*, std::size_t*, int,
                                                const oid*, std::size_t) { return 1; });
    EXPECT_EQ(makeOID({1, 3}).toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
    EXPECT_EQ(makeOID({1, 3}).toString(), "");
}

TEST(OIDToString, OfAnInvalidOIDPrintsNothing)
{
    const Replace printer(slots().printName,
                          [](u_char**, std::size_t*, std::size_t*, int, const oid*, std::size_t) {
                              ADD_FAILURE() << "printed";
                              return 0;
                          });
    const Replace store(slots().setInt, [](int, int, int) {
        ADD_FAILURE() << "set";
        return SNMPERR_GENERR;
    });
    OID emptied = makeOID({1, 3});
    ASSERT_TRUE(emptied.trim(emptied, 0));
    for (const OID& id : {OID(), emptied}) {
        EXPECT_EQ(id.toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
        EXPECT_EQ(id.toString(), "");
        EXPECT_EQ(id.toDottedNotation(), "");
    }
    EXPECT_EQ(emptied.toDottedNotation(), "");
}

TEST(OIDDottedNotation, PrintsTheLowHalfOfEachAsASignedNumber)
{
    EXPECT_EQ(makeOID({1, 3, 6, 1, 2, 1, 1, 3, 0}).toDottedNotation(), "1.3.6.1.2.1.1.3.0");
    EXPECT_EQ(makeOID({0}).toDottedNotation(), "0");
    EXPECT_EQ(makeOID({1, 3, 4294967295}).toDottedNotation(), "1.3.-1");
    EXPECT_EQ(makeOID({2147483647, 2147483648}).toDottedNotation(), "2147483647.-2147483648");
    EXPECT_EQ(makeOID({0x100000007}).toDottedNotation(), "7");
    EXPECT_EQ(OID().toDottedNotation(), "");
}

TEST(OIDLock, IsNotTakenByWhatChangesNoSetting)
{
    const Replace parser(slots().parse, [](const char*, oid* ids, std::size_t* count) {
        std::fill_n(ids, 3, 7);
        *count = 3;
        return ids;
    });
    const Replace printer(slots().printName, printing("name"));
    const Poco::Mutex::ScopedLock held(OID::s_mutex);
    auto texts = std::async(std::launch::async, [] {
        const OID id("parsed");
        return std::vector<std::string>{id.toString(), id.toDottedNotation()};
    });
    ASSERT_EQ(texts.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_THAT(texts.get(), ElementsAre("name", "7.7.7"));
}

} // namespace

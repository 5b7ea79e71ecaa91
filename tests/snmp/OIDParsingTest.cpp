// Names into OIDs, with the project's own MIB modules loaded.

#include "tests/snmp/OIDTestHelpers.h"
#include "tests/snmp/WithMIBs.h"

#include <gmock/gmock.h>

using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using UVARNETSNMP::OID;

namespace {

/// A dotted name of `count` sub-identifiers.
std::string dottedName(std::size_t count)
{
    std::string text = "1";
    for (std::size_t i = 1; i < count; ++i) {
        text += ".3";
    }
    return text;
}

class OIDParsing : public WithMIBs
{};

TEST_F(OIDParsing, ReadsTheFullNameOfAnInstance)
{
    const OID id("sysUpTime.0");
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1, 2, 1, 1, 3, 0));
    EXPECT_EQ(capacityOf(id), 9U) << "exactly what was parsed";
    EXPECT_TRUE(OID("sysUpTime.0", false) == id);
}

TEST_F(OIDParsing, LastOnlyKeepsTheLastSubIdentifier)
{
    const OID id("sysUpTime.0", true);
    EXPECT_THAT(idsOf(id), ElementsAre(0));
    EXPECT_EQ(capacityOf(id), 1U);
    EXPECT_THAT(idsOf(OID("1.3.6.1.2", true)), ElementsAre(2));
}

TEST_F(OIDParsing, ATextStandsWhereAnOIDIsAskedFor)
{
    OID id = "1.3.6";
    EXPECT_TRUE(id.append("1.3"));
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1, 3));
    EXPECT_TRUE(id == "1.3.6.1.3");
}

TEST_F(OIDParsing, ReadsWhatTheParserAccepts)
{
    EXPECT_TRUE(OID("SNMPv2-MIB::sysUpTime.0") == OID("sysUpTime.0"));
    EXPECT_TRUE(OID(".1.3.6.1") == makeOID({1, 3, 6, 1}));
    EXPECT_TRUE(OID("1.3.4294967295") == makeOID({1, 3, 4294967295}));
    EXPECT_TRUE(OID("prtMarkerLifeCount.1.1") ==
                makeOID({1, 3, 6, 1, 2, 1, 43, 10, 2, 1, 4, 1, 1}));
}

TEST_F(OIDParsing, FailureLeavesItEmpty)
{
    struct Row
    {
        const char* name;
        const char* text;
    };
    const std::string tooLong = dottedName(MAX_OID_LEN + 1);
    const Row rows[] = {{"null", nullptr},
                        {"unknown name", "noSuchNameInAnyModule.0"},
                        {"unknown module", "NO-SUCH-MIB::sysUpTime.0"},
                        {"empty text", ""},
                        {"129 sub-identifiers", tooLong.c_str()}};
    for (const Row& row : rows) {
        for (const bool lastOnly : {false, true}) {
            const OID id(row.text, lastOnly);
            EXPECT_FALSE(id.valid()) << row.name;
            EXPECT_EQ(id.oidptr(), nullptr) << row.name;
        }
        EXPECT_FALSE(OID(row.text).valid()) << row.name;
    }
}

TEST_F(OIDParsing, AcceptsAsManySubIdentifiersAsNetSNMP)
{
    const OID id(dottedName(MAX_OID_LEN).c_str());
    EXPECT_EQ(id.oidsize(), 128U);
    EXPECT_EQ(OID(dottedName(MAX_OID_LEN).c_str(), true).oidsize(), 1U);
}

TEST(OIDParser, IsOfferedRoomFor128AndItsZeroCountIsAFailure)
{
    const Replace fake(slots().parse, [](const char* text, oid* ids, std::size_t* count) {
        EXPECT_STREQ(text, "name");
        EXPECT_EQ(*count, 128U);
        EXPECT_FALSE(lockIsHeld());
        *count = 0;
        return ids;
    });
    const OIDFakes::Allocations watch;
    EXPECT_EQ(OID("name").oidptr(), nullptr);
    EXPECT_EQ(OID("name", true).oidptr(), nullptr);
    EXPECT_TRUE(watch.counts().empty());
}

} // namespace

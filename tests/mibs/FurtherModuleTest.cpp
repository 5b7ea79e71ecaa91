// Modules of a user on top of the folder: whatever the published modules offer to others is here
// too, also where Printer-MIB has no use for it.

#include "tests/mibs/LoadedMibFolder.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(FurtherModuleTest, LoadsOnTop)
{
    const std::filesystem::path path =
        LoadedMibFolder::Get().ScratchDirectory() / "FURTHER-MIB.txt";
    std::ofstream(path) << R"(FURTHER-MIB DEFINITIONS ::= BEGIN
IMPORTS
    MODULE-IDENTITY, OBJECT-TYPE, OBJECT-IDENTITY, NOTIFICATION-TYPE, enterprises, snmpModules,
    snmpDomains, Integer32, Unsigned32, IpAddress, Opaque, Counter64, zeroDotZero
        FROM SNMPv2-SMI
    TEXTUAL-CONVENTION, DisplayString, PhysAddress, MacAddress, TruthValue, TestAndIncr,
    AutonomousType, InstancePointer, VariablePointer, RowPointer, RowStatus, StorageType,
    TimeStamp, TimeInterval, DateAndTime, TDomain, TAddress
        FROM SNMPv2-TC
    MODULE-COMPLIANCE, OBJECT-GROUP, NOTIFICATION-GROUP, AGENT-CAPABILITIES
        FROM SNMPv2-CONF
    InterfaceIndex, InterfaceIndexOrZero, OwnerString, ifIndex
        FROM IF-MIB
    sysName, snmpTraps
        FROM SNMPv2-MIB
    KBytes, ProductID, InternationalDisplayString
        FROM HOST-RESOURCES-MIB
    IANAifType
        FROM IANAifType-MIB;
further MODULE-IDENTITY
    LAST-UPDATED "202601010000Z"
    ORGANIZATION "Nobody"
    CONTACT-INFO "Nowhere"
    DESCRIPTION  "A module of a user."
    ::= { enterprises 32473 }
furtherAddress OBJECT-TYPE
    SYNTAX      MacAddress
    MAX-ACCESS  read-only
    STATUS      current
    DESCRIPTION "An address."
    ::= { further 1 }
furtherStorage OBJECT-TYPE
    SYNTAX      StorageType
    MAX-ACCESS  read-only
    STATUS      current
    DESCRIPTION "A storage type."
    ::= { further 2 }
furtherTransport OBJECT-TYPE
    SYNTAX      TAddress
    MAX-ACCESS  read-only
    STATUS      current
    DESCRIPTION "A transport address."
    ::= { further 3 }
END
)";
    EXPECT_THAT(LoadedMibFolder::Get().ComplaintsDuring([&] { read_mib(path.c_str()); }),
                IsEmpty());

    const tree* address = find_tree_node("furtherAddress", -1);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(address->type, TYPE_OCTETSTR);
    EXPECT_STREQ(address->hint, "1x:");
    ASSERT_NE(address->ranges, nullptr);
    EXPECT_EQ(address->ranges->low, 6);
    EXPECT_EQ(address->ranges->high, 6);

    const tree* storage = find_tree_node("furtherStorage", -1);
    ASSERT_NE(storage, nullptr);
    EXPECT_EQ(storage->type, TYPE_INTEGER);
    EXPECT_NE(storage->enums, nullptr);

    const tree* transport = find_tree_node("furtherTransport", -1);
    ASSERT_NE(transport, nullptr);
    ASSERT_NE(transport->ranges, nullptr);
    EXPECT_EQ(transport->ranges->low, 1);
    EXPECT_EQ(transport->ranges->high, 255);
}

TEST(FurtherModuleTest, ConventionsThatOtherModulesImport)
{
    for (const char* name : {"DisplayString",
                             "PhysAddress",
                             "MacAddress",
                             "TruthValue",
                             "TestAndIncr",
                             "AutonomousType",
                             "InstancePointer",
                             "VariablePointer",
                             "RowPointer",
                             "RowStatus",
                             "StorageType",
                             "TimeStamp",
                             "TimeInterval",
                             "DateAndTime",
                             "TDomain",
                             "TAddress",
                             "OwnerString",
                             "InterfaceIndex",
                             "InterfaceIndexOrZero",
                             "KBytes",
                             "ProductID",
                             "InternationalDisplayString",
                             "IANAifType",
                             "IANACharset"}) {
        EXPECT_THAT(LoadedMibFolder::Get().TextualConventions(), Contains(name));
    }
    EXPECT_THAT(LoadedMibFolder::Get().TextualConventions(), Not(Contains("NoSuchConvention")));
}

} // namespace

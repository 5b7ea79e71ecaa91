// The folder as a whole: that it holds what Printer-MIB needs and no more, that Net-SNMP reads it
// without a complaint, that every object says what it means, and that a user's own modules load on
// top of it.

#include "tests/mibs/helpers/LoadedMibFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Not;
using ::testing::SizeIs;

/// Text files of the folder, by name without ".txt".
std::map<std::string, std::string> Texts()
{
    std::map<std::string, std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(SNMPDISCOVERY_MIBS_DIR)) {
        if (entry.path().extension() != ".txt") {
            continue;
        }
        std::ostringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        texts.emplace(entry.path().stem().string(), text.str());
    }
    return texts;
}

auto TheTenModules()
{
    return ElementsAre(Key("HOST-RESOURCES-MIB"), Key("IANA-CHARSET-MIB"), Key("IANA-PRINTER-MIB"),
                       Key("IANAifType-MIB"), Key("IF-MIB"), Key("Printer-MIB"), Key("SNMPv2-CONF"),
                       Key("SNMPv2-MIB"), Key("SNMPv2-SMI"), Key("SNMPv2-TC"));
}

TEST(MibFolderTest, HoldsTenModules)
{
    EXPECT_THAT(Texts(), TheTenModules());
}

TEST(MibFolderTest, NetSnmpFindsTheTenAndNoOther)
{
    EXPECT_THAT(LoadedMibFolder::Get().Found(), TheTenModules());
}

// SNMPv2-CONF holds only macros, which Net-SNMP knows itself: it never needs to read that file.
TEST(MibFolderTest, PrinterMibLeadsToAllThatDefineNames)
{
    EXPECT_THAT(LoadedMibFolder::Get().Read(),
                ElementsAre("HOST-RESOURCES-MIB", "IANA-CHARSET-MIB", "IANA-PRINTER-MIB",
                            "IANAifType-MIB", "IF-MIB", "Printer-MIB", "SNMPv2-MIB", "SNMPv2-SMI",
                            "SNMPv2-TC"));
}

TEST(MibFolderTest, EveryModuleComesFromTheFolder)
{
    const std::filesystem::path folder = SNMPDISCOVERY_MIBS_DIR;
    for (const auto& [name, file] : LoadedMibFolder::Get().Found()) {
        EXPECT_TRUE(std::filesystem::equivalent(file, folder / (name + ".txt"))) << file;
    }
}

// Net-SNMP's warnings always name the macros that it skips, as they do with the published modules.
auto SkippedMacro()
{
    return ContainsRegex("^[A-Z]+-[A-Z]+ MACRO .* parsed and ignored");
}

TEST(MibFolderTest, LoadsWithoutAComplaint)
{
    EXPECT_THAT(LoadedMibFolder::Get().Complaints(), Each(SkippedMacro()));
}

TEST(MibFolderTest, TheMacrosLoadWithoutAComplaint)
{
    const auto complaints = LoadedMibFolder::Get().ComplaintsDuring([] {
        netsnmp_unload_module("SNMPv2-CONF"); // read it again when the tests are repeated
        netsnmp_read_module("SNMPv2-CONF");
    });
    EXPECT_THAT(complaints, SizeIs(4));
    EXPECT_THAT(complaints, Each(SkippedMacro()));
}

// Control for the tests above: they would notice a complaint.
TEST(MibFolderTest, ComplaintsOfNetSnmpAreSeen)
{
    static int s_run = 0; // Net-SNMP does not complain twice in a row about the same module
    const std::string name = "NO-SUCH-MIB-" + std::to_string(++s_run);
    const auto complaints =
        LoadedMibFolder::Get().ComplaintsDuring([&] { netsnmp_read_module(name.c_str()); });
    EXPECT_THAT(complaints, Contains(HasSubstr(name)));
}

TEST(MibFolderTest, Holds522Nodes)
{
    EXPECT_EQ(LoadedMibFolder::Get().Nodes().size(), 522U);
    std::map<std::string, int> nodes;
    for (const tree* node : LoadedMibFolder::Get().Nodes()) {
        ++nodes[LoadedMibFolder::ModuleOf(*node)];
    }
    const std::map<std::string, int> expected = {
        {"", 3}, // ccitt, iso and joint-iso-ccitt
        {"HOST-RESOURCES-MIB", 104},
        {"IANA-CHARSET-MIB", 1},
        {"IANA-PRINTER-MIB", 1},
        {"IANAifType-MIB", 1},
        {"IF-MIB", 91},
        {"Printer-MIB", 235},
        {"SNMPv2-MIB", 70},
        {"SNMPv2-SMI", 16},
    };
    EXPECT_EQ(nodes, expected);
}

TEST(MibFolderTest, LabelsAreUnique)
{
    std::map<std::string, int> uses;
    for (const tree* node : LoadedMibFolder::Get().Nodes()) {
        EXPECT_EQ(++uses[node->label], 1) << node->label;
    }
}

TEST(MibFolderTest, EveryObjectHasADescriptionOfItsOwn)
{
    std::map<std::pair<std::string, std::string>, std::string> owners;
    int objects = 0;
    for (const tree* node : LoadedMibFolder::Get().Nodes()) {
        if (node->access == 0) { // only an OBJECT-TYPE has an access
            continue;
        }
        ++objects;
        const std::string description = node->description == nullptr ? "" : node->description;
        EXPECT_NE(description.find_first_not_of(" \n\t\""), std::string::npos) << node->label;
        const auto [owner, isNew] =
            owners.try_emplace({LoadedMibFolder::ModuleOf(*node), description}, node->label);
        EXPECT_TRUE(isNew) << node->label << " and " << owner->second << ": " << description;
    }
    EXPECT_EQ(objects, 384);
}

TEST(MibFolderTest, EveryModuleIsNamedLikeItsFile)
{
    for (const auto& [name, text] : Texts()) {
        EXPECT_THAT(text, HasSubstr("\n" + name + " DEFINITIONS ::= BEGIN\n"));
    }
}

TEST(MibFolderTest, FilesArePlainAsciiInShortLines)
{
    for (const auto& [name, text] : Texts()) {
        std::istringstream lines(text);
        int number = 0;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            EXPECT_LT(line.size(), 80U) << name << ":" << number;
            EXPECT_TRUE(
                std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }))
                << name << ":" << number;
            EXPECT_TRUE(line.empty() || line.back() != ' ') << name << ":" << number;
        }
        EXPECT_TRUE(!text.empty() && text.back() == '\n') << name;
    }
}

// Modules of a user on top of the folder: whatever the published modules offer to others is here
// too, also where Printer-MIB has no use for it.

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

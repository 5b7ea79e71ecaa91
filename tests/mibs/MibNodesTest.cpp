// The nodes that the modules define, each beside what was published: names and numbers, properties
// (types, textual conventions, ranges, display hints, units, indexes, access and status), and the
// labels of enumerated values.

#include "tests/mibs/helpers/LoadedMibFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <sstream>
#include <string>

namespace {

// Names and numbers that engineers know by heart, from every module that has nodes. A name must
// lead to its number, and the number back to its name and module.

/// "1.3.6" from sub-identifiers; Net-SNMP's own printing would turn them into names.
std::string Dotted(const oid* subidentifiers, size_t length)
{
    std::ostringstream text;
    for (size_t i = 0; i < length; ++i) {
        text << (i == 0 ? "" : ".") << subidentifiers[i];
    }
    return text.str();
}

/// The number of a name as a user types it; empty when it does not resolve.
std::string Resolve(const std::string& name)
{
    std::array<oid, MAX_OID_LEN> subidentifiers{};
    size_t length = subidentifiers.size();
    if (snmp_parse_oid(name.c_str(), subidentifiers.data(), &length) == nullptr) {
        return "";
    }
    return Dotted(subidentifiers.data(), length);
}

struct NamedNode
{
    const char* module;
    const char* label;
    const char* number;
};

void PrintTo(const NamedNode& node, std::ostream* out)
{
    *out << node.module << "::" << node.label;
}

class MibNamesTest : public ::testing::TestWithParam<NamedNode>
{
protected:
    void SetUp() override { LoadedMibFolder::Get(); }
};

TEST_P(MibNamesTest, NameLeadsToTheNumber)
{
    const std::string label = GetParam().label;
    EXPECT_EQ(Resolve(label), GetParam().number);
    EXPECT_EQ(Resolve(std::string(GetParam().module) + "::" + label), GetParam().number);
}

TEST_P(MibNamesTest, NumberLeadsToLabelAndModule)
{
    std::array<oid, MAX_OID_LEN> subidentifiers{};
    size_t length = subidentifiers.size();
    ASSERT_NE(read_objid(GetParam().number, subidentifiers.data(), &length), 0);
    const tree* node = get_tree(subidentifiers.data(), length, get_tree_head());
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->label, GetParam().label);
    EXPECT_EQ(LoadedMibFolder::ModuleOf(*node), GetParam().module);
}

const NamedNode s_nodes[] = {
    // module, label, number
    {"SNMPv2-SMI", "org", "1.3"},
    {"SNMPv2-SMI", "mgmt", "1.3.6.1.2"},
    {"SNMPv2-SMI", "mib-2", "1.3.6.1.2.1"},
    {"SNMPv2-SMI", "enterprises", "1.3.6.1.4.1"},
    {"SNMPv2-SMI", "transmission", "1.3.6.1.2.1.10"},
    {"SNMPv2-SMI", "snmpModules", "1.3.6.1.6.3"},
    {"SNMPv2-SMI", "zeroDotZero", "0.0"},
    {"SNMPv2-SMI", "security", "1.3.6.1.5"},
    {"SNMPv2-MIB", "sysDescr", "1.3.6.1.2.1.1.1"},
    {"SNMPv2-MIB", "sysObjectID", "1.3.6.1.2.1.1.2"},
    {"SNMPv2-MIB", "sysUpTime", "1.3.6.1.2.1.1.3"},
    {"SNMPv2-MIB", "sysName", "1.3.6.1.2.1.1.5"},
    {"SNMPv2-MIB", "sysORDescr", "1.3.6.1.2.1.1.9.1.3"},
    {"SNMPv2-MIB", "snmpInPkts", "1.3.6.1.2.1.11.1"},
    {"SNMPv2-MIB", "snmpInBadCommunityNames", "1.3.6.1.2.1.11.4"},
    {"SNMPv2-MIB", "snmpInASNParseErrs", "1.3.6.1.2.1.11.6"},
    {"SNMPv2-MIB", "snmpEnableAuthenTraps", "1.3.6.1.2.1.11.30"},
    {"SNMPv2-MIB", "snmpProxyDrops", "1.3.6.1.2.1.11.32"},
    {"SNMPv2-MIB", "snmpSilentDrops", "1.3.6.1.2.1.11.31"},
    {"SNMPv2-MIB", "snmpTrapOID", "1.3.6.1.6.3.1.1.4.1"},
    {"SNMPv2-MIB", "snmpTrapEnterprise", "1.3.6.1.6.3.1.1.4.3"},
    {"SNMPv2-MIB", "coldStart", "1.3.6.1.6.3.1.1.5.1"},
    {"SNMPv2-MIB", "authenticationFailure", "1.3.6.1.6.3.1.1.5.5"},
    {"SNMPv2-MIB", "snmpSetSerialNo", "1.3.6.1.6.3.1.1.6.1"},
    {"SNMPv2-MIB", "systemGroup", "1.3.6.1.6.3.1.2.2.6"},
    {"SNMPv2-MIB", "snmpBasicComplianceRev2", "1.3.6.1.6.3.1.2.1.3"},
    {"IF-MIB", "ifNumber", "1.3.6.1.2.1.2.1"},
    {"IF-MIB", "ifDescr", "1.3.6.1.2.1.2.2.1.2"},
    {"IF-MIB", "ifType", "1.3.6.1.2.1.2.2.1.3"},
    {"IF-MIB", "ifPhysAddress", "1.3.6.1.2.1.2.2.1.6"},
    {"IF-MIB", "ifOperStatus", "1.3.6.1.2.1.2.2.1.8"},
    {"IF-MIB", "ifInOctets", "1.3.6.1.2.1.2.2.1.10"},
    {"IF-MIB", "ifOutErrors", "1.3.6.1.2.1.2.2.1.20"},
    {"IF-MIB", "ifName", "1.3.6.1.2.1.31.1.1.1.1"},
    {"IF-MIB", "ifHCInOctets", "1.3.6.1.2.1.31.1.1.1.6"},
    {"IF-MIB", "ifHighSpeed", "1.3.6.1.2.1.31.1.1.1.15"},
    {"IF-MIB", "ifAlias", "1.3.6.1.2.1.31.1.1.1.18"},
    {"IF-MIB", "ifStackStatus", "1.3.6.1.2.1.31.1.2.1.3"},
    {"IF-MIB", "ifRcvAddressType", "1.3.6.1.2.1.31.1.4.1.3"},
    {"IF-MIB", "ifTestOwner", "1.3.6.1.2.1.31.1.3.1.6"},
    {"IF-MIB", "linkDown", "1.3.6.1.6.3.1.1.5.3"},
    {"IF-MIB", "linkUp", "1.3.6.1.6.3.1.1.5.4"},
    {"IF-MIB", "ifCompliance3", "1.3.6.1.2.1.31.2.2.3"},
    {"IF-MIB", "linkUpDownNotificationsGroup", "1.3.6.1.2.1.31.2.1.14"},
    {"HOST-RESOURCES-MIB", "hrSystemUptime", "1.3.6.1.2.1.25.1.1"},
    {"HOST-RESOURCES-MIB", "hrSystemDate", "1.3.6.1.2.1.25.1.2"},
    {"HOST-RESOURCES-MIB", "hrMemorySize", "1.3.6.1.2.1.25.2.2"},
    {"HOST-RESOURCES-MIB", "hrStorageUsed", "1.3.6.1.2.1.25.2.3.1.6"},
    {"HOST-RESOURCES-MIB", "hrStorageTypes", "1.3.6.1.2.1.25.2.1"},
    {"HOST-RESOURCES-MIB", "hrDeviceDescr", "1.3.6.1.2.1.25.3.2.1.3"},
    {"HOST-RESOURCES-MIB", "hrDeviceStatus", "1.3.6.1.2.1.25.3.2.1.5"},
    {"HOST-RESOURCES-MIB", "hrProcessorLoad", "1.3.6.1.2.1.25.3.3.1.2"},
    {"HOST-RESOURCES-MIB", "hrNetworkIfIndex", "1.3.6.1.2.1.25.3.4.1.1"},
    {"HOST-RESOURCES-MIB", "hrPrinterStatus", "1.3.6.1.2.1.25.3.5.1.1"},
    {"HOST-RESOURCES-MIB", "hrPrinterDetectedErrorState", "1.3.6.1.2.1.25.3.5.1.2"},
    {"HOST-RESOURCES-MIB", "hrDiskStorageRemoveble", "1.3.6.1.2.1.25.3.6.1.3"},
    {"HOST-RESOURCES-MIB", "hrPartitionIndex", "1.3.6.1.2.1.25.3.7.1.1"},
    {"HOST-RESOURCES-MIB", "hrFSMountPoint", "1.3.6.1.2.1.25.3.8.1.2"},
    {"HOST-RESOURCES-MIB", "hrFSTypes", "1.3.6.1.2.1.25.3.9"},
    {"HOST-RESOURCES-MIB", "hrSWRunPerfMem", "1.3.6.1.2.1.25.5.1.1.2"},
    {"HOST-RESOURCES-MIB", "hrSWInstalledDate", "1.3.6.1.2.1.25.6.3.1.5"},
    {"HOST-RESOURCES-MIB", "hrMIBCompliance", "1.3.6.1.2.1.25.7.2.1"},
    {"IANAifType-MIB", "ianaifType", "1.3.6.1.2.1.30"},
    {"IANA-CHARSET-MIB", "ianaCharsetMIB", "1.3.6.1.2.1.106"},
    {"IANA-PRINTER-MIB", "ianaPrinterMIB", "1.3.6.1.2.1.109"},
    {"Printer-MIB", "printmib", "1.3.6.1.2.1.43"},
    {"Printer-MIB", "prtGeneralPrinterName", "1.3.6.1.2.1.43.5.1.1.16"},
    {"Printer-MIB", "prtGeneralSerialNumber", "1.3.6.1.2.1.43.5.1.1.17"},
    {"Printer-MIB", "prtCoverStatus", "1.3.6.1.2.1.43.6.1.1.3"},
    {"Printer-MIB", "prtLocalizationCharacterSet", "1.3.6.1.2.1.43.7.1.1.4"},
    {"Printer-MIB", "prtInputCurrentLevel", "1.3.6.1.2.1.43.8.2.1.10"},
    {"Printer-MIB", "prtOutputRemainingCapacity", "1.3.6.1.2.1.43.9.2.1.5"},
    {"Printer-MIB", "prtMarkerLifeCount", "1.3.6.1.2.1.43.10.2.1.4"},
    {"Printer-MIB", "prtMarkerSuppliesDescription", "1.3.6.1.2.1.43.11.1.1.6"},
    {"Printer-MIB", "prtMarkerSuppliesMaxCapacity", "1.3.6.1.2.1.43.11.1.1.8"},
    {"Printer-MIB", "prtMarkerSuppliesLevel", "1.3.6.1.2.1.43.11.1.1.9"},
    {"Printer-MIB", "prtMarkerColorantValue", "1.3.6.1.2.1.43.12.1.1.4"},
    {"Printer-MIB", "prtMediaPathMaxSpeed", "1.3.6.1.2.1.43.13.4.1.4"},
    {"Printer-MIB", "prtChannelType", "1.3.6.1.2.1.43.14.1.1.2"},
    {"Printer-MIB", "prtInterpreterLangFamily", "1.3.6.1.2.1.43.15.1.1.2"},
    {"Printer-MIB", "prtConsoleDisplayBufferText", "1.3.6.1.2.1.43.16.5.1.2"},
    {"Printer-MIB", "prtConsoleLightIndex", "1.3.6.1.2.1.43.17.6.1.1"},
    {"Printer-MIB", "prtAlertSeverityLevel", "1.3.6.1.2.1.43.18.1.1.2"},
    {"Printer-MIB", "prtAlertTime", "1.3.6.1.2.1.43.18.1.1.9"},
    {"Printer-MIB", "printerV2Alert", "1.3.6.1.2.1.43.18.2.0.1"},
    {"Printer-MIB", "prtAlertTrapGroup", "1.3.6.1.2.1.43.2.2.24"},
};

INSTANTIATE_TEST_SUITE_P(WellKnown, MibNamesTest, ::testing::ValuesIn(s_nodes),
                         [](const auto& row) {
                             std::string name = row.param.label;
                             for (char& c : name) {
                                 c = c == '-' ? '_' : c;
                             }
                             return name;
                         });

struct Instance
{
    const char* row;
    const char* name;
    const char* number;
};

void PrintTo(const Instance& instance, std::ostream* out)
{
    *out << instance.name;
}

class MibInstancesTest : public ::testing::TestWithParam<Instance>
{
protected:
    void SetUp() override { LoadedMibFolder::Get(); }
};

TEST_P(MibInstancesTest, Resolves)
{
    EXPECT_EQ(Resolve(GetParam().name), GetParam().number);
}

const Instance s_instances[] = {
    // row, name, number (empty: does not resolve)
    {"scalar", "sysUpTime.0", "1.3.6.1.2.1.1.3.0"},
    {"qualifiedScalar", "SNMPv2-MIB::sysUpTime.0", "1.3.6.1.2.1.1.3.0"},
    {"oneIndex", "ifDescr.2", "1.3.6.1.2.1.2.2.1.2.2"},
    {"twoIndexes", "prtMarkerSuppliesLevel.1.3", "1.3.6.1.2.1.43.11.1.1.9.1.3"},
    {"dottedFromMib2", "mib-2.1.3.0", "1.3.6.1.2.1.1.3.0"},
    {"wrongModule", "IF-MIB::prtMarkerSuppliesLevel.1.3", ""},
    {"unknownName", "sysUpTimes.0", ""},
};

INSTANTIATE_TEST_SUITE_P(WellKnown, MibInstancesTest, ::testing::ValuesIn(s_instances),
                         [](const auto& row) { return row.param.row; });

// Properties, each of objects that have it and of one that has not.

/// One property of a node as text, empty where the node has none.
using Facet = std::string (*)(const tree&);

std::string OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

std::string Hint(const tree& node)
{
    return OrEmpty(node.hint);
}
std::string Units(const tree& node)
{
    return OrEmpty(node.units);
}
std::string Augments(const tree& node)
{
    return OrEmpty(node.augments);
}
std::string Convention(const tree& node)
{
    return OrEmpty(get_tc_descriptor(node.tc_index));
}

/// "low..high", several separated by "|".
std::string Ranges(const tree& node)
{
    std::ostringstream text;
    for (const range_list* range = node.ranges; range != nullptr; range = range->next) {
        text << (range == node.ranges ? "" : "|") << range->low << ".." << range->high;
    }
    return text.str();
}

std::string Indexes(const tree& node)
{
    std::ostringstream text;
    for (const index_list* index = node.indexes; index != nullptr; index = index->next) {
        text << (index == node.indexes ? "" : " ") << (index->isimplied != 0 ? "IMPLIED " : "")
             << index->ilabel;
    }
    return text.str();
}

std::string Payload(const tree& node)
{
    std::ostringstream text;
    for (const varbind_list* object = node.varbinds; object != nullptr; object = object->next) {
        text << (object == node.varbinds ? "" : " ") << object->vblabel;
    }
    return text.str();
}

std::string Access(const tree& node)
{
    switch (node.access) {
    case MIB_ACCESS_NOACCESS:
        return "not-accessible";
    case MIB_ACCESS_NOTIFY:
        return "accessible-for-notify";
    case MIB_ACCESS_READONLY:
        return "read-only";
    case MIB_ACCESS_READWRITE:
        return "read-write";
    case MIB_ACCESS_CREATE:
        return "read-create";
    default:
        return "";
    }
}

std::string Status(const tree& node)
{
    switch (node.status) {
    case MIB_STATUS_CURRENT:
        return "current";
    case MIB_STATUS_DEPRECATED:
        return "deprecated";
    case MIB_STATUS_OBSOLETE:
        return "obsolete";
    default:
        return "";
    }
}

std::string Type(const tree& node)
{
    switch (node.type) {
    case TYPE_OBJID:
        return "OBJECT IDENTIFIER";
    case TYPE_OCTETSTR:
        return "OCTET STRING";
    case TYPE_INTEGER:
        return "INTEGER";
    case TYPE_INTEGER32:
        return "Integer32";
    case TYPE_COUNTER:
        return "Counter32";
    case TYPE_COUNTER64:
        return "Counter64";
    case TYPE_GAUGE:
        return "Gauge32";
    case TYPE_TIMETICKS:
        return "TimeTicks";
    case TYPE_NOTIFTYPE:
        return "NOTIFICATION-TYPE";
    default:
        return "";
    }
}

struct Property
{
    const char* name;
    const char* node;
    Facet facet;
    const char* expected;
};

void PrintTo(const Property& row, std::ostream* out)
{
    *out << row.name << " of " << row.node;
}

class MibPropertyTest : public ::testing::TestWithParam<Property>
{
protected:
    LoadedMibFolder& m_folder = LoadedMibFolder::Get();
};

TEST_P(MibPropertyTest, IsAsPublished)
{
    const tree* node = m_folder.Find(GetParam().node);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(GetParam().facet(*node), GetParam().expected);
}

const Property s_properties[] = {
    // property, node, how it is read, expected (empty: none)
    {"hint", "sysDescr", Hint, "255a"},
    {"hint", "ifPhysAddress", Hint, "1x:"},
    {"hint", "ifIndex", Hint, "d"},
    {"hint", "hrSystemDate", Hint, "2d-1d-1d,1d:1d:1d.1d,1a1d:1d"},
    {"hint", "prtMarkerSuppliesDescription", Hint, ""},
    {"convention", "sysDescr", Convention, "DisplayString"},
    {"convention", "sysORLastChange", Convention, "TimeStamp"},
    {"convention", "snmpSetSerialNo", Convention, "TestAndIncr"},
    {"convention", "ifType", Convention, "IANAifType"},
    {"convention", "ifPhysAddress", Convention, "PhysAddress"},
    {"convention", "ifPromiscuousMode", Convention, "TruthValue"},
    {"convention", "ifStackStatus", Convention, "RowStatus"},
    {"convention", "ifTestOwner", Convention, "OwnerString"},
    {"convention", "hrNetworkIfIndex", Convention, "InterfaceIndexOrZero"},
    {"convention", "hrStorageType", Convention, "AutonomousType"},
    {"convention", "hrDeviceID", Convention, "ProductID"},
    {"convention", "hrMemorySize", Convention, "KBytes"},
    {"convention", "hrSWRunName", Convention, "InternationalDisplayString"},
    {"convention", "hrFSLastFullBackupDate", Convention, "DateAndTime"},
    {"convention", "prtMarkerSuppliesType", Convention, "PrtMarkerSuppliesTypeTC"},
    {"convention", "prtLocalizationCharacterSet", Convention, "IANACharset"},
    {"convention", "prtMarkerSuppliesDescription", Convention, "PrtLocalizedDescriptionStringTC"},
    {"convention", "sysUpTime", Convention, ""},
    {"ranges", "sysDescr", Ranges, "0..255"},
    {"ranges", "sysServices", Ranges, "0..127"},
    {"ranges", "sysORIndex", Ranges, "1..2147483647"},
    {"ranges", "sysUpTime", Ranges, ""},
    {"ranges", "snmpSetSerialNo", Ranges, "0..2147483647"},
    {"ranges", "ifIndex", Ranges, "1..2147483647"},
    {"ranges", "ifStackHigherLayer", Ranges, "0..2147483647"},
    {"ranges", "ifAlias", Ranges, "0..64"},
    {"ranges", "ifNumber", Ranges, ""},
    {"ranges", "hrSystemDate", Ranges, "8..8|11..11"},
    {"ranges", "hrDeviceDescr", Ranges, "0..64"},
    {"ranges", "hrProcessorLoad", Ranges, "0..100"},
    {"ranges", "hrFSMountPoint", Ranges, "0..128"},
    {"ranges", "hrPrinterDetectedErrorState", Ranges, ""},
    {"ranges", "prtMarkerSuppliesLevel", Ranges, "-3..2147483647"},
    {"ranges", "prtMarkerSuppliesMaxCapacity", Ranges, "-2..2147483647"},
    {"ranges", "prtInputStatus", Ranges, "0..126"},
    {"ranges", "prtLocalizationLanguage", Ranges, "2..2"},
    {"ranges", "prtGeneralSerialNumber", Ranges, "0..255"},
    {"units", "hrMemorySize", Units, "KBytes"},
    {"units", "hrStorageAllocationUnits", Units, "Bytes"},
    {"units", "hrSWRunPerfMem", Units, "KBytes"},
    {"units", "ifSpeed", Units, ""},
    {"indexes", "sysOREntry", Indexes, "sysORIndex"},
    {"indexes", "ifEntry", Indexes, "ifIndex"},
    {"indexes", "ifStackEntry", Indexes, "ifStackHigherLayer ifStackLowerLayer"},
    {"indexes", "ifRcvAddressEntry", Indexes, "ifIndex ifRcvAddressAddress"},
    {"indexes", "hrPrinterEntry", Indexes, "hrDeviceIndex"},
    {"indexes", "hrPartitionEntry", Indexes, "hrDeviceIndex hrPartitionIndex"},
    {"indexes", "prtGeneralEntry", Indexes, "hrDeviceIndex"},
    {"indexes", "prtStorageRefEntry", Indexes, "hrStorageIndex prtStorageRefSeqNumber"},
    {"indexes", "prtMarkerSuppliesEntry", Indexes, "hrDeviceIndex prtMarkerSuppliesIndex"},
    {"indexes", "prtAlertEntry", Indexes, "hrDeviceIndex prtAlertIndex"},
    {"indexes", "ifXEntry", Indexes, ""},
    {"augments", "ifXEntry", Augments, "ifEntry"},
    {"augments", "ifTestEntry", Augments, "ifEntry"},
    {"augments", "hrSWRunPerfEntry", Augments, "hrSWRunEntry"},
    {"augments", "ifEntry", Augments, ""},
    {"payload", "linkDown", Payload, "ifIndex ifAdminStatus ifOperStatus"},
    {"payload", "linkUp", Payload, "ifIndex ifAdminStatus ifOperStatus"},
    {"payload", "coldStart", Payload, ""},
    {"access", "sysName", Access, "read-write"},
    {"access", "sysUpTime", Access, "read-only"},
    {"access", "sysORIndex", Access, "not-accessible"},
    {"access", "snmpTrapOID", Access, "accessible-for-notify"},
    {"access", "ifStackStatus", Access, "read-create"},
    {"access", "prtMarkerSuppliesIndex", Access, "not-accessible"},
    {"access", "prtAlertIndex", Access, "read-only"},
    {"access", "coldStart", Access, ""},
    {"status", "sysDescr", Status, "current"},
    {"status", "snmpOutPkts", Status, "obsolete"},
    {"status", "ifOutQLen", Status, "deprecated"},
    {"status", "ifTestTable", Status, "deprecated"},
    {"status", "mib-2", Status, ""},
    {"type", "sysObjectID", Type, "OBJECT IDENTIFIER"},
    {"type", "sysUpTime", Type, "TimeTicks"},
    {"type", "sysContact", Type, "OCTET STRING"},
    {"type", "sysServices", Type, "INTEGER"},
    {"type", "ifMtu", Type, "Integer32"},
    {"type", "ifInOctets", Type, "Counter32"},
    {"type", "ifHCInOctets", Type, "Counter64"},
    {"type", "ifSpeed", Type, "Gauge32"},
    {"type", "hrPrinterDetectedErrorState", Type, "OCTET STRING"},
    {"type", "prtMarkerLifeCount", Type, "Counter32"},
    {"type", "linkDown", Type, "NOTIFICATION-TYPE"},
};

INSTANTIATE_TEST_SUITE_P(WellKnown, MibPropertyTest, ::testing::ValuesIn(s_properties),
                         [](const auto& row) {
                             std::string name = std::string(row.param.node) + "_" + row.param.name;
                             for (char& c : name) {
                                 c = c == '-' ? '_' : c;
                             }
                             return name;
                         });

// Labels: every enumeration of objects that a printer's users look at, the ends of the long ones,
// and some numbers that have none.

struct EnumeratedValue
{
    const char* node;
    int value;
    const char* label; // empty: the value has none
};

void PrintTo(const EnumeratedValue& row, std::ostream* out)
{
    *out << row.node << " " << row.label << "(" << row.value << ")";
}

class MibEnumerationTest : public ::testing::TestWithParam<EnumeratedValue>
{
protected:
    LoadedMibFolder& m_folder = LoadedMibFolder::Get();
};

TEST_P(MibEnumerationTest, ValueHasItsLabel)
{
    const tree* node = m_folder.Find(GetParam().node);
    ASSERT_NE(node, nullptr);
    std::string label;
    for (const enum_list* item = node->enums; item != nullptr; item = item->next) {
        if (item->value == GetParam().value) {
            label += item->label;
        }
    }
    EXPECT_EQ(label, GetParam().label);
}

const EnumeratedValue s_values[] = {
    // node, value, label
    {"ifAdminStatus", 1, "up"},
    {"ifAdminStatus", 4, ""},
    {"ifOperStatus", 2, "down"},
    {"ifOperStatus", 7, "lowerLayerDown"},
    {"ifPromiscuousMode", 1, "true"},
    {"ifPromiscuousMode", 2, "false"},
    {"ifLinkUpDownTrapEnable", 2, "disabled"},
    {"ifStackStatus", 6, "destroy"},
    {"ifRcvAddressType", 3, "nonVolatile"},
    {"ifTestResult", 5, "unAbleToRun"},
    {"ifType", 1, "other"},
    {"ifType", 6, "ethernetCsmacd"},
    {"ifType", 24, "softwareLoopback"},
    {"ifType", 71, "ieee80211"},
    {"ifType", 145, "if-gsn"},
    {"ifType", 272, "vmwareNicTeam"},
    {"ifType", 273, ""},
    {"ifType", 277, "docsOfdmDownstream"},
    {"ifType", 296, "microwaveRadioLinkTerminal"},
    {"snmpEnableAuthenTraps", 1, "enabled"},
    {"snmpEnableAuthenTraps", 2, "disabled"},
    {"hrDeviceStatus", 2, "running"},
    {"hrDeviceStatus", 5, "down"},
    {"hrPrinterStatus", 3, "idle"},
    {"hrPrinterStatus", 4, "printing"},
    {"hrPrinterStatus", 5, "warmup"},
    {"hrDiskStorageMedia", 6, "opticalDiskWORM"},
    {"hrFSAccess", 2, "readOnly"},
    {"hrSWRunStatus", 4, "invalid"},
    {"hrSWInstalledType", 3, "deviceDriver"},
    {"prtGeneralReset", 4, "powerCycleReset"},
    {"prtCoverStatus", 3, "coverOpen"},
    {"prtCoverStatus", 6, "interlockClosed"},
    {"prtInputCapacityUnit", 8, "sheets"},
    {"prtMarkerMarkTech", 4, "electrophotographicLaser"},
    {"prtMarkerSuppliesClass", 4, "receptacleThatIsFilled"},
    {"prtMarkerSuppliesType", 3, "toner"},
    {"prtMarkerSuppliesType", 4, "wasteToner"},
    {"prtMarkerSuppliesSupplyUnit", 7, "impressions"},
    {"prtMediaPathType", 3, "longEdgeBindingDuplex"},
    {"prtInterpreterLangFamily", 3, "langPCL"},
    {"prtInterpreterLangFamily", 6, "langPS"},
    {"prtChannelType", 8, "chLPDServer"},
    {"prtConsoleColor", 4, "red"},
    {"prtAlertSeverityLevel", 3, "critical"},
    {"prtAlertTrainingLevel", 5, "fieldService"},
    {"prtAlertGroup", 8, "input"},
    {"prtAlertCode", 8, "jam"},
    {"prtLocalizationCharacterSet", 3, "csASCII"},
    {"prtLocalizationCharacterSet", 106, "csUTF8"},
    {"prtLocalizationCharacterSet", 107, ""},
    {"prtLocalizationCharacterSet", 2060, "csIBBM904"},
    {"prtLocalizationCharacterSet", 2260, "cs50220"},
};

INSTANTIATE_TEST_SUITE_P(WellKnown, MibEnumerationTest, ::testing::ValuesIn(s_values),
                         [](const auto& row) {
                             return std::string(row.param.node) + "_" +
                                    std::to_string(row.param.value);
                         });

} // namespace

// Names and numbers that engineers know by heart, from every module that has nodes. A name must
// lead to its number, and the number back to its name and module.

#include "tests/mibs/LoadedMibFolder.h"

#include <array>
#include <ostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

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

} // namespace

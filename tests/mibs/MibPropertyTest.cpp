// How values are typed and shown: types, textual conventions, ranges, display hints, units,
// indexes, access and status, each for objects that use it and for one that does not.

#include "tests/mibs/LoadedMibFolder.h"

#include <ostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

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

} // namespace

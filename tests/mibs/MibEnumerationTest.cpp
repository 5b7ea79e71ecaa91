// The labels of enumerated values: every enumeration of objects that a printer's users look at, the
// ends of the long ones, and some numbers that have none.

#include "tests/mibs/LoadedMibFolder.h"

#include <ostream>
#include <string>

#include <gtest/gtest.h>

namespace {

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

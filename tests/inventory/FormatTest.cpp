#include "inventory/CSVFormat.h"
#include "inventory/HTMLFormat.h"
#include "inventory/JSONFormat.h"
#include "inventory/TableFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

namespace {

using inventory::Address;
using inventory::Agent;
using inventory::Screen;
using inventory::Supply;
using inventory::toColumns;
using inventory::toJSON;
using testing::HasSubstr;
using testing::Not;

Agent printer()
{
    Agent agent(*Address::parse("192.0.2.9"));
    agent.answers = true;
    agent.name = "laser";
    agent.description = "a printer, fast";
    agent.location = "Room \"5\"\r\nleft";
    agent.contact = "=cmd()";
    agent.objectID = "1.3.6.1.4.1.8072";
    agent.uptime = 8640000;
    agent.printer = true;
    agent.model = "Laser 3000";
    agent.serial = "S-1";
    agent.status = "idle";
    agent.pages = 21500;
    Supply toner;
    toner.name = "Black Toner";
    toner.type = "toner";
    toner.kind = "supplyThatIsConsumed";
    toner.unit = "percent";
    toner.level = 42;
    toner.capacity = 100;
    Supply waste = toner;
    waste.name = "Waste";
    waste.kind = "receptacleThatIsFilled";
    waste.level = 1;
    Supply drum;
    drum.level = -3;
    agent.supplies = {toner, waste, drum};
    return agent;
}

Agent silent()
{
    Agent agent(*Address::parse("192.0.2.10"));
    agent.answers = false;
    return agent;
}

Agent notAsked()
{
    return Agent(*Address::parse("192.0.2.11"));
}

const std::vector<Agent> three = {printer(), silent(), notAsked()};

TEST(FormatTest, JSON)
{
    EXPECT_EQ(toJSON({}), "[]\n");
    EXPECT_EQ(
        inventory::toJSON(three),
        "[{\"answers\":true,\"contact\":\"=cmd()\",\"description\":\"a printer, fast\","
        "\"hostname\":\"192.0.2.9\",\"location\":\"Room \\\"5\\\"\\r\\nleft\",\"model\":"
        "\"Laser 3000\",\"name\":\"laser\",\"objectID\":\"1.3.6.1.4.1.8072\",\"pages\":21500,"
        "\"printer\":true,\"serial\":\"S-1\",\"status\":\"idle\",\"supplies\":[{\"capacity\":100,"
        "\"class\":\"supplyThatIsConsumed\",\"level\":42,\"name\":\"Black Toner\",\"percent\":42,"
        "\"type\":\"toner\",\"unit\":\"percent\"},{\"capacity\":100,\"class\":"
        "\"receptacleThatIsFilled\",\"level\":1,\"name\":\"Waste\",\"percent\":1,\"type\":"
        "\"toner\",\"unit\":\"percent\"},{\"level\":-3}],\"uptime\":8640000},"
        "{\"answers\":false,\"hostname\":\"192.0.2.10\"},{\"hostname\":\"192.0.2.11\"}]\n");
}

TEST(FormatTest, CSVHasAHeadingAndTheLowestSupplyThatIsNoWaste)
{
    EXPECT_EQ(inventory::toCSV(three),
              "address,answers,name,description,location,contact,objectID,uptime,printer,model,"
              "serial,status,pages,supplies\r\n"
              "192.0.2.9,true,laser,\"a printer, fast\",\"Room \"\"5\"\"\r\nleft\",'=cmd(),"
              "1.3.6.1.4.1.8072,8640000,true,Laser 3000,S-1,idle,21500,42\r\n"
              "192.0.2.10,false,,,,,,,,,,,,\r\n"
              "192.0.2.11,,,,,,,,,,,,,\r\n");
}

TEST(FormatTest, PrometheusAndZabbixHaveTextsOnly)
{
    EXPECT_EQ(inventory::toPrometheus(three),
              "[{\"labels\":{\"snmp_location\":\"Room \\\"5\\\"\\r\\nleft\",\"snmp_model\":"
              "\"Laser 3000\",\"snmp_name\":\"laser\",\"snmp_printer\":\"true\"},\"targets\":"
              "[\"192.0.2.9\"]},{\"labels\":{\"snmp_printer\":\"false\"},\"targets\":"
              "[\"192.0.2.10\"]},{\"labels\":{\"snmp_printer\":\"false\"},\"targets\":"
              "[\"192.0.2.11\"]}]\n");
    EXPECT_EQ(inventory::toZabbix(three),
              "[{\"{#ADDRESS}\":\"192.0.2.9\",\"{#MODEL}\":\"Laser 3000\",\"{#NAME}\":\"laser\","
              "\"{#PRINTER}\":\"1\"},{\"{#ADDRESS}\":\"192.0.2.10\",\"{#PRINTER}\":\"0\"},"
              "{\"{#ADDRESS}\":\"192.0.2.11\",\"{#PRINTER}\":\"0\"}]\n");
}

TEST(FormatTest, Addresses)
{
    EXPECT_EQ(inventory::toAddresses(three), "192.0.2.9\n192.0.2.10\n192.0.2.11\n");
    EXPECT_EQ(inventory::toAddresses({}), "");
}

class TableFormatTest : public testing::Test
{
protected:
    void SetUp() override
    {
        inventory::screenOfStandardOutput(); // sets the locale
        if (MB_CUR_MAX < 4) {
            GTEST_SKIP() << "NOT TESTED: no locale with UTF-8";
        }
    }
};

TEST_F(TableFormatTest, WithoutATerminalLinesAreNotFitted)
{
    EXPECT_EQ(inventory::toTable(three, {}),
              "ADDRESS     NAME   MODEL       SERIAL  STATUS     PAGES  SUPPLIES  LOCATION\n"
              "192.0.2.9   laser  Laser 3000  S-1     idle       21500  42 %      Room "
              "\"5\"\xef\xbf\xbd\xef\xbf\xbdleft\n"
              "192.0.2.10                             silent\n"
              "192.0.2.11                             not asked\n");
}

TEST_F(TableFormatTest, ColumnsAreFittedToTheTerminal)
{
    const std::vector<std::vector<std::string>> rows = {
        {"192.0.2.100", "a very long text indeed", "short"}};
    EXPECT_EQ(toColumns(rows, Screen{80, false}), "192.0.2.100  a very long text indeed  short\n");
    EXPECT_EQ(toColumns(rows, Screen{30, false}), "192.0.2.100  a very lo\xe2\x80\xa6  short\n");
    EXPECT_EQ(toColumns(rows, Screen{30, true}), "192.0.2.100  a very lo~  short\n");
    EXPECT_EQ(toColumns(rows, Screen{1, false}), "192.0.2.100\n");
    EXPECT_EQ(toColumns(rows, Screen{23, false}),
              "192.0.2.100  a v\xe2\x80\xa6  sho\xe2\x80\xa6\n");
}

TEST_F(TableFormatTest, WidthsAreThoseOfTheTerminal)
{
    // Two wide characters, one with a combining accent.
    EXPECT_EQ(toColumns({{"\xe6\x97\xa5\xe6\x9c\xac", "x"}, {"e\xcc\x81", "x"}}, {}),
              "\xe6\x97\xa5\xe6\x9c\xac  x\ne\xcc\x81     x\n");
    EXPECT_EQ(toColumns({{"a", "\xe6\x97\xa5\xe6\x9c\xac\xe6\x97\xa5\xe6\x9c\xac\xe6\x97\xa5"}},
                        Screen{11, false}),
              "a  \xe6\x97\xa5\xe6\x9c\xac\xe6\x97\xa5\xe2\x80\xa6\n");
}

TEST(FormatTest, HTMLHasABarForEachSupplyAndLoadsNothing)
{
    const std::string page = inventory::toHTML(three);
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
    EXPECT_THAT(page, HasSubstr("value=\"42\">42 %</meter>"));
    EXPECT_THAT(page, HasSubstr(">some left</meter>"));
    EXPECT_THAT(page, HasSubstr("does not answer"));
    EXPECT_THAT(page, HasSubstr("<h2>192.0.2.11</h2>"));
    std::size_t bars = 0;
    for (std::size_t at = page.find("<meter"); at != std::string::npos;
         at = page.find("<meter", at + 1)) {
        ++bars;
    }
    EXPECT_EQ(bars, 3U);
    for (const char* const forbidden :
         {"<script", "http://", "https://", "src=", "href=", "url("}) {
        EXPECT_THAT(page, Not(HasSubstr(forbidden)));
    }
}

} // namespace

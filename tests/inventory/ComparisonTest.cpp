#include "inventory/Comparison.h"

#include <gtest/gtest.h>

namespace {

using inventory::Address;
using inventory::Agent;
using inventory::compare;

Agent at(const char* address)
{
    return Agent(*Address::parse(address));
}

/// An agent that answers.
Agent named(const char* address, const char* name, std::optional<bool> printer = true)
{
    Agent agent = at(address);
    agent.answers = true;
    agent.name = name;
    agent.printer = printer;
    return agent;
}

Agent silent(const char* address)
{
    Agent agent = at(address);
    agent.answers = false;
    return agent;
}

std::string difference(const std::vector<Agent>& before, const std::vector<Agent>& now,
                       bool onlyPrinters = false)
{
    return toJSON(compare(before, now, onlyPrinters));
}

const std::string nothing = "{\"appeared\":[],\"changed\":[],\"vanished\":[]}\n";
const std::string changedToB = "{\"appeared\":[],\"changed\":[{\"hostname\":\"192.0.2.9\",\"name\":"
                               "{\"new\":\"b\",\"old\":\"a\"}}],\"vanished\":[]}\n";

TEST(ComparisonTest, TheSameReports)
{
    EXPECT_EQ(difference({}, {}), nothing);
    EXPECT_EQ(difference({named("192.0.2.9", "a")}, {named("192.0.2.9", "a")}), nothing);
    EXPECT_TRUE(compare({}, {}, false).isEmpty());
}

TEST(ComparisonTest, AppearedVanishedAndChanged)
{
    const std::string found = difference({named("192.0.2.1", "gone"), named("192.0.2.9", "a")},
                                         {named("192.0.2.9", "b"), named("192.0.2.10", "new")});
    EXPECT_EQ(found,
              "{\"appeared\":[{\"hostname\":\"192.0.2.10\",\"name\":\"new\",\"printer\":true}"
              "],\"changed\":[{\"hostname\":\"192.0.2.9\",\"name\":{\"new\":\"b\",\"old\":"
              "\"a\"}}],\"vanished\":[{\"hostname\":\"192.0.2.1\",\"name\":\"gone\","
              "\"printer\":true}]}\n");
}

TEST(ComparisonTest, NameModelSerialAndPrinterAreCompared)
{
    Agent before = named("192.0.2.9", "a", false);
    Agent now = named("192.0.2.9", "a", true);
    now.model = "m";
    before.serial = "s";
    EXPECT_EQ(difference({before}, {now}),
              "{\"appeared\":[],\"changed\":[{\"hostname\":\"192.0.2.9\",\"model\":{\"new\":\"m\"},"
              "\"printer\":{\"new\":true,\"old\":false},\"serial\":{\"old\":\"s\"}}],"
              "\"vanished\":[]}\n");
    before = named("192.0.2.9", "a");
    now = before;
    now.pages = 5;
    now.status = "idle";
    now.location = "elsewhere";
    EXPECT_EQ(difference({before}, {now}), nothing);
}

TEST(ComparisonTest, WhoIsSilentNowOrWasNotAskedIsComparedByTheAddressAlone)
{
    const Agent known = named("192.0.2.9", "a");
    EXPECT_EQ(difference({known}, {silent("192.0.2.9")}), nothing);
    EXPECT_EQ(difference({at("192.0.2.9")}, {known}), nothing);
    EXPECT_EQ(difference({known}, {at("192.0.2.9")}), nothing);
    EXPECT_FALSE(compare({known}, {}, false).isEmpty());
}

TEST(ComparisonTest, WhoWasSilentThenIsCompared)
{
    EXPECT_EQ(compare({silent("192.0.2.9")}, {named("192.0.2.9", "a")}, false).changed.size(), 1U);
}

TEST(ComparisonTest, OnlyPrintersOnBothSides)
{
    const Agent printer = named("192.0.2.9", "a");
    const Agent host = named("192.0.2.9", "a", false);
    EXPECT_EQ(difference({host}, {}, true), nothing);
    EXPECT_EQ(difference({}, {host}, true), nothing);
    EXPECT_EQ(difference({named("192.0.2.9", "a")}, {named("192.0.2.9", "b")}, true), changedToB);
    EXPECT_EQ(compare({printer}, {host}, true).vanished.size(), 1U);
    EXPECT_EQ(compare({host}, {printer}, true).appeared.size(), 1U);
    EXPECT_EQ(difference({host}, {named("192.0.2.9", "b", false)}, true), nothing);
}

TEST(ComparisonTest, APrinterThatIsSilentOrWasNotAskedHasNeitherVanishedNorAppeared)
{
    const Agent printer = named("192.0.2.9", "a");
    EXPECT_EQ(difference({printer}, {silent("192.0.2.9")}, true), nothing);
    EXPECT_EQ(difference({at("192.0.2.9")}, {printer}, true), nothing);
    EXPECT_EQ(difference({}, {silent("192.0.2.9")}, true), nothing);
}

TEST(ComparisonTest, AnAgentThatFellSilentBeforeItToldItsKindIsComparedByTheAddressAlone)
{
    const Agent printer = named("192.0.2.9", "a");
    const Agent cut = named("192.0.2.9", "a", std::nullopt);
    EXPECT_EQ(difference({printer}, {cut}, true), nothing);
    EXPECT_EQ(difference({cut}, {printer}, true), nothing);
    EXPECT_EQ(difference({cut}, {cut}, true), nothing);
    EXPECT_EQ(difference({}, {cut}, true), nothing);
    EXPECT_EQ(difference({cut}, {}, true), nothing);
}

TEST(ComparisonTest, TheTable)
{
    EXPECT_EQ(toTable(compare({named("192.0.2.1", "gone"), named("192.0.2.9", "a", false)},
                              {named("192.0.2.9", "b"), named("192.0.2.10", "new\x1b[2J")}, false),
                      {}),
              "ADDRESS     CHANGE    BEFORE  NOW\n"
              "192.0.2.10  appeared          new\xef\xbf\xbd[2J\n"
              "192.0.2.1   vanished  gone\n"
              "192.0.2.9   name      a       b\n"
              "192.0.2.9   printer   false   true\n");
}

} // namespace

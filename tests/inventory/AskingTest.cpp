// What is asked, and what is made of the answers: with a peer of the test's own.

#include "tests/inventory/FakePeer.h"

#include <gtest/gtest.h>

namespace {

using inventory::Agent;
using inventory::Answer;
using inventory::Name;
using inventory::Number;

using Table = FakePeer::Table;

Name inSystem(unsigned long object)
{
    return {1, 3, 6, 1, 2, 1, 1, object, 0};
}

Name general(unsigned long column, unsigned long row = 1)
{
    return {1, 3, 6, 1, 2, 1, 43, 5, 1, 1, column, row};
}

Name supply(unsigned long column, unsigned long row)
{
    return {1, 3, 6, 1, 2, 1, 43, 11, 1, 1, column, 1, row};
}

const Name device1 = {1, 3, 6, 1, 2, 1, 25, 3, 2, 1, 3, 1};
const Name status1 = {1, 3, 6, 1, 2, 1, 25, 3, 5, 1, 1, 1};
const Name lifeCount1 = {1, 3, 6, 1, 2, 1, 43, 10, 2, 1, 4, 1, 1};

Table hostTable()
{
    return {
        {inSystem(1), std::string("a switch")}, {inSystem(2), Name{1, 3, 6, 1, 4, 1, 4294967295}},
        {inSystem(3), Number{8640000, ""}},     {inSystem(4), std::string("contact")},
        {inSystem(5), std::string("name")},     {inSystem(6), std::string("here")}};
}

void addSupply(Table& table, unsigned long row, const std::string& name, long long level,
               long long capacity)
{
    table[supply(4, row)] = Number{3, "supplyThatIsConsumed"};
    table[supply(5, row)] = Number{3, "toner"};
    table[supply(6, row)] = name;
    table[supply(7, row)] = Number{19, "percent"};
    table[supply(8, row)] = Number{capacity, ""};
    table[supply(9, row)] = Number{level, ""};
}

Table printerTable()
{
    Table table = hostTable();
    table[device1] = std::string("Laser 3000");
    table[status1] = Number{3, "idle"};
    table[general(17)] = std::string("S-1");
    table[lifeCount1] = Number{21500, ""};
    addSupply(table, 1, "Black Toner", 42, 100);
    addSupply(table, 2, "Drum", -2, 60000);
    return table;
}

Agent asked(FakePeer& peer)
{
    Agent agent(*inventory::Address::parse("192.0.2.9"));
    inventory::ask(peer, agent);
    return agent;
}

Agent asked(const Table& table)
{
    FakePeer peer(table);
    return asked(peer);
}

TEST(AskingTest, APrinter)
{
    const Agent agent = asked(printerTable());

    EXPECT_EQ(agent.answers, true);
    EXPECT_EQ(agent.description, "a switch");
    EXPECT_EQ(agent.objectID, "1.3.6.1.4.1.4294967295");
    EXPECT_EQ(agent.uptime, 8640000);
    EXPECT_EQ(agent.contact, "contact");
    EXPECT_EQ(agent.name, "name");
    EXPECT_EQ(agent.location, "here");
    EXPECT_EQ(agent.printer, true);
    EXPECT_EQ(agent.model, "Laser 3000");
    EXPECT_EQ(agent.serial, "S-1");
    EXPECT_EQ(agent.status, "idle");
    EXPECT_EQ(agent.pages, 21500);
    ASSERT_EQ(agent.supplies.size(), 2U);
    EXPECT_EQ(agent.supplies[0].name, "Black Toner");
    EXPECT_EQ(agent.supplies[0].type, "toner");
    EXPECT_EQ(agent.supplies[0].kind, "supplyThatIsConsumed");
    EXPECT_EQ(agent.supplies[0].unit, "percent");
    EXPECT_EQ(agent.supplies[0].level, 42);
    EXPECT_EQ(agent.supplies[0].capacity, 100);
    EXPECT_EQ(agent.supplies[1].level, -2);
    EXPECT_FALSE(agent.supplies[1].percent());
}

TEST(AskingTest, AnAgentThatIsNoPrinterHasNothingOfOne)
{
    Table table = hostTable();
    table[device1] = std::string("a processor");
    table[status1] = Number{3, "idle"};
    addSupply(table, 1, "Black Toner", 42, 100);
    const Agent agent = asked(table);

    EXPECT_EQ(agent.answers, true);
    EXPECT_EQ(agent.name, "name");
    EXPECT_EQ(agent.printer, false);
    EXPECT_FALSE(agent.model || agent.serial || agent.status || agent.pages);
    EXPECT_TRUE(agent.supplies.empty());
}

TEST(AskingTest, AnyColumnOfTheGeneralTableMakesAPrinter)
{
    for (const unsigned long column : {1UL, 2UL, 16UL, 19UL}) {
        Table table = hostTable();
        table[general(column, 7)] = Number{1, ""};
        EXPECT_EQ(asked(table).printer, true) << column;
    }
}

TEST(AskingTest, TheFirstRowCountsAndForTheModelDeviceOne)
{
    Table table = printerTable();
    table.erase(device1);
    table[{1, 3, 6, 1, 2, 1, 25, 3, 2, 1, 3, 2}] = std::string("another device");
    table.erase(general(17));
    table[general(17, 3)] = std::string("S-3");
    table[general(17, 4)] = std::string("S-4");
    table.erase(status1);
    table[{1, 3, 6, 1, 2, 1, 25, 3, 5, 1, 1, 5}] = Number{4, "printing"};
    const Agent agent = asked(table);

    EXPECT_FALSE(agent.model);
    EXPECT_EQ(agent.serial, "S-3");
    EXPECT_EQ(agent.status, "printing");
}

TEST(AskingTest, EmptyTextsAndNumbersWithoutALabelAreAbsent)
{
    Table table = printerTable();
    table[inSystem(5)] = std::string();
    table[inSystem(6)] = std::string(4, '\0');
    table[status1] = Number{77, ""};
    table[supply(5, 1)] = Number{99, ""};
    table[supply(6, 1)] = std::string();
    const Agent agent = asked(table);

    EXPECT_FALSE(agent.name || agent.location || agent.status);
    EXPECT_FALSE(agent.supplies.at(0).type || agent.supplies.at(0).name);
}

TEST(AskingTest, WhatHasAnotherTypeOrRangeIsAbsent)
{
    Table table = printerTable();
    table[inSystem(1)] = Number{1, ""};
    table[inSystem(2)] = std::string("1.3.6");
    table[inSystem(3)] = Number{-1, ""};
    table[lifeCount1] = Number{4294967296, ""};
    table[supply(9, 1)] = Number{2147483648, ""};
    table[inSystem(5)] = {};
    const Agent agent = asked(table);

    EXPECT_FALSE(agent.description || agent.objectID || agent.uptime || agent.pages || agent.name);
    EXPECT_FALSE(agent.supplies.at(0).level);
}

TEST(AskingTest, PercentIsRoundedHalfUpAndAtMost100)
{
    const struct
    {
        long long level, capacity;
        std::optional<int> percent;
    } cases[] = {{0, 100, 0},
                 {1, 200, 1},
                 {1, 201, 0},
                 {199, 200, 100},
                 {149, 1000, 15},
                 {144, 1000, 14},
                 {145, 1000, 15},
                 {200, 100, 100},
                 {2147483647, 2147483647, 100},
                 {2147483646, 2147483647, 100},
                 {5, 0, {}},
                 {5, -1, {}},
                 {5, -2, {}},
                 {-1, 100, {}},
                 {-2, 100, {}},
                 {-3, 100, {}}};
    for (const auto& each : cases) {
        Table table = printerTable();
        addSupply(table, 1, "x", each.level, each.capacity);
        const Agent agent = asked(table);
        EXPECT_EQ(agent.supplies.at(0).level, each.level);
        EXPECT_EQ(agent.supplies[0].percent(), each.percent) << each.level << "/" << each.capacity;
    }
}

TEST(AskingTest, CellsThatAreLeftOutShiftNothing)
{
    Table table = printerTable();
    addSupply(table, 3, "Third", 3, 10);
    table.erase(supply(6, 1));
    table.erase(supply(9, 2));
    table.erase(supply(4, 3));
    const Agent agent = asked(table);

    ASSERT_EQ(agent.supplies.size(), 3U);
    EXPECT_FALSE(agent.supplies[0].name);
    EXPECT_EQ(agent.supplies[0].level, 42);
    EXPECT_EQ(agent.supplies[1].name, "Drum");
    EXPECT_FALSE(agent.supplies[1].level);
    EXPECT_EQ(agent.supplies[2].name, "Third");
    EXPECT_EQ(agent.supplies[2].level, 3);
    EXPECT_FALSE(agent.supplies[2].kind);
}

TEST(AskingTest, ASilentAgentHasNothing)
{
    FakePeer peer(printerTable());
    peer.silentAfter = 0;
    const Agent agent = asked(peer);

    EXPECT_EQ(agent.answers, false);
    EXPECT_FALSE(agent.printer || agent.name);
    EXPECT_EQ(peer.requests, 1);
}

TEST(AskingTest, WhatWasToldBeforeTheSilenceIsKept)
{
    FakePeer probe(printerTable());
    const Agent whole = asked(probe);
    for (int answered = 1; answered < probe.requests; ++answered) {
        FakePeer peer(printerTable());
        peer.silentAfter = answered;
        const Agent agent = asked(peer);
        EXPECT_EQ(agent.answers, true);
        EXPECT_EQ(agent.name, whole.name);
        EXPECT_EQ(agent.model.has_value(), answered > 1);
        EXPECT_EQ(peer.requests, answered + 1) << "one request in vain";
    }
}

TEST(AskingTest, AnErrorStatusIsAnAnswer)
{
    for (const long status : {1L, 2L, 3L, 5L, 16L, -1L, 1000000L}) {
        for (const long index : {0L, 1L, 7L, 8L, -1L, 1000000L}) {
            FakePeer peer(printerTable());
            peer.change = [=](const std::vector<Name>&, const Answer&) {
                return Answer{status, index, {}};
            };
            const Agent agent = asked(peer);
            EXPECT_EQ(agent.answers, true);
            EXPECT_EQ(agent.printer, false);
            EXPECT_FALSE(agent.name);
            EXPECT_LE(peer.requests, 14);
        }
    }
}

TEST(AskingTest, AnAgentThatAnswersOneNameAtATime)
{
    FakePeer peer(printerTable());
    peer.change = [](const std::vector<Name>& names, const Answer& answer) {
        return names.size() == 1 ? answer : Answer{1, 0, {}}; // tooBig
    };
    const Agent agent = asked(peer);

    EXPECT_EQ(agent.name, "name");
    EXPECT_EQ(agent.model, "Laser 3000");
    EXPECT_EQ(agent.supplies.size(), 2U);
}

TEST(AskingTest, NamesThatDoNotAscendEndAWalk)
{
    const std::pair<const char*, std::function<Name(const Name&)>> cases[] = {
        {"the same", [](const Name& name) { return name; }},
        {"the first row again", [](const Name& name) { return supply(name.at(10), 1); }},
        {"an earlier object", [](const Name&) { return inSystem(1); }},
        {"no name", [](const Name&) { return Name(); }}};
    for (const auto& [what, successor] : cases) {
        FakePeer peer(printerTable());
        peer.change = [&successor = successor](const std::vector<Name>& names, Answer answer) {
            for (std::size_t i = 0; i < names.size(); ++i) {
                if (names[i].size() == 13) { // a cell
                    answer.bindings.at(i).name = successor(names[i]);
                }
            }
            return answer;
        };
        EXPECT_EQ(asked(peer).supplies.size(), 1U) << what;
        EXPECT_LT(peer.requests, 20) << what;
    }
}

TEST(AskingTest, ATableEndsAfter200Rows)
{
    Table table = printerTable();
    for (unsigned long row = 1; row <= 250; ++row) {
        addSupply(table, row, "Toner", 1, 2);
    }
    EXPECT_EQ(asked(table).supplies.size(), 200U);
}

TEST(AskingTest, ATableWhoseCellsNeverMeetEndsAfter200Rows)
{
    Table table = printerTable();
    for (unsigned long row = 1; row <= 600; ++row) {
        table[supply(4 + row % 6, 10 + row)] = Number{1, ""};
    }
    EXPECT_EQ(asked(table).supplies.size(), 200U);
}

TEST(AskingTest, MoreOrFewerBindingsThanWereAskedFor)
{
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{100}}) {
        FakePeer peer(printerTable());
        peer.change = [count](const std::vector<Name>&, Answer answer) {
            answer.bindings.resize(count, {inSystem(9), {}});
            return answer;
        };
        EXPECT_EQ(asked(peer).answers, true);
        EXPECT_LT(peer.requests, 1300);
    }
}

TEST(AskingTest, ObjectsThatWereNotAskedForDoNotCount)
{
    Table table = hostTable();
    table.erase(inSystem(5));
    table[{1, 3, 6, 1, 2, 1, 1, 5, 1}] = std::string("another instance");
    table[{1, 3, 6, 1, 2, 1, 43, 5, 1, 1, 17}] = std::string("a column without an index");
    const Agent agent = asked(table);

    EXPECT_FALSE(agent.name);
    EXPECT_EQ(agent.printer, false);
}

} // namespace

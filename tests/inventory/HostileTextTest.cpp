// Texts of agents that mean harm, in every format.

#include "inventory/CSVFormat.h"
#include "inventory/Comparison.h"
#include "inventory/HTMLFormat.h"
#include "inventory/JSONFormat.h"
#include "inventory/TableFormat.h"
#include "inventory/Utf8.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using inventory::Agent;
using inventory::Character;

const std::string hostileTexts[] = {
    "<script>alert(1)</script>",
    "\"><img src=http://192.0.2.1/x onerror=alert(1)>",
    "</title></style><svg/onload=alert(1)>",
    "&lt;b&gt;' onclick='x",
    "\x1b[2J\x1b]0;title\x07",
    std::string("\xc2\x9b") + "2J",     // CSI as one character of Unicode
    "\xc2\x80\xc2\x9f\xc2\xa0\xc3\x9b", // the ends of C1, and what is like it but harmless
    "\x1b=1",
    "line\r\nsecond,\"quoted\"\n",
    "=cmd|' /C calc'!A0",
    "+1",
    "-1",
    "@SUM(1)",
    "\t=1",
    "\r=1",
    std::string("a\0b", 3),
    "\x7f\x01\x08",
    // NOLINTNEXTLINE(misc-misleading-bidirectional): what a hostile agent sends is the subject
    std::string("\xe2\x80\xae") + "evil\xe2\x81\xa6",
    "\xe2\x80\xa8new line",
    "\\\"},{\"hostname\":\"192.0.2.1\"",
    "{#ADDRESS}",
    "${HOME} $(id) `id`",
    "../../etc/passwd",
    std::string(1024, '\xff'),
    "\xf4\x8f\xbf\xbf\xef\xbf\xbe",
};

Agent hostile(const std::string& sent)
{
    const std::optional<std::string> text = inventory::textFromAgent(sent);
    Agent agent(*inventory::Address::parse("192.0.2.9"));
    agent.answers = true;
    agent.printer = true;
    for (auto* const each : {&agent.name, &agent.description, &agent.location, &agent.contact,
                             &agent.model, &agent.serial, &agent.status}) {
        *each = text;
    }
    inventory::Supply supply;
    supply.name = text;
    supply.unit = text;
    supply.level = 7;
    agent.supplies.push_back(supply);
    return agent;
}

class HostileTextTest : public testing::TestWithParam<std::string>
{
protected:
    const std::vector<Agent> agents = {hostile(GetParam())};
};

TEST_P(HostileTextTest, JSONHoldsItAsATextAndNothingMore)
{
    const auto report = nlohmann::json::parse(inventory::toJSON(agents));
    ASSERT_EQ(report.size(), 1U);
    EXPECT_EQ(report[0].size(), 11U);
    EXPECT_EQ(report[0]["hostname"], "192.0.2.9");
    EXPECT_EQ(report[0]["name"], *agents[0].name);
    const auto compared = nlohmann::json::parse(toJSON(inventory::compare({}, agents, false)));
    EXPECT_EQ(compared["appeared"][0]["name"], *agents[0].name);
    const auto targets = nlohmann::json::parse(inventory::toPrometheus(agents));
    ASSERT_EQ(targets.size(), 1U);
    EXPECT_EQ(targets[0]["targets"], nlohmann::json::array({"192.0.2.9"}));
    EXPECT_EQ(targets[0]["labels"]["snmp_location"], *agents[0].name);
    const auto macros = nlohmann::json::parse(inventory::toZabbix(agents));
    ASSERT_EQ(macros.size(), 1U);
    EXPECT_EQ(macros[0]["{#ADDRESS}"], "192.0.2.9");
    EXPECT_EQ(macros[0]["{#NAME}"], *agents[0].name);
}

/// Reads the lines of RFC 4180.
std::vector<std::vector<std::string>> readCSV(const std::string& text)
{
    std::vector<std::vector<std::string>> lines(1, std::vector<std::string>(1));
    bool quoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (quoted && c == '"' && at + 1 < text.size() && text[at + 1] == '"') {
            lines.back().back() += text[++at];
        } else if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && c == ',') {
            lines.back().emplace_back();
        } else if (!quoted && c == '\r' && at + 1 < text.size() && text[at + 1] == '\n') {
            ++at;
            lines.emplace_back(1);
        } else {
            lines.back().back() += c;
        }
    }
    lines.pop_back();
    return lines;
}

/// `text` as CSV shows it.
std::string shown(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const Character character = inventory::firstCharacter(text);
        const char32_t code = character.code;
        const bool control = (code < 0x20 && code != '\t' && code != '\r' && code != '\n') ||
                             (code >= 0x7f && code < 0xa0) ||
                             inventory::isBidirectionalControl(code);
        result += control ? std::string_view("\xef\xbf\xbd") : character.bytes;
        text.remove_prefix(character.bytes.size());
    }
    return result;
}

TEST_P(HostileTextTest, CSVAndJSONHoldNoControlCharacterOfATerminal)
{
    const inventory::Comparison appeared = inventory::compare({}, agents, false);
    for (const std::string& text :
         {inventory::toCSV(agents), inventory::toJSON(agents), inventory::toPrometheus(agents),
          inventory::toZabbix(agents), toJSON(appeared)}) {
        std::string_view rest = text;
        while (!rest.empty()) {
            const Character character = inventory::firstCharacter(rest);
            const char32_t code = character.code;
            EXPECT_TRUE(code == '\n' || code == '\r' || code == '\t' ||
                        (code >= 0x20 && code < 0x7f) || code >= 0xa0)
                << code;
            rest.remove_prefix(character.bytes.size());
        }
    }
}

TEST_P(HostileTextTest, CSVHasOneLineMoreThanTheHeadingAndNoFormula)
{
    const auto lines = readCSV(inventory::toCSV(agents));
    ASSERT_EQ(lines.size(), 2U);
    ASSERT_EQ(lines[1].size(), 14U);
    const std::string text = shown(*agents[0].name);
    const bool formula = std::string("=+-@\t\r").find(text[0]) != std::string::npos;
    EXPECT_EQ(lines[1][2], (formula ? "'" : "") + text);
    for (const std::string& cell : lines[1]) {
        EXPECT_FALSE(!cell.empty() && std::string("=+-@\t\r").find(cell[0]) != std::string::npos);
    }
}

TEST_P(HostileTextTest, NoControlCharacterReachesATerminal)
{
    inventory::screenOfStandardOutput(); // sets the locale
    for (const inventory::Screen& screen :
         {inventory::Screen{}, inventory::Screen{40, false}, inventory::Screen{80, true}}) {
        const std::string table = inventory::toTable(agents, screen);
        EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 2);
        std::string_view rest = table;
        while (!rest.empty()) {
            const Character character = inventory::firstCharacter(rest);
            const char32_t code = character.code;
            EXPECT_TRUE(code == '\n' || (code >= 0x20 && code < 0x7f) || code >= 0xa0) << code;
            EXPECT_FALSE(inventory::isBidirectionalControl(code)) << code;
            EXPECT_TRUE(!screen.ascii || code < 0x7f);
            rest.remove_prefix(character.bytes.size());
        }
    }
}

TEST_P(HostileTextTest, HTMLHasNoElementMoreThanForAPlainText)
{
    const auto elements = [](const std::string& page) {
        return std::count(page.begin(), page.end(), '<');
    };
    const auto quotes = [](const std::string& page) {
        return std::count(page.begin(), page.end(), '"');
    };
    const std::string plain = inventory::toHTML({hostile("plain")});
    const std::string page = inventory::toHTML(agents);
    EXPECT_EQ(elements(page), elements(plain));
    EXPECT_EQ(quotes(page), quotes(plain));
    for (const char c : page) {
        EXPECT_TRUE(c == '\n' || c == '\t' || static_cast<unsigned char>(c) >= 0x20) << int{c};
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileTextTest, testing::ValuesIn(hostileTexts));

} // namespace

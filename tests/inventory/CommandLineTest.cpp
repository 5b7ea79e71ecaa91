#include "inventory/CommandLine.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using inventory::EndAtOnce;
using inventory::Format;
using inventory::Settings;

std::variant<Settings, EndAtOnce> read(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "snmp-inventory");
    return inventory::readCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

Settings settings(const std::vector<const char*>& arguments)
{
    const auto result = read(arguments);
    if (const auto* const end = std::get_if<EndAtOnce>(&result)) {
        ADD_FAILURE() << end->text;
        return {};
    }
    return std::get<Settings>(result);
}

TEST(CommandLineTest, Defaults)
{
    const Settings read = settings({});
    EXPECT_FALSE(read.tool || read.from || read.noAsk || read.printers || read.format ||
                 read.output || read.compare || read.communityFile || read.credentials ||
                 read.mibs || read.quiet);
    EXPECT_EQ(read.parallel, 64U);
    EXPECT_EQ(read.seconds, 10U);
    EXPECT_EQ(formatOf(read, true), Format::table);
    EXPECT_EQ(formatOf(read, false), Format::json);
}

TEST(CommandLineTest, EveryOption)
{
    const Settings read = settings({"--tool", "t", "--printers", "--format=csv", "--output", "o",
                                    "--community-file", "c", "--credentials", "k", "--parallel",
                                    "1024", "--seconds", "3600", "--mibs", "m", "--quiet"});
    EXPECT_EQ(read.tool, "t");
    EXPECT_TRUE(read.printers);
    EXPECT_EQ(read.format, Format::csv);
    EXPECT_EQ(read.output, "o");
    EXPECT_EQ(read.communityFile, "c");
    EXPECT_EQ(read.credentials, "k");
    EXPECT_EQ(read.parallel, 1024U);
    EXPECT_EQ(read.seconds, 3600U);
    EXPECT_EQ(read.mibs, "m");
    EXPECT_TRUE(read.quiet);
    EXPECT_EQ(settings({"--from", "-", "--compare", "r"}).from, "-");
    EXPECT_EQ(settings({"--from", "-", "--compare", "r"}).compare, "r");
    EXPECT_TRUE(settings({"--no-ask"}).noAsk);
}

TEST(CommandLineTest, EveryFormat)
{
    const std::pair<const char*, Format> formats[] = {{"table", Format::table},
                                                      {"json", Format::json},
                                                      {"csv", Format::csv},
                                                      {"html", Format::html},
                                                      {"zabbix", Format::zabbix},
                                                      {"prometheus", Format::prometheus},
                                                      {"addresses", Format::addresses}};
    for (const auto& [name, format] : formats) {
        EXPECT_EQ(formatOf(settings({"--format", name}), true), format);
    }
}

TEST(CommandLineTest, IntoAFileTheDefaultIsJSONOnATerminalToo)
{
    EXPECT_EQ(formatOf(settings({"--output", "o"}), true), Format::json);
    EXPECT_EQ(formatOf(settings({"--output", "o", "--format", "table"}), false), Format::table);
}

TEST(CommandLineTest, WrongOnesEndWith2AndOneLine)
{
    const std::vector<const char*> cases[] = {{"--no-ask", "--printers"},
                                              {"--printers", "--no-ask"},
                                              {"--no-ask", "--compare", "r"},
                                              {"--from", "f", "--tool", "t"},
                                              {"--parallel", "0"},
                                              {"--parallel", "1025"},
                                              {"--parallel", "-1"},
                                              {"--parallel", "many"},
                                              {"--seconds", "0"},
                                              {"--seconds", "3601"},
                                              {"--seconds", "1.5"},
                                              {"--format", "xml"},
                                              {"--format", "CSV"},
                                              {"--format", "0"},
                                              {"--compare", "r", "--format", "csv"},
                                              {"--compare", "r", "--format", "html"},
                                              {"--compare", "r", "--format", "addresses"},
                                              {"--community", "secret"},
                                              {"--output"},
                                              {"--output", "a", "--output", "b"},
                                              {"192.0.2.9"},
                                              {"two\nlines\x1b[2J"},
                                              {"--format", "two\nlines"},
                                              {"-x"}};
    for (const auto& arguments : cases) {
        const auto result = read(arguments);
        const auto* const end = std::get_if<EndAtOnce>(&result);
        ASSERT_NE(end, nullptr) << arguments[0];
        EXPECT_EQ(end->code, 2) << arguments[0];
        EXPECT_EQ(end->text.rfind("snmp-inventory: ", 0), 0U);
        EXPECT_EQ(end->text.find('\n'), end->text.size() - 1) << end->text;
        EXPECT_EQ(end->text.find('\x1b'), std::string::npos);
    }
}

TEST(CommandLineTest, HelpAndVersion)
{
    for (const char* const option : {"-h", "--help"}) {
        const auto help = std::get<EndAtOnce>(read({option}));
        EXPECT_EQ(help.code, 0);
        for (const char* const name : {"--tool", "--from", "--no-ask", "--printers", "--format",
                                       "--output", "--compare", "--community-file", "--credentials",
                                       "--parallel", "--seconds", "--mibs", "--quiet"}) {
            EXPECT_NE(help.text.find(name), std::string::npos) << name;
        }
    }
    const auto version = std::get<EndAtOnce>(read({"--version"}));
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.text.rfind("snmp-inventory 1.", 0), 0U) << version.text;
}

} // namespace

#include "inventory/CommandLine.h"

#include "inventory/Failure.h"

#include <CLI/CLI.hpp>

#include <map>
#include <sstream>

namespace inventory {

namespace {

const std::map<std::string, Format> formats = {{"table", Format::table},
                                               {"json", Format::json},
                                               {"csv", Format::csv},
                                               {"html", Format::html},
                                               {"prometheus", Format::prometheus},
                                               {"zabbix", Format::zabbix},
                                               {"addresses", Format::addresses}};

void addOptions(CLI::App& app, Settings& settings, std::string& format)
{
    auto* const tool = app.add_option("--tool", settings.tool,
                                      "The discovery tool (default: SNMPDiscovery beside this "
                                      "program, else on PATH)");
    tool->type_name("PATH");
    app.add_option("--from", settings.from,
                   "A document in place of a run: the tool's, or a JSON report of this program; "
                   "\"-\" is standard input")
        ->type_name("FILE")
        ->excludes(tool);
    auto* const noAsk =
        app.add_flag("--no-ask", settings.noAsk, "Addresses only; the agents are not asked");
    app.add_flag("--printers", settings.printers, "Only agents that are printers")->excludes(noAsk);
    app.add_option("--format", format,
                   "table, json, csv, html, prometheus, zabbix or addresses (default: table on a "
                   "terminal, else json)")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(formats).description(""));
    app.add_option("--output", settings.output,
                   "Replaces FILE in one step, once everything has gone well")
        ->type_name("FILE");
    app.add_option("--compare", settings.compare,
                   "An earlier JSON report: writes what appeared, vanished and changed")
        ->type_name("FILE")
        ->excludes(noAsk);
    app.add_option("--community-file", settings.communityFile,
                   "Its first line is the community (default: SNMP_COMMUNITY in the environment, "
                   "else public)")
        ->type_name("FILE");
    app.add_option("--credentials", settings.credentials,
                   "How the agents are asked: lines \"key = value\", see the manual page")
        ->type_name("FILE");
    app.add_option("--parallel", settings.parallel, "Agents asked at once (default: 64)")
        ->type_name("N")
        ->check(CLI::Range(1, 1024).description(""));
    app.add_option("--seconds", settings.seconds, "Time given to one agent (default: 10)")
        ->type_name("N")
        ->check(CLI::Range(1, 3600).description(""));
    app.add_option("--mibs", settings.mibs,
                   "The folder of MIB modules (default: mibs beside this program or the tool)")
        ->type_name("FOLDER");
    app.add_flag("--quiet", settings.quiet, "No progress on standard error");
}

EndAtOnce wrong(const std::string& reason)
{
    return {2, "snmp-inventory: " + oneLine(reason) + "; see snmp-inventory --help\n"};
}

} // namespace

std::variant<Settings, EndAtOnce> readCommandLine(int argc, const char* const* argv)
{
    Settings settings;
    CLI::App app("Finds the SNMP agents on the attached subnets, asks which are printers and what "
                 "they lack,\nand reports it.",
                 "snmp-inventory");
    app.set_help_flag("-h,--help", "Show this help and end");
    app.set_version_flag("--version", "snmp-inventory " SNMPDISCOVERY_VERSION,
                         "Show the version and end");
    std::string format;
    addOptions(app, settings, format);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            std::ostringstream text;
            app.exit(error, text, text);
            return EndAtOnce{0, text.str()};
        }
        return wrong(error.what());
    }
    if (!format.empty()) {
        settings.format = formats.at(format);
    }
    if (settings.compare && settings.format && *settings.format != Format::table &&
        *settings.format != Format::json) {
        return wrong("--compare has the formats table and json");
    }
    return settings;
}

Format formatOf(const Settings& settings, bool terminal)
{
    if (settings.format) {
        return *settings.format;
    }
    return terminal && !settings.output ? Format::table : Format::json;
}

} // namespace inventory

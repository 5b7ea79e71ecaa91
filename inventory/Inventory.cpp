// One run, from the settings to the report.

#include "inventory/Inventory.h"

#include "inventory/CSVFormat.h"
#include "inventory/Community.h"
#include "inventory/Comparison.h"
#include "inventory/Document.h"
#include "inventory/Failure.h"
#include "inventory/HTMLFormat.h"
#include "inventory/JSONFormat.h"
#include "inventory/OutputFile.h"
#include "inventory/Pool.h"
#include "inventory/PrivateFolder.h"
#include "inventory/Progress.h"
#include "inventory/TableFormat.h"
#include "inventory/ToolRun.h"
#include "snmp/Messages.h"

#include <Poco/Exception.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace inventory {

namespace {

using UVARNETSNMP::SNMPSession;

constexpr int reported = 0;
constexpr int different = 3;
constexpr std::chrono::seconds toolTime(30);

/// What the run needs besides its settings, read before anything is sent.
struct Preparation
{
    std::string community;
    Credentials credentials;
    std::optional<OutputFile> output;
    std::vector<Agent> earlier;
};

Preparation prepare(const Settings& settings)
{
    Preparation preparation;
    preparation.community = readCommunity(settings.communityFile);
    preparation.credentials = settings.credentials
                                  ? readCredentials(*settings.credentials, preparation.community)
                                  : credentialsFor(preparation.community);
    if (settings.output) {
        preparation.output.emplace(*settings.output);
    }
    if (settings.compare) {
        preparation.earlier = readReport(readFile(*settings.compare), *settings.compare);
    }
    return preparation;
}

std::vector<Address> discover(ToolRun& tool, Progress& progress)
{
    const auto start = std::chrono::steady_clock::now();
    const std::string document = tool.document(toolTime, [&] {
        const auto passed = std::chrono::steady_clock::now() - start;
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
        progress.show("Looking for agents: " + std::to_string(seconds) + " s");
    });
    return readAddresses(document, "the tool's document");
}

std::string mibFolder(const Settings& settings, const std::optional<ToolRun>& tool)
{
    if (settings.mibs) {
        return *settings.mibs;
    }
    const std::string beside = (std::filesystem::path(ownFolder()) / "mibs").string();
    std::error_code error;
    return std::filesystem::is_directory(beside, error) || !tool ? beside : tool->mibs();
}

/// Net-SNMP for as long as agents are asked. Its persistent data go into the private folder:
/// nothing of it is needed again.
class NetSNMP
{
public:
    NetSNMP(const PrivateFolder& folder, const std::string& mibs)
    {
        if (access(mibs.c_str(), R_OK | X_OK) != 0) {
            throw Failure("the MIB modules (see --mibs): " + mibs, errno);
        }
        UVARNETSNMP::DiscardMessages();
        SNMPSession::Initialize("snmp-inventory", folder.path(), mibs, "Printer-MIB");
        if (!UVARNETSNMP::OID("Printer-MIB::prtGeneralSerialNumber").valid()) {
            throw Failure(mibs + ": holds no Printer-MIB; name the MIB modules by --mibs");
        }
    }
    ~NetSNMP() { SNMPSession::Terminate(); }
    NetSNMP(const NetSNMP&) = delete;
    NetSNMP& operator=(const NetSNMP&) = delete;
};

/// Lets the process open a socket for each of `parallel` agents, beside what else it has open, and
/// returns for how many of them, at least one, the system allows it.
std::size_t socketsFor(std::size_t parallel)
{
    constexpr rlim_t others = 64; // files; half of what there is where that is little
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0) {
        return parallel;
    }
    const rlim_t wanted = std::min<rlim_t>(files.rlim_max, parallel + others);
    if (files.rlim_cur < wanted) {
        const rlimit raised = {wanted, files.rlim_max};
        files.rlim_cur = setrlimit(RLIMIT_NOFILE, &raised) == 0 ? wanted : files.rlim_cur;
    }
    const rlim_t fit = files.rlim_cur - std::min(others, files.rlim_cur / 2);
    return static_cast<std::size_t>(std::max<rlim_t>(1, std::min<rlim_t>(fit, parallel)));
}

/// Throws Failure when an agent could not be asked: silence would be told of it.
void askAll(std::vector<Agent>& agents, const Credentials& credentials, const Settings& settings,
            Progress& progress)
{
    const std::string ofAll = " of " + std::to_string(agents.size()) + " agents";
    std::atomic<const Agent*> unasked = nullptr;
    try {
        workInParallel(
            agents.size(), socketsFor(settings.parallel),
            [&](std::size_t number) {
                Agent& agent = agents[number];
                agent.answers = false;
                SNMPPeer peer(credentials, agent.address.text(),
                              std::chrono::seconds(settings.seconds));
                if (peer.open()) {
                    ask(peer, agent);
                } else {
                    unasked = &agent;
                }
            },
            [&](std::size_t done) { progress.show("Asked " + std::to_string(done) + ofAll); });
    } catch (const Poco::Exception& exception) {
        throw Failure("no thread: " + exception.displayText());
    }
    if (const Agent* const agent = unasked) {
        throw Failure("no socket for " + agent->address.text());
    }
}

std::vector<Agent> gather(const Settings& settings, const Preparation& preparation,
                          Progress& progress)
{
    const PrivateFolder folder;
    std::optional<ToolRun> tool;
    std::vector<Address> addresses;
    if (settings.from) {
        addresses = readAddresses(readFile(*settings.from), *settings.from);
    } else {
        tool.emplace(settings.tool);
        tool->configure(preparation.community, folder);
        addresses = discover(*tool, progress);
    }
    std::vector<Agent> agents(addresses.begin(), addresses.end());
    if (!settings.noAsk && !agents.empty()) {
        const NetSNMP library(folder, mibFolder(settings, tool));
        askAll(agents, preparation.credentials, settings, progress);
    }
    return agents;
}

std::string render(const std::vector<Agent>& agents, Format format, const Screen& screen)
{
    switch (format) {
    case Format::table:
        return toTable(agents, screen);
    case Format::csv:
        return toCSV(agents);
    case Format::html:
        return toHTML(agents);
    case Format::prometheus:
        return toPrometheus(agents);
    case Format::zabbix:
        return toZabbix(agents);
    case Format::addresses:
        return toAddresses(agents);
    case Format::json:
        break;
    }
    return toJSON(agents);
}

void write(const std::string& report, const std::optional<OutputFile>& output)
{
    if (output) {
        output->replace(report);
        return;
    }
    if (std::fwrite(report.data(), 1, report.size(), stdout) != report.size() ||
        std::fflush(stdout) != 0) {
        throw Failure("standard output", errno);
    }
}

} // namespace

int run(const Settings& settings)
{
    Screen screen = screenOfStandardOutput();
    const Format format = formatOf(settings, screen.columns.has_value());
    if (settings.output) {
        screen = {};
    }
    const Preparation preparation = prepare(settings);
    std::vector<Agent> agents;
    {
        Progress progress(!settings.quiet);
        agents = gather(settings, preparation, progress);
    }
    if (settings.compare) {
        const Comparison comparison = compare(preparation.earlier, agents, settings.printers);
        write(format == Format::table ? toTable(comparison, screen) : toJSON(comparison),
              preparation.output);
        return comparison.isEmpty() ? reported : different;
    }
    if (settings.printers) {
        agents.erase(std::remove_if(agents.begin(), agents.end(),
                                    [](const Agent& agent) { return !agent.isPrinter(); }),
                     agents.end());
    }
    write(render(agents, format, screen), preparation.output);
    return reported;
}

} // namespace inventory

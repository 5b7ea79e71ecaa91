// One discovery run, from the settings to the printed document.
//
// Every subnet is probed twice, by two workers that overlap: the second pass starts while the first
// still listens. A printer that slept through the first request, or whose answer was lost, gets a
// second chance, and the run becomes longer by one pause only.

#include "app/PersistentFolder.h"
#include "app/SNMPDiscoveryApp.h"
#include "app/StandardErrorLog.h"
#include "app/Subnets.h"
#include "snmp/Messages.h"
#include "value/Value.h"

#include <Poco/Path.h>
#include <Poco/SharedPtr.h>

#include <unistd.h>

#include <iostream>
#include <map>
#include <utility>

using Poco::Path;
using Poco::Net::NetworkInterface;
using UVARNETSNMP::SNMPSession;

namespace {

constexpr int passes = 2;
constexpr long pauseAfterPass = 2000; // milliseconds

/// Octets of each worker's receive buffer. All agents of a subnet answer a broadcast at the same
/// moment, and an answer that does not fit is lost. On Linux a small datagram takes 768 octets of
/// the buffer, or the 2 or 4 kB that the network driver received it in.
constexpr int receiveBuffer = 4 * 1024 * 1024;

/// The folder "mibs" beside the executable.
Path mibDirectory(const std::string& executable)
{
    Path directory;
    directory.assign(executable);
    directory.setFileName("");
    directory.pushDirectory("mibs");
    return directory;
}

/// An array with one hash {"hostname": address} for each responder, in the set's order.
Value document(const std::set<std::string>& responders)
{
    std::vector<Value> entries;
    entries.reserve(responders.size());
    for (const std::string& address : responders) {
        std::map<std::string, Value> entry;
        entry.emplace("hostname", Value(address));
        entries.emplace_back(std::move(entry));
    }
    return Value(std::move(entries));
}

} // namespace

int SNMPDiscoveryApp::main(const std::vector<std::string>& /*args*/)
{
    // Read even when only the help was shown: so a value that POCO cannot expand (one that refers
    // to itself) ends with 70, after the help too.
    m_community = config().getString("Community", "public");
    if (m_helpRequested) {
        return EXIT_USAGE;
    }

    {
        std::vector<NetworkInterface> interfaces = NetworkInterface::list(true, true);
        std::vector<Poco::SharedPtr<SubnetDiscovery>> workers;

        const std::string persistent = persistentFolder(config().getString("SNMPPersistPath", ""));
        const Path mibs = mibDirectory(config().getString("application.path", ""));
        UVARNETSNMP::RouteMessages(&StandardErrorLog::write,
                                   StandardErrorLog::withoutWaiting(STDERR_FILENO));
        if (!SNMPSession::Initialize("SNMPDiscovery", persistent, mibs.toString(), "Printer-MIB")) {
            return EXIT_USAGE;
        }
        SNMPSession::AskForReceiveBuffer(receiveBuffer);

        keepProbeable(interfaces);
        for (int pass = 0; pass < passes; ++pass) {
            for (const NetworkInterface& interface : interfaces) {
                // The worker's thread runs already. It needs an owner before the vector may throw.
                Poco::SharedPtr<SubnetDiscovery> worker(
                    new SubnetDiscovery(*this, broadcastAddress(interface), m_community));
                workers.push_back(std::move(worker));
            }
            Poco::Thread::sleep(pauseAfterPass);
        }

        // Destroying a worker joins its thread, so this waits until the last one has listened.
        while (!workers.empty()) {
            workers.pop_back();
        }

        // No lock: every thread that added a responder has been joined.
        std::cout << document(m_responders).to_json();
    }

    SNMPSession::Terminate();
    return EXIT_USAGE;
}

#pragma once

#include <Poco/Net/NetworkInterface.h>

#include <pthread.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace UVARNETSNMP {
class SNMPSession;
}
struct snmp_pdu;

/// Stands in for the host's interfaces, for the SNMP library and for the run's pauses: the test
/// program defines `NetworkInterface::list`, the members of `SNMPSession` that the application uses
/// and `nanosleep`, so nothing is ever sent and no pause takes time. It records the application's
/// calls in order, and answers each by the function that the test gave it (the public members). A
/// call for which there is none fails the test, except for pauses and the opening of sessions.
///
/// Threads: the application's workers call from their own threads, and every member is locked. The
/// public functions must be set before the first worker starts.
class FakeNetwork
{
public:
    /// One asynchronous GET of a worker.
    struct Request
    {
        std::string oidText;
        long version;
        std::string community;
        std::string peer;
        bool broadcast;
        void* context;
        void (*callback)(UVARNETSNMP::SNMPSession&, void*, snmp_pdu*);
        long long timeout; ///< microseconds
        pthread_t thread;
    };

    /// Receives the application's calls until it is destroyed. Only one may exist at a time.
    FakeNetwork();
    ~FakeNetwork();
    FakeNetwork(const FakeNetwork&) = delete;
    FakeNetwork& operator=(const FakeNetwork&) = delete;

    static FakeNetwork& instance();

    /// False where a library's calls do not reach the program's own `nanosleep` (macOS). There
    /// pauses are real, are not recorded, and do not call `pause`.
    static bool pausesAreFaked() noexcept;
    /// Whether this is the thread that made the object, whose pauses are faked: the main thread.
    bool onItsOwnThread() const noexcept { return std::this_thread::get_id() == m_thread; }

    std::function<std::vector<Poco::Net::NetworkInterface>()> list;
    std::function<bool(const std::string& name, const std::string& persistentDirectory,
                       const std::string& mibDirectory, const std::string& mib)>
        initialize;
    std::function<void()> open; ///< called for each session; may throw; optional
    std::function<bool(UVARNETSNMP::SNMPSession&, const Request&)> get;
    std::function<void()> terminate;
    std::function<void()> pause; ///< called instead of each pause; optional

    void record(const std::string& call);
    std::vector<std::string> calls() const;

    void add(const Request& request);
    std::vector<Request> requests() const;

    /// Blocks until `count` requests have come in, ten seconds at most; false if they have not.
    bool waitForRequests(std::size_t count) const;

private:
    const std::thread::id m_thread = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<std::string> m_calls;
    std::vector<Request> m_requests;
};

/// An interface with the given IPv4 or IPv6 addresses, each with its mask. It has no name: POCO
/// asks the system about an interface as soon as it has one.
Poco::Net::NetworkInterface
makeInterface(const std::vector<std::pair<std::string, std::string>>& addresses);

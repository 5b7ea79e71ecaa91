#include "tests/app/helpers/FakeNetwork.h"

#include "snmp/SNMPSession.h"

#include <Poco/Net/IPAddress.h>

#include <gtest/gtest.h>

#include <sys/select.h>
#include <time.h> // NOLINT(modernize-deprecated-headers): nanosleep is POSIX

#include <chrono>
#include <cstring>
#include <map>

using Poco::Net::IPAddress;
using Poco::Net::NetworkInterface;

namespace {

FakeNetwork* inForce = nullptr;

/// What the faked members know of a session. They do not use the real fields.
struct Opened
{
    long version;
    std::string community;
    std::string peer;
    bool broadcast;
};

std::mutex sessionsMutex;
std::map<const UVARNETSNMP::SNMPSession*, Opened> sessions;
thread_local std::string parsedText;

} // namespace

FakeNetwork::FakeNetwork()
{
    if (inForce != nullptr) {
        throw std::logic_error("two fake networks at once");
    }
    inForce = this;
}

FakeNetwork::~FakeNetwork()
{
    inForce = nullptr;
}

FakeNetwork& FakeNetwork::instance()
{
    if (inForce == nullptr) {
        throw std::logic_error("the application called its libraries outside a test");
    }
    return *inForce;
}

void FakeNetwork::record(const std::string& call)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(call);
}

std::vector<std::string> FakeNetwork::calls() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

void FakeNetwork::add(const Request& request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.push_back(request);
    m_changed.notify_all();
}

std::vector<FakeNetwork::Request> FakeNetwork::requests() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

bool FakeNetwork::waitForRequests(std::size_t count) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(10),
                              [&] { return m_requests.size() >= count; });
}

bool FakeNetwork::pausesAreFaked() noexcept
{
#ifdef __APPLE__
    return false;
#else
    return true;
#endif
}

NetworkInterface makeInterface(const std::vector<std::pair<std::string, std::string>>& addresses)
{
    NetworkInterface interface;
    for (const auto& [address, mask] : addresses) {
        interface.addAddress(IPAddress(address), IPAddress(mask), IPAddress());
    }
    return interface;
}

// The functions that the application would otherwise call. The program's own definitions take
// precedence over those of the libraries that it is linked with.

Poco::Net::NetworkInterface::List NetworkInterface::list(bool ipOnly, bool upOnly)
{
    FakeNetwork& network = FakeNetwork::instance();
    network.record(std::string("list ") + (ipOnly ? "ip" : "any") + (upOnly ? " up" : " any"));
    if (!network.list) {
        ADD_FAILURE() << "the interfaces were listed";
        return {};
    }
    return network.list();
}

extern "C" oid* snmp_parse_oid(const char* text, oid* ids, size_t* length)
{
    FakeNetwork::instance().record(std::string("parse ") + text);
    const oid sysUpTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    parsedText = text;
    std::memcpy(ids, sysUpTime, sizeof sysUpTime);
    *length = std::size(sysUpTime);
    return ids;
}

/// Poco::Thread::sleep calls this. On other threads, and without a fake, it sleeps.
extern "C" int nanosleep(const timespec* time, timespec*)
{
    if (inForce == nullptr || !inForce->onItsOwnThread()) {
        return pselect(0, nullptr, nullptr, nullptr, time, nullptr);
    }
    inForce->record("pause " + std::to_string(time->tv_sec * 1000 + time->tv_nsec / 1000000));
    if (inForce->pause) {
        inForce->pause();
    }
    return 0;
}

extern "C" void snmp_free_pdu(netsnmp_pdu*)
{
    ADD_FAILURE() << "the application released a response, which it keeps on purpose";
}

namespace UVARNETSNMP {

SNMPSession::SNMPSession(long version, const std::string& community, const std::string& host,
                         bool broadcast)
{
    FakeNetwork& network = FakeNetwork::instance();
    network.record("open");
    if (network.open) {
        network.open();
    }
    const std::lock_guard<std::mutex> lock(sessionsMutex);
    sessions[this] = {version, community, host, broadcast};
}

SNMPSession::~SNMPSession()
{
    FakeNetwork::instance().record("close");
    const std::lock_guard<std::mutex> lock(sessionsMutex);
    sessions.erase(this);
}

bool SNMPSession::Get(
    const OID& oid, ResponseCallback callback, void* userData,
    Poco::Timespan timeout) // NOLINT(performance-unnecessary-value-param): declared so
{
    FakeNetwork& network = FakeNetwork::instance();
    Opened opened;
    {
        const std::lock_guard<std::mutex> lock(sessionsMutex);
        opened = sessions.at(this);
    }
    EXPECT_EQ(oid.toDottedNotation(), "1.3.6.1.2.1.1.3.0");
    const FakeNetwork::Request request = {
        parsedText,       opened.version, opened.community, opened.peer,
        opened.broadcast, userData,       callback,         timeout.totalMicroseconds(),
        pthread_self()};
    network.add(request);
    if (!network.get) {
        ADD_FAILURE() << "a request was sent";
        return false;
    }
    return network.get(*this, request);
}

bool SNMPSession::Initialize(const std::string& name, const std::string& persistentDir,
                             const std::string& mibDir, const std::string& mib)
{
    FakeNetwork& network = FakeNetwork::instance();
    network.record("initialize");
    if (!network.initialize) {
        ADD_FAILURE() << "the SNMP library was set up";
        return false;
    }
    return network.initialize(name, persistentDir, mibDir, mib);
}

void SNMPSession::AskForReceiveBuffer(int octets)
{
    FakeNetwork::instance().record("receive buffer " + std::to_string(octets));
}

void SNMPSession::Terminate()
{
    FakeNetwork& network = FakeNetwork::instance();
    network.record("terminate");
    if (!network.terminate) {
        ADD_FAILURE() << "the SNMP library was torn down";
        return;
    }
    network.terminate();
}

} // namespace UVARNETSNMP

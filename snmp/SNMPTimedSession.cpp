// Requests that end at a deadline. Net-SNMP's synchronous requests cannot: they last until all
// resends are used up, and they accept an answer from any address.

#include "snmp/SNMPTimedSession.h"

#include "snmp/Sender.h"

#include <net-snmp/library/large_fd_set.h>
#include <net-snmp/library/snmpusm.h>

#include <arpa/inet.h>
#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

namespace UVARNETSNMP {

namespace {

constexpr int resends = 20;
constexpr std::string_view udp = "udp:"; // Net-SNMP's name of the transport, in front of an address

/// Held while a session of SNMPv3 is inside Net-SNMP; see the class.
std::mutex engines;

std::chrono::milliseconds untilOrZero(SNMPTimedSession::Time time)
{
    const auto left = time - std::chrono::steady_clock::now();
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(left),
                    std::chrono::milliseconds(0));
}

/// Removes an engine ID of a session of Net-SNMP's, which allocates them by malloc.
void Forget(unsigned char*& engine, std::size_t& length)
{
    std::free(engine); // NOLINT(cppcoreguidelines-no-malloc)
    engine = nullptr;
    length = 0;
}

} // namespace

/// A session's turn inside Net-SNMP: exclusive for SNMPv3 only.
class SNMPTimedSession::Turn
{
public:
    explicit Turn(long version) : m_lock(engines, std::defer_lock)
    {
        if (version == SNMP_VERSION_3) {
            m_lock.lock();
        }
    }

private:
    std::unique_lock<std::mutex> m_lock;
};

// The temporary Turn lives until the other constructor has ended. That one does not use its
// parameter, which exists only for its lifetime: it holds the lock while the base class opens.
SNMPTimedSession::SNMPTimedSession(long version, const SNMPSecurity& security,
                                   const std::string& host, long resend)
    : SNMPTimedSession(version, security, host, resend, Turn(version))
{}

SNMPTimedSession::SNMPTimedSession(long version, const SNMPSecurity& security,
                                   const std::string& host, long resend, const Turn& /*turn*/)
    : SNMPSession(version, security, host, false), m_resend(resend)
{
    const std::size_t address = host.compare(0, udp.size(), udp) == 0 ? udp.size() : 0;
    const std::size_t length = host.find(':', address) - address;
    if (inet_pton(AF_INET, host.substr(address, length).c_str(), &m_agent) != 1) {
        m_spent = true;
    }
    if (m_sessionPtr != nullptr) {
        m_sessionPtr->timeout = resend;
        m_sessionPtr->retries = resends;
    }
}

SNMPTimedSession::~SNMPTimedSession()
{
    // Not left to the base class: closing calls Received for an outstanding request, which needs
    // this object whole, and it needs a turn.
    if (m_sessionHandle != nullptr) {
        const Turn turn(m_session.version);
        snmp_sess_close(m_sessionHandle);
        m_sessionHandle = nullptr;
        m_sessionPtr = nullptr;
    }
    ReleasePDU(m_response);
}

snmp_pdu* SNMPTimedSession::Ask(int type, const std::vector<OID>& names, Time deadline)
{
    if (m_sessionPtr == nullptr || m_spent) {
        return nullptr;
    }
    if (m_session.version == SNMP_VERSION_3 && m_sessionPtr->securityEngineIDLen == 0 &&
        !FindEngine(deadline)) {
        m_spent = true;
        return nullptr;
    }
    const auto create = [&] {
        snmp_pdu* const request = snmp_pdu_create(type);
        for (const OID& name : names) {
            if (request != nullptr) {
                snmp_add_null_var(request, name.oidptr(), name.oidsize());
            }
        }
        return request;
    };
    Exchange(create, deadline);
    snmp_pdu* const response = m_response;
    m_response = nullptr;
    m_spent = response == nullptr;
    return response;
}

/// Sends an empty request without a user. The agent answers with a report that carries its engine
/// ID, and Net-SNMP stores it in the session. Net-SNMP's own probe would block.
bool SNMPTimedSession::FindEngine(Time deadline)
{
    const auto create = [] {
        snmp_pdu* const probe = snmp_pdu_create(SNMP_MSG_GET);
        if (probe != nullptr) {
            probe->version = SNMP_VERSION_3;
            probe->securityName = strdup("");
            probe->securityNameLen = 0;
            probe->securityLevel = SNMP_SEC_LEVEL_NOAUTH;
            probe->securityModel = SNMP_SEC_MODEL_USM;
        }
        return probe;
    };
    m_sessionPtr->flags |= SNMP_FLAGS_DONT_PROBE;
    Exchange(create, deadline);
    ReleasePDU(m_response);
    m_response = nullptr;
    const Turn turn(m_session.version);
    return m_heard && m_sessionPtr->securityEngineIDLen != 0 &&
           usm_create_user_from_session(m_sessionPtr) == SNMPERR_SUCCESS;
}

/// Sends what `create` returns, again when somebody else's report ended it. Afterwards m_response
/// is its response or null.
void SNMPTimedSession::Exchange(const std::function<snmp_pdu*()>& create, Time deadline)
{
    const bool engineKnown = m_sessionPtr->securityEngineIDLen != 0;
    const bool contextKnown = m_sessionPtr->contextEngineIDLen != 0;
    for (int sent = 0; sent <= resends; ++sent) {
        snmp_pdu* const request = create();
        if (request == nullptr) {
            return;
        }
        SendAndWait(request, deadline);
        if (m_state != State::disturbed) {
            return;
        }
        // Net-SNMP has stored the engine ID in the report, whoever sent it.
        if (!engineKnown) {
            Forget(m_sessionPtr->securityEngineID, m_sessionPtr->securityEngineIDLen);
        }
        if (!contextKnown) {
            Forget(m_sessionPtr->contextEngineID, m_sessionPtr->contextEngineIDLen);
        }
    }
}

/// Takes ownership of `request`.
void SNMPTimedSession::SendAndWait(snmp_pdu* request, Time deadline)
{
    m_state = State::waiting;
    {
        const Turn turn(m_session.version);
        if (snmp_sess_async_send(m_sessionHandle, request, &SNMPTimedSession::Received, this) ==
            0) {
            snmp_free_pdu(request);
            m_state = State::idle;
            return;
        }
    }
    Time nextResend = std::chrono::steady_clock::now() + m_resend;
    while (m_state == State::waiting && std::chrono::steady_clock::now() < deadline) {
        const netsnmp_transport* const transport = snmp_sess_transport(m_sessionHandle);
        pollfd socket = {transport == nullptr ? -1 : transport->sock, POLLIN, 0};
        const int ready =
            poll(&socket, 1, static_cast<int>(untilOrZero(std::min(deadline, nextResend)).count()));
        const bool due = std::chrono::steady_clock::now() >= nextResend;
        Serve(socket.fd, ready > 0, due);
        if (due) {
            nextResend = std::chrono::steady_clock::now() + m_resend;
        }
    }
}

void SNMPTimedSession::Serve(int descriptor, bool readable, bool resend)
{
    if (readable) {
        // Sized up front: growing it later loops for ever when memory runs out.
        netsnmp_large_fd_set ready = {};
        netsnmp_large_fd_set_init(&ready, descriptor + 1);
        if (ready.lfs_setsize != 0) {
            netsnmp_large_fd_setfd(descriptor, &ready);
            const Turn turn(m_session.version);
            snmp_sess_read2(m_sessionHandle, &ready);
        }
        netsnmp_large_fd_set_cleanup(&ready);
    }
    if (resend) {
        const Turn turn(m_session.version);
        snmp_sess_timeout(m_sessionHandle);
    }
}

/// The result 1 ends the request for Net-SNMP, 0 keeps it outstanding. Net-SNMP also calls this for
/// an outstanding request while the session closes.
int SNMPTimedSession::Received(int operation, snmp_session* /*session*/, int /*reqid*/,
                               snmp_pdu* pdu, void* magic)
{
    auto* const self = static_cast<SNMPTimedSession*>(magic);
    switch (operation) {
    case NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE:
        return pdu == nullptr ? 0 : self->Take(*pdu);
    case NETSNMP_CALLBACK_OP_SEC_ERROR:
        if (pdu != nullptr && !self->FromAgent(*pdu)) {
            self->m_state = State::disturbed;
            return 0;
        }
        self->m_state = State::refused;
        return 1;
    case NETSNMP_CALLBACK_OP_TIMED_OUT:
    case NETSNMP_CALLBACK_OP_SEND_FAILED:
        self->m_state = State::refused;
        return 1;
    default:
        return 1;
    }
}

int SNMPTimedSession::Take(snmp_pdu& pdu)
{
    if (!FromAgent(pdu)) {
        return 0;
    }
    if (pdu.command == SNMP_MSG_REPORT) {
        m_heard = true;
        // One that only tells the agent's time (RFC 3414, 2.3) comes here when Net-SNMP has used up
        // its resends.
        m_state = State::refused;
        return 1;
    }
    if (pdu.command != SNMP_MSG_RESPONSE) {
        return 0;
    }
    m_heard = true;
    m_response = snmp_clone_pdu(&pdu);
    m_state = State::answered;
    return 1;
}

bool SNMPTimedSession::FromAgent(const snmp_pdu& pdu) const
{
    const std::optional<in_addr> sender = SenderOf(pdu);
    return sender && sender->s_addr == m_agent.s_addr;
}

} // namespace UVARNETSNMP

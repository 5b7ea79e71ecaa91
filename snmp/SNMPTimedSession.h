#pragma once

#include "snmp/SNMPSession.h"

#include <netinet/in.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace UVARNETSNMP {

/// A session to one agent, for requests that end at a deadline and may ask for several names at
/// once. Only answers from the agent's address count; where Net-SNMP ends a request for a report of
/// SNMPv3 from elsewhere, it is sent anew, at most 20 times. Do not use the requests of the base
/// class on such a session.
///
/// Threads: as for SNMPSession. Sessions of SNMPv3 share Net-SNMP's tables of users and engines, so
/// only one of them at a time is inside Net-SNMP. No session waits there for an answer.
class SNMPTimedSession : public SNMPSession
{
public:
    /// A deadline.
    using Time = std::chrono::steady_clock::time_point;

    /// Opens a session to `host`, an IPv4 address with or without "udp:" and ":port". Every request
    /// is sent again after each `resend` microseconds without an answer, at most 20 times.
    SNMPTimedSession(long version, const SNMPSecurity& security, const std::string& host,
                     long resend);
    /// Not copied, as every session.
    SNMPTimedSession(const SNMPTimedSession&) = delete;
    /// Not assigned, as every session.
    SNMPTimedSession& operator=(const SNMPTimedSession&) = delete;
    /// Closes the session.
    ~SNMPTimedSession() override;

    /// Whether the session was opened. One that was not, such as for want of a descriptor, asks
    /// nothing.
    bool Open() const noexcept { return m_sessionPtr != nullptr; }

    /// Sends one request of `type` (SNMP_MSG_GET or SNMP_MSG_GETNEXT) for `names` and waits for
    /// its response, which the caller owns (ReleasePDU) and whose errstat the caller inspects.
    /// Null when the session is not open, nothing could be sent, no response came before
    /// `deadline`, or the agent refused the credentials. After that, Ask sends nothing more.
    ///
    /// With SNMPv3, the first request first discovers the agent's engine ID (RFC 3414, section 4)
    /// within the same deadline, unless the security parameters contain it.
    snmp_pdu* Ask(int type, const std::vector<OID>& names, Time deadline);

    /// Whether an answer to a request has come from the agent's address. A refusal counts too: an
    /// error-status, or a report of SNMPv3.
    bool Heard() const noexcept { return m_heard; }

private:
    enum class State
    {
        idle,
        waiting,
        answered,
        refused,
        disturbed ///< Net-SNMP has ended the request, for a report that was not the agent's
    };
    class Turn;

    SNMPTimedSession(long version, const SNMPSecurity& security, const std::string& host,
                     long resend, const Turn& turn);
    static int Received(int operation, snmp_session* session, int reqid, snmp_pdu* pdu,
                        void* magic);
    int Take(snmp_pdu& pdu);
    bool FromAgent(const snmp_pdu& pdu) const;
    bool FindEngine(Time deadline);
    void Exchange(const std::function<snmp_pdu*()>& create, Time deadline);
    void SendAndWait(snmp_pdu* request, Time deadline);
    void Serve(int descriptor, bool readable, bool resend);

    in_addr m_agent = {};
    std::chrono::microseconds m_resend;
    State m_state = State::idle;
    bool m_spent = false; ///< nothing more is sent: a late answer could be taken for another's
    bool m_heard = false;
    snmp_pdu* m_response = nullptr; ///< owned until Ask hands it out
};

} // namespace UVARNETSNMP

#pragma once

#include "inventory/Asking.h"
#include "snmp/SNMPTimedSession.h"

#include <chrono>
#include <map>
#include <string>

namespace inventory {

/// How agents are asked.
struct Credentials
{
    long version;                                              ///< SNMP_VERSION_1, _2c or _3
    std::map<std::string, UVARNETSNMP::ByteString> parameters; ///< keys of SNMPSecurity
};

/// An agent on the network. Not before Net-SNMP is set up.
class SNMPPeer : public Peer
{
public:
    /// All requests together end after `time`.
    SNMPPeer(const Credentials& credentials, const std::string& host, std::chrono::seconds time);

    std::optional<Answer> next(const std::vector<Name>& names) override;
    /// Whether there is a socket to ask by.
    bool open() const { return m_session.Open(); }
    bool heard() const override { return m_session.Heard(); }

    /// The content of a response. Labels come from the MIB modules that are loaded.
    static Answer read(const snmp_pdu& response);

private:
    UVARNETSNMP::SNMPTimedSession m_session;
    std::chrono::steady_clock::time_point m_deadline;
};

} // namespace inventory

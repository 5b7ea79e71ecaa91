#include "snmp/SNMPSession.h"

#include <cstring>
#include <map>

namespace UVARNETSNMP {

namespace {

/// Where the community-only constructor sends: the broadcast address of a private /24 (RFC 1918).
constexpr const char* fixedBroadcast = "192.168.1.255";

SNMPSecurity CommunityOnly(const std::string& community)
{
    return SNMPSecurity(
        std::map<std::string, ByteString>{{"community", SNMPSession::snmpstring(community)}});
}

} // namespace

SNMPSession::SNMPSession(long version, const std::string& community, const std::string& host,
                         bool broadcast)
    : SNMPSession(version, CommunityOnly(community), host, broadcast)
{}

SNMPSession::SNMPSession(long version, const std::string& community)
    : SNMPSession(version, community, fixedBroadcast, true)
{}

SNMPSession::SNMPSession(long version, const SNMPSecurity& security, const std::string& host,
                         bool broadcast)
    : m_security(security)
{
    if (m_SNMPName.empty() || host.empty()) {
        return;
    }
    const size_t size = host.size() + 1;
    m_peerName = new char[size];
    std::memcpy(m_peerName.get(), host.c_str(), size);
    InitializeSession(version, broadcast);
    m_initialized = true;
}

SNMPSession::~SNMPSession()
{
    if (m_sessionHandle != nullptr) {
        snmp_sess_close(m_sessionHandle);
    }
}

ByteString SNMPSession::snmpstring(const std::string& text)
{
    return ByteString(text.c_str(), text.c_str() + std::strlen(text.c_str()));
}

} // namespace UVARNETSNMP

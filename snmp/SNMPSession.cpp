#include "snmp/SNMPSession.h"

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): malloc by its plain name

#include <cstring>
#include <map>

namespace UVARNETSNMP {

namespace {

/// Where the community-only constructor sends: the broadcast address of a private /24 (RFC 1918).
constexpr const char* fixedBroadcast = "192.168.1.255";

/// RFC 3411, SnmpEngineID: OCTET STRING (SIZE(5..32)).
constexpr size_t shortestEngineID = 5;
constexpr size_t longestEngineID = 32;

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

bool SNMPSession::MakeEngineID(const std::string& hex, unsigned char** engineID,
                               size_t* engineIDLength)
{
    if (engineID == nullptr || engineIDLength == nullptr) {
        return false;
    }
    size_t capacity = longestEngineID;
    size_t length = 0;
    auto* buffer = static_cast<unsigned char*>(malloc(capacity));
    if (buffer == nullptr) {
        return false;
    }
    // A longer text makes Net-SNMP move the buffer; it stays ours, also when the text is refused.
    if (snmp_hex_to_binary(&buffer, &capacity, &length, 1, hex.c_str()) == 0 ||
        length < shortestEngineID || length > longestEngineID) {
        free(buffer);
        return false;
    }
    *engineID = buffer;
    *engineIDLength = length;
    return true;
}

} // namespace UVARNETSNMP

// Opening a session takes three steps. A template is filled from the security parameters; Net-SNMP
// opens the session and copies what it needs; the heap copies in the template are released.

#include "snmp/SNMPSession.h"

#include <cstdlib>
#include <mutex>

namespace UVARNETSNMP {

namespace {

/// Net-SNMP calls the interval between resends the session's timeout. It is not the time-out of the
/// asynchronous SNMPSession::Get.
constexpr long resendInterval = 3000000; // microseconds
constexpr int resends = 2;

/// RFC 3411, SnmpEngineID: OCTET STRING (SIZE(5..32)).
constexpr size_t shortestEngineID = 5;
constexpr size_t longestEngineID = 32;

/// Derives a user's master key (RFC 3414, A.2) from a pass phrase; an empty one leaves the key
/// unset. The outcome is not examined, on purpose: a derivation that fails (a pass phrase under
/// eight characters, no authentication protocol) leaves `keyCapacity` zeros as the key, and the
/// session is opened and used with it. SNMPSecurity.h warns the caller. Callers pass the capacity
/// that Net-SNMP's headers give its keys: 32 octets, or 64 in releases that know SHA-512.
void DeriveKey(const netsnmp_session& session, const ByteString& passPhrase, unsigned char* key,
               size_t* keyLength, size_t keyCapacity)
{
    if (passPhrase.empty()) {
        return;
    }
    *keyLength = keyCapacity;
    generate_Ku(session.securityAuthProto, static_cast<u_int>(session.securityAuthProtoLen),
                passPhrase.data(), passPhrase.size(), key, keyLength);
}

void SetAuthProtocol(netsnmp_session& session, const std::string& protocol)
{
#ifndef NETSNMP_DISABLE_MD5
    if (protocol == "MD5") {
        session.securityAuthProto =
            snmp_duplicate_objid(usmHMACMD5AuthProtocol, USM_AUTH_PROTO_MD5_LEN);
        session.securityAuthProtoLen = USM_AUTH_PROTO_MD5_LEN;
    }
#endif
    if (protocol == "SHA") {
        session.securityAuthProto =
            snmp_duplicate_objid(usmHMACSHA1AuthProtocol, USM_AUTH_PROTO_SHA_LEN);
        session.securityAuthProtoLen = USM_AUTH_PROTO_SHA_LEN;
    }
}

void SetPrivProtocol(netsnmp_session& session, const std::string& protocol)
{
#ifndef NETSNMP_DISABLE_DES
    if (protocol == "DES") {
        session.securityPrivProto =
            snmp_duplicate_objid(usmDESPrivProtocol, USM_PRIV_PROTO_DES_LEN);
        session.securityPrivProtoLen = USM_PRIV_PROTO_DES_LEN;
    }
#endif
    if (protocol == "AES") {
        // Deliberately unlike the others: the copy is not used, the session points to Net-SNMP's
        // own array, and the length stays 0. Net-SNMP then takes its default privacy protocol.
        std::free(snmp_duplicate_objid(usmAESPrivProtocol, USM_PRIV_PROTO_AES_LEN));
        const oid* const own = usmAESPrivProtocol;
        // The field is not const because Net-SNMP frees it in its own sessions; ours is only read.
        session.securityPrivProto = const_cast<oid*>(own);
    }
}

void SetSecurityLevel(netsnmp_session& session, const std::string& level)
{
    if (level == "NoAuthNoPriv") {
        session.securityLevel = SNMP_SEC_LEVEL_NOAUTH;
    } else if (level == "AuthNoPriv") {
        session.securityLevel = SNMP_SEC_LEVEL_AUTHNOPRIV;
    } else if (level == "AuthPriv") {
        session.securityLevel = SNMP_SEC_LEVEL_AUTHPRIV;
    }
}

void Fill(netsnmp_session& session, const SNMPSecurity& security, long version, char* peerName,
          bool broadcast)
{
    // Whatever can throw comes first: an exception after the first heap copy would lose it.
    const std::string authProtocol = security.LookupString("authprotocol");
    const std::string privProtocol = security.LookupString("privprotocol");
    const std::string securityEngineID = security.LookupString("securityengid");
    const std::string contextEngineID = security.LookupString("contextengid");
    const std::string securityLevel = security.LookupString("securitylevel");
    const ByteString& authPassPhrase = security.Lookup("authpassphrase");
    const ByteString& privPassPhrase = security.Lookup("privpassphrase");

    snmp_sess_init(&session);
    session.version = version;
    session.peername = peerName;
    session.timeout = resendInterval;
    session.retries = resends;
    security.LookupDuplicate("community", &session.community, &session.community_len);

    SetAuthProtocol(session, authProtocol);
    DeriveKey(session, authPassPhrase, session.securityAuthKey, &session.securityAuthKeyLen,
              USM_AUTH_KU_LEN);
    if (!securityEngineID.empty()) {
        SNMPSession::MakeEngineID(securityEngineID, &session.securityEngineID,
                                  &session.securityEngineIDLen);
    }
    if (!contextEngineID.empty()) {
        SNMPSession::MakeEngineID(contextEngineID, &session.contextEngineID,
                                  &session.contextEngineIDLen);
    }
    SetPrivProtocol(session, privProtocol);
    // The authentication hash derives this key too: RFC 3414, 2.6 has one hash per user.
    DeriveKey(session, privPassPhrase, session.securityPrivKey, &session.securityPrivKeyLen,
              USM_PRIV_KU_LEN);
    SetSecurityLevel(session, securityLevel);

    security.LookupDuplicateString("securityname", &session.securityName, &session.securityNameLen);
    security.LookupDuplicateString("contextname", &session.contextName, &session.contextNameLen);
    if (broadcast) {
        session.flags |= SNMP_FLAGS_UDP_BROADCAST;
    }
}

template <typename T>
void ReleaseCopy(T*& copy)
{
    std::free(copy);
    copy = nullptr;
}

void ReleaseCopies(netsnmp_session& session)
{
    ReleaseCopy(session.community);
    ReleaseCopy(session.contextEngineID);
    ReleaseCopy(session.contextName);
    ReleaseCopy(session.securityEngineID);
    ReleaseCopy(session.securityName);
    ReleaseCopy(session.securityAuthProto);
    if (session.securityPrivProto == usmAESPrivProtocol) {
        session.securityPrivProto = nullptr; // Net-SNMP's own, see SetPrivProtocol
    }
    ReleaseCopy(session.securityPrivProto);
}

/// Sessions are opened one at a time, because Net-SNMP is not safe there. It calls its callbacks
/// for each new session under a lock that is a plain integer: two threads can leave it locked for
/// ever, and every later opening then waits for a tenth of a second and writes a message. The first
/// openings also set defaults that others read at the same time. The mutex is
/// constant-initialised, so it exists before any session.
std::mutex opening;

SessionHandle OpenAlone(netsnmp_session* session)
{
    const std::lock_guard<std::mutex> lock(opening);
    return snmp_sess_open(session);
}

} // namespace

bool SNMPSession::InitializeSession(long version, bool broadcast)
{
    if (m_initialized || m_peerName.isNull()) {
        return m_sessionPtr != nullptr;
    }
    Fill(m_session, m_security, version, m_peerName.get(), broadcast);
    m_sessionHandle = OpenAlone(&m_session);
    if (m_sessionHandle != nullptr) {
        m_sessionPtr = snmp_sess_session(m_sessionHandle);
    }
    ReleaseCopies(m_session);
    return m_sessionPtr != nullptr;
}

bool SNMPSession::MakeEngineID(const std::string& hex, unsigned char** engineID,
                               size_t* engineIDLength)
{
    if (engineID == nullptr || engineIDLength == nullptr) {
        return false;
    }
    size_t capacity = longestEngineID;
    size_t length = 0;
    auto* buffer = static_cast<unsigned char*>(std::malloc(capacity));
    if (buffer == nullptr) {
        return false;
    }
    // For a longer text Net-SNMP reallocates the buffer. It stays ours, even if the text is
    // refused.
    if (snmp_hex_to_binary(&buffer, &capacity, &length, 1, hex.c_str()) == 0 ||
        length < shortestEngineID || length > longestEngineID) {
        std::free(buffer);
        return false;
    }
    *engineID = buffer;
    *engineIDLength = length;
    return true;
}

} // namespace UVARNETSNMP

#pragma once

#include "snmp/SNMPSession.h"

#include <Poco/Timestamp.h>

#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Replaces Net-SNMP, select() and the clock. The test program defines these functions itself, and
/// the linker prefers a program's own definitions to those of shared libraries.
///
/// While such an object lives, it records every call in order. A function returns what the test has
/// set here; functions without a setting call the real one. The test fails
/// - on a call while no such object lives,
/// - on a call that is still in the record at the end, except snmp_sess_close,
/// - if a handle is not closed exactly once.
///
/// Threads: for the test's own thread only.
class FakeNetSNMP
{
public:
    FakeNetSNMP();
    ~FakeNetSNMP();
    FakeNetSNMP(const FakeNetSNMP&) = delete;
    FakeNetSNMP& operator=(const FakeNetSNMP&) = delete;

    /// Takes the record: the calls since it was last taken, oldest first, as "name(arguments)".
    std::vector<std::string> TakeCalls();
    /// Empties the record, after a test's own preparation.
    void ForgetCalls();

    /// What snmp_sess_open was given. Texts and keys are copies; a null field has no value.
    struct Template
    {
        netsnmp_session raw; ///< its pointers are invalid afterwards
        std::string peerName;
        std::optional<std::string> community;
        std::optional<std::string> contextEngineID;
        std::optional<std::string> contextName;
        std::optional<std::string> securityEngineID;
        std::optional<std::string> securityName;
        std::vector<oid> authProtocol;
        std::vector<oid> privProtocol; ///< by its length, which may be 0
        std::string authKey;
        std::string privKey;
    };
    std::vector<Template> opened;
    bool openSucceeds = true;
    bool keysAreDerived = true; ///< false: generate_Ku reports a failure and derives nothing
    /// The session that snmp_sess_session gives; its address is the handle, too.
    netsnmp_session live = {};

    /// What a request looked like when it was sent.
    struct Sent
    {
        int command;
        long errorStatus;
        long errorIndex;
        std::vector<std::string> bindings; ///< "OID type"
    };
    std::vector<Sent> sent;
    bool createFails = false;
    bool cloneFails = false;
    /// What snmp_pdu_create presets non-repeaters to; without a value, Net-SNMP's -1.
    std::optional<long> presetNonRepeaters;
    int status = STAT_SUCCESS;            ///< of the next synchronous exchange
    snmp_pdu* response = nullptr;         ///< of the next synchronous exchange
    std::function<int(snmp_pdu&)> onSend; ///< gives the request ID, 0 for a failure
    std::function<int()> onSelect;        ///< gives select's result
    std::function<void()> onRead;         ///< called while Net-SNMP reads; may Deliver
    int descriptor = 7;                   ///< of the live session, -1 when its stream is closed
    bool largeSetFails = false;           ///< no memory for a set of many descriptors
    timeval nextResend = {3, 0};          ///< from now; bounds the wait of select

    /// Calls the live session's callback with an event, as Net-SNMP does.
    int Deliver(int operation, int requestID, snmp_pdu* pdu);

    /// The asynchronous request that is outstanding, or null.
    const snmp_pdu* Outstanding() const { return m_outstanding; }
    /// Frees that request, as closing the session does.
    void DropOutstanding();
    /// A real PDU, which the record calls `name`.
    snmp_pdu* MakePDU(const std::string& name, int command);
    /// What the record calls a PDU.
    std::string NameOf(const snmp_pdu* pdu) const;

    /// The clock that Poco::Timestamp shows, in microseconds since 1970.
    Poco::Timestamp::TimeVal now = 1700000000000000;

    /// Numbers joined by dots; "none" without any.
    static std::string Text(const oid* name, size_t length);
    /// Two lower-case digits an octet.
    static std::string Hex(const std::string& octets);

    // For the replaced functions.
    /// The function of the shared library that this program's own hides.
    template <typename Function>
    static Function* Real(const char* name)
    {
        return reinterpret_cast<Function*>(RealSymbol(name));
    }
    static void* RealSymbol(const char* name);
    static FakeNetSNMP& Current(const char* function);
    static FakeNetSNMP* CurrentOrNull();
    /// As Current; the test fails unless `handle` is what snmp_sess_open gave.
    static FakeNetSNMP& OfHandle(UVARNETSNMP::SessionHandle handle, const char* function);
    void Record(const std::string& call);
    void Name(const snmp_pdu* pdu, const std::string& name) { m_names[pdu] = name; }
    void Open(const netsnmp_session& session);
    void Send(const snmp_pdu& request);
    void SetOutstanding(snmp_pdu* request) { m_outstanding = request; }
    netsnmp_transport transport = {};
    int openHandles = 0;
    size_t created = 0;
    size_t cloned = 0;

private:
    std::vector<std::string> m_calls;
    std::map<const snmp_pdu*, std::string> m_names;
    snmp_pdu* m_outstanding = nullptr;
};

/// A session whose protected members are public.
class OpenBook : public UVARNETSNMP::SNMPSession
{
public:
    using SNMPSession::m_initialized;
    using SNMPSession::m_peerName;
    using SNMPSession::m_security;
    using SNMPSession::m_session;
    using SNMPSession::m_sessionHandle;
    using SNMPSession::m_sessionPtr;
    using SNMPSession::m_SNMPName;
    using SNMPSession::RequestContext;
    using SNMPSession::SNMPSession;
};

/// sysUpTime.0 from its numbers: Net-SNMP's parser needs a library that is set up.
inline UVARNETSNMP::OID SysUpTimeName()
{
    const oid name[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    return UVARNETSNMP::OID(name, std::size(name), 0);
}

/// Makes the library count as set up under `name`, or as not set up (empty), for a scope.
class NameGuard
{
public:
    explicit NameGuard(const std::string& name) : m_former(OpenBook::m_SNMPName)
    {
        OpenBook::m_SNMPName = name;
    }
    ~NameGuard() { OpenBook::m_SNMPName = m_former; }
    NameGuard(const NameGuard&) = delete;
    NameGuard& operator=(const NameGuard&) = delete;

private:
    std::string m_former;
};

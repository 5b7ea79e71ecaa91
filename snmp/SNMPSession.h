#pragma once

#include "snmp/OID.h"
#include "snmp/SNMPSecurity.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <Poco/SharedPtr.h>
#include <Poco/Timespan.h>

#include <cstddef>
#include <string>
#include <vector>

namespace UVARNETSNMP {

class SNMPSession;

/// The handle of a session in Net-SNMP's single-session calls: void*, and session_list* from a
/// later version on.
using SessionHandle = decltype(snmp_sess_open(nullptr));

/// Receives one response of the asynchronous SNMPSession::Get. `session` is the one that asked and
/// `userData` what Get was given. `response` is a copy that the receiver owns and gives back to
/// SNMPSession::ReleasePDU. Called inside Get, on the thread that called Get.
using ResponseCallback = void (*)(SNMPSession& session, void* userData, snmp_pdu* response);

/// One SNMP session to one peer (an agent, or a subnet's broadcast address) over Net-SNMP's
/// single-session interface (snmp_sess_open and so on), and the process-wide set-up of Net-SNMP.
///
/// A session has one state from its construction on: uninitialised (library not set up, or no
/// host), not open (Net-SNMP refused it) or open. Only an open session sends; the requests of the
/// others fail. Nothing here prints. Only what copies texts throws, and only std::bad_alloc: the
/// constructors, InitializeSession, Initialize, InitializeMIBS and snmpstring.
///
/// Threads: Initialize and Terminate run on one thread while there is no session. A session belongs
/// to the thread that made it. Several threads may have sessions at once; a lock of the library
/// opens them one after the other.
class SNMPSession
{
public:
    /// Sets Net-SNMP up, once in a process. persistentDir keeps its persistent state (empty: its
    /// default directory), mibDir holds the MIB files, mibs names the modules to load, and Net-SNMP
    /// reads its configuration under name (init_snmp). Not while other threads read the
    /// environment.
    ///
    /// Always true: a missing module shows only as object names that do not resolve. A further call
    /// does nothing, also after Terminate, unless name was empty: the library then counts as not
    /// set up. Configuration files of single peers (hosts/ADDRESS.conf) are not read, because
    /// Net-SNMP would read them without a lock while threads open sessions.
    static bool Initialize(const std::string& name, const std::string& persistentDir,
                           const std::string& mibDir, const std::string& mib);
    /// As above, with any number of modules.
    static bool Initialize(const std::string& name, const std::string& persistentDir,
                           const std::string& mibDir, const std::vector<std::string>& mibs);

    /// Hands mibDir, less one trailing "/", to Net-SNMP and sets the environment variable "MIBS" to
    /// the non-empty names in mibs, joined by ":". Without such a name the variable stays as it is.
    /// Net-SNMP takes ":" in mibDir for a separator, so a directory with one is also added whole.
    /// Initialize calls this before init_snmp, which reads both. Always true.
    static bool InitializeMIBS(const std::string& mibDir, const std::vector<std::string>& mibs);

    /// Asks for a receive buffer of that size for every session opened from now on (Net-SNMP's
    /// setting clientRecvBuf, see snmp.conf(5)): the answers to a broadcast come all at once, and
    /// those that find no room are lost. Does nothing if the setting is not 0, because the
    /// administrator's configuration has precedence. The system may give less (Linux: at most
    /// net.core.rmem_max). After Initialize, before the first session.
    static void AskForReceiveBuffer(int octets);

    /// Shuts Net-SNMP down if the library is set up. Call it after the last session is gone. The
    /// library still counts as set up, on purpose: a later Initialize does nothing, and a second
    /// Terminate shuts down again.
    static void Terminate();

    /// Opens a session to host, a Net-SNMP peer name such as "192.0.2.7" or "udp:192.0.2.7:161".
    /// version is SNMP_VERSION_1, _2c or _3 and is not checked. The community, which comes before
    /// the host, ends at its first NUL. With broadcast, host may be a broadcast address.
    ///
    /// Net-SNMP resends a request after 3 and after 6 seconds without an answer; after 9 it gives
    /// up. The asynchronous Get has a time-out of its own beside this.
    SNMPSession(long version, const std::string& community, const std::string& host,
                bool broadcast);
    /// As above, broadcasting to one fixed private subnet.
    SNMPSession(long version, const std::string& community);
    /// As above, with the credentials in security (see SNMPSecurity for its keys), taken unchanged.
    /// A protocol, level or engine ID that is not understood is left out.
    SNMPSession(long version, const SNMPSecurity& security, const std::string& host,
                bool broadcast);
    /// Not copied: a session is one handle of Net-SNMP.
    SNMPSession(const SNMPSession&) = delete;
    /// Not assigned, for the same reason.
    SNMPSession& operator=(const SNMPSession&) = delete;
    /// Closes the session; requests still outstanding end without a callback.
    virtual ~SNMPSession();

    /// The step of the constructors that fills and opens the Net-SNMP session. Returns whether the
    /// session is open. A later call, or one without a peer, changes nothing.
    bool InitializeSession(long version, bool broadcast);

    /// Sends one GET for oid and waits for its response, which the caller owns (ReleasePDU) and
    /// whose errstat the caller inspects. Null when the session is not open, nothing could be sent
    /// or no response arrived. Not on a session that has made an asynchronous Get.
    snmp_pdu* Get(const OID& oid);
    /// As above, with a GETNEXT.
    snmp_pdu* GetNext(const OID& oid);
    /// As GetNext. Always sends a GETNEXT, deliberately (Net-SNMP presets non-repeaters to -1).
    snmp_pdu* GetBulk(const OID& oid);

    /// Sends one GET for oid, then gathers responses: blocks until timeout has passed, however
    /// early the first one comes, and hands callback a copy of each. An agent is heard again when
    /// it answers a resend (see the constructor). Any PDU with the request's identifier counts,
    /// whatever its type or sender.
    ///
    /// True once the request is sent, answered or not. False when callback is null, the session is
    /// not open or sending failed. A timeout of zero or less only sends. Setting the system clock
    /// during the call moves its end.
    bool Get(const OID& oid, ResponseCallback callback, void* userData, Poco::Timespan timeout);

    /// Net-SNMP calls this for each event of a session during an asynchronous Get, whose
    /// RequestContext is magic. Always returns 0, which means "not answered yet": the request stays
    /// outstanding, so that the next agent's response is delivered too.
    static int Callback(int operation, snmp_session* session, int reqid, snmp_pdu* pdu,
                        void* magic);

    /// Frees a PDU that this class handed out; null is ignored.
    void ReleasePDU(snmp_pdu* pdu);

    /// The characters of text before its first NUL, as bytes.
    static ByteString snmpstring(const std::string& text);

    /// Converts hexadecimal text (as snmp_hex_to_binary reads it: optional "0x", blanks between
    /// octets) to an engine ID of 5 to 32 octets (RFC 3411, SnmpEngineID). The caller releases it
    /// with free(). False, with the outputs untouched, on any other text, a null output or
    /// exhausted memory.
    static bool MakeEngineID(const std::string& hex, unsigned char** engineID,
                             size_t* engineIDLength);

protected:
    /// One asynchronous Get. It lies on the stack of that call; reqid is 0 until the request is
    /// sent.
    struct RequestContext
    {
        SNMPSession* session;      ///< that asked
        int reqid;                 ///< identifier of the request
        ResponseCallback callback; ///< who is told
        void* userData;            ///< handed to the callback untouched
    };

    /// The name given to Initialize; empty means that the library is not set up.
    static std::string m_SNMPName;

    /// Copy of the peer's name. The default release policy would delete a single object.
    Poco::SharedPtr<char, Poco::ReferenceCounter, Poco::ReleaseArrayPolicy<char>> m_peerName;
    bool m_initialized = false;              ///< also true when opening failed
    netsnmp_session m_session = {};          ///< template; peername points into m_peerName
    netsnmp_session* m_sessionPtr = nullptr; ///< Net-SNMP's own session while open, else null
    SessionHandle m_sessionHandle = nullptr; ///< of snmp_sess_open; closed by the destructor
    SNMPSecurity m_security;                 ///< the session's own copy

private:
    snmp_pdu* Request(int type, const OID& oid);
    snmp_pdu* Exchange(snmp_pdu* request, const OID& oid);
    void ServeOnce();
};

} // namespace UVARNETSNMP

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

/// What Net-SNMP's calls for a single session take: a void*, or a session_list* in its later
/// versions.
using SessionHandle = decltype(snmp_sess_open(nullptr));

/// Receives one response of the asynchronous SNMPSession::Get: the session that asked, the user
/// data given to Get, untouched, and a copy of the response that the receiver owns and gives back
/// to SNMPSession::ReleasePDU. Called inside Get, on the thread that called it.
using ResponseCallback = void (*)(SNMPSession& session, void* userData, snmp_pdu* response);

/// One SNMP session to one peer (an agent, or a subnet's broadcast address) over Net-SNMP's
/// single-session interface (snmp_sess_open and its kin), and the process-wide set-up of Net-SNMP.
///
/// A constructor settles what a session is for good: uninitialised (library not set up, or no
/// host), not open (Net-SNMP refused it) or open. Only an open session sends; the requests of the
/// others fail. Nothing here prints; nothing throws but the constructors, for lack of memory.
///
/// Threads: Initialize and Terminate run on one thread while there is no session. A session belongs
/// to the thread that made it; several sessions may live in several threads at once. They are
/// opened one after the other, under a lock of the library's own.
class SNMPSession
{
public:
    /// Sets Net-SNMP up, once a process: persistentDir (empty: its default) keeps its persistent
    /// state, mibDir holds the MIB files, mibs names the modules to load, and name is the one under
    /// which it reads its configuration (init_snmp). A further call does nothing, also after
    /// Terminate; only an empty name leaves the library counting as not set up. Not while other
    /// threads read the environment. Always true: a MIB that is missing shows only as object names
    /// that do not resolve. Of Net-SNMP's configuration only the files of single peers
    /// (hosts/ADDRESS.conf) are not read: sessions of several threads could not be opened at once.
    static bool Initialize(const std::string& name, const std::string& persistentDir,
                           const std::string& mibDir, const std::string& mib);
    static bool Initialize(const std::string& name, const std::string& persistentDir,
                           const std::string& mibDir, const std::vector<std::string>& mibs);

    /// Hands mibDir, less one trailing "/", to Net-SNMP and sets the environment variable "MIBS" to
    /// the non-empty names of mibs joined by ":"; without any such name it stays as inherited.
    /// Net-SNMP takes ":" in mibDir for a separator, so such a directory is also added in one
    /// piece. Initialize calls this before init_snmp, which reads both. Always true.
    static bool InitializeMIBS(const std::string& mibDir, const std::vector<std::string>& mibs);

    /// Asks for a receive buffer of so many octets for every session opened from now on (Net-SNMP's
    /// setting clientRecvBuf, see snmp.conf(5)), so that the answers to a broadcast, which come all
    /// at once, wait there and are not lost. Does nothing if the setting has a value other than 0:
    /// the administrator's configuration, which Initialize has read, is stronger. The system may
    /// give less (Linux: at most net.core.rmem_max). After Initialize, before the first session.
    static void AskForReceiveBuffer(int octets);

    /// Shuts Net-SNMP down if the library is set up; after the last session is gone. The library
    /// keeps counting as set up: Initialize stays a no-op, a second Terminate shuts down again.
    static void Terminate();

    /// Opens a session of SNMP_VERSION_1, _2c or _3 (not checked) to host, a Net-SNMP peer name
    /// such as "192.0.2.7" or "udp:192.0.2.7:161", with a time-out of 3 seconds and 2 retries.
    /// broadcast allows a broadcast address. Note the order: the community, cut at its first NUL,
    /// comes first.
    SNMPSession(long version, const std::string& community, const std::string& host,
                bool broadcast);
    /// As above, broadcasting to one fixed private subnet.
    SNMPSession(long version, const std::string& community);
    /// As above, with the credentials in security (see SNMPSecurity for its keys), taken unchanged.
    /// A protocol, level or engine ID that is not understood is left out.
    SNMPSession(long version, const SNMPSecurity& security, const std::string& host,
                bool broadcast);
    SNMPSession(const SNMPSession&) = delete;
    SNMPSession& operator=(const SNMPSession&) = delete;
    /// Closes the session; requests still outstanding end without a callback.
    virtual ~SNMPSession();

    /// Fills and opens the Net-SNMP session: true when it is open. The constructors' own step; a
    /// later call, or one without a peer, changes nothing and tells only whether it is open.
    bool InitializeSession(long version, bool broadcast);

    /// Sends one request for oid and waits for its response, which the caller owns (ReleasePDU) and
    /// whose errstat the caller inspects. Null when the session is not open, nothing could be sent
    /// or no response arrived. Not on a session that has made an asynchronous Get.
    snmp_pdu* Get(const OID& oid);
    snmp_pdu* GetNext(const OID& oid);
    /// As above; a GETNEXT wherever the session speaks SNMPv1 or snmp_pdu_create presets
    /// non-repeaters to anything but 0, which Net-SNMP does: in effect always. Kept on purpose.
    snmp_pdu* GetBulk(const OID& oid);

    /// Sends one GET for oid, then blocks until timeout has passed and hands callback a copy of
    /// every response meanwhile: from each agent that a broadcast reaches, and again from each that
    /// answers a resend (after 3 and 6 seconds). Any PDU with the request's identifier counts,
    /// whatever its type or sender. A timeout of zero or less only sends. True once sent, answered
    /// or not; false when callback is null, the session is not open or sending failed. The time is
    /// the system clock's: setting that during the call moves its end.
    bool Get(const OID& oid, ResponseCallback callback, void* userData, Poco::Timespan timeout);

    /// What Net-SNMP calls with each event of a session in an asynchronous Get; magic is its
    /// RequestContext. Always 0, "not answered yet": the request stays outstanding for more.
    static int Callback(int operation, snmp_session* session, int reqid, snmp_pdu* pdu,
                        void* magic);

    /// Frees a PDU that this class handed out; null is ignored.
    void ReleasePDU(snmp_pdu* pdu);

    /// The characters of text before its first NUL, as bytes.
    static ByteString snmpstring(const std::string& text);

    /// Turns hexadecimal text (snmp_hex_to_binary: optional "0x", blanks between octets) into an
    /// engine ID of 5 to 32 octets (RFC 3411, SnmpEngineID), malloc'ed and the caller's to free. On
    /// any other text, a null output or lack of memory: false, and the outputs are left untouched.
    static bool MakeEngineID(const std::string& hex, unsigned char** engineID,
                             size_t* engineIDLength);

protected:
    /// One asynchronous Get, on the stack of its caller; reqid is 0 until the request is sent.
    struct RequestContext
    {
        SNMPSession* session;
        int reqid;
        ResponseCallback callback;
        void* userData;
    };

    /// The name given to Initialize; empty means that the library is not set up.
    static std::string m_SNMPName;

    /// A char array needs the array policy: the default one would delete it as a single object.
    Poco::SharedPtr<char, Poco::ReferenceCounter, Poco::ReleaseArrayPolicy<char>> m_peerName;
    bool m_initialized = false;              ///< also true when opening failed
    netsnmp_session m_session = {};          ///< template; peername points into m_peerName
    netsnmp_session* m_sessionPtr = nullptr; ///< Net-SNMP's own session while open, else null
    SessionHandle m_sessionHandle = nullptr; ///< of snmp_sess_open; closed by the destructor
    SNMPSecurity m_security;

private:
    snmp_pdu* Request(int type, const OID& oid);
    snmp_pdu* Exchange(snmp_pdu* request, const OID& oid);
    void ServeOnce();
};

} // namespace UVARNETSNMP

#include "app/SNMPDiscoveryApp.h"
#include "fuzz/Fuzzing.h"
#include "fuzz/SNMPSetUp.h"

#include <Poco/AutoPtr.h>

#include <net-snmp/library/snmp_transport.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

// The road of a received datagram: Net-SNMP's parser, SNMPSession::Callback, SNMPCallback and the
// set. The first byte of the input chooses what Net-SNMP's transport tells of the sender, the rest
// is the datagram; 11 22 33 44 in it stands for the request's identifier, which is another each
// time. Nothing is sent: the transport's functions are replaced.

namespace {

using fuzzing::check;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

constexpr const char* sender = "192.0.2.9";
const std::string placeholder = "\x11\x22\x33\x44";

/// What the transport's functions know; one exchange at a time.
std::string sent;
std::string toReceive;
std::uint8_t kindOfSender = 0;

int send(netsnmp_transport* /*transport*/, const void* datagram, int size, void** /*opaque*/,
         int* /*length*/)
{
    sent.assign(static_cast<const char*>(datagram), static_cast<std::size_t>(size));
    return size;
}

/// What the UDP transport gives (in builds with and without IPv6), or nothing.
void tellSender(void** opaque, int* length)
{
    constexpr int sizes[] = {sizeof(netsnmp_indexed_addr_pair), 36, 0};
    const int size = sizes[kindOfSender % 3];
    *opaque = nullptr;
    *length = size;
    if (size == 0) {
        return;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(161);
    inet_pton(AF_INET, sender, &address.sin_addr);
    *opaque = std::calloc(1, static_cast<std::size_t>(size)); // Net-SNMP's to free
    std::memcpy(*opaque, &address, sizeof address);
}

/// The identifier is the last INTEGER of four octets before the request's two zeros and bindings;
/// the community is fixed, so it is always in the same place.
std::string requestIdentifier()
{
    const std::size_t community = sent.find("public");
    check(community != std::string::npos, "the request carries the community");
    const std::size_t integer = community + 6 + 2; // past the head of the PDU
    check(sent.at(integer) == 2, "the identifier comes first in the PDU");
    const auto length = static_cast<unsigned char>(sent.at(integer + 1));
    return sent.substr(integer + 2, length);
}

int receive(netsnmp_transport* /*transport*/, void* buffer, int room, void** opaque, int* length)
{
    std::string datagram = toReceive;
    const std::string identifier = requestIdentifier();
    if (identifier.size() == placeholder.size()) {
        for (std::size_t at = datagram.find(placeholder); at != std::string::npos;
             at = datagram.find(placeholder, at + placeholder.size())) {
            datagram.replace(at, placeholder.size(), identifier);
        }
    }
    const std::size_t size = std::min(datagram.size(), static_cast<std::size_t>(room));
    std::memcpy(buffer, datagram.data(), size);
    tellSender(opaque, length);
    return static_cast<int>(size);
}

/// A descriptor that is always ready for reading.
int readyDescriptor()
{
    static const int ready = [] {
        int ends[2];
        check(pipe(ends) == 0, "a pipe");
        check(write(ends[1], "x", 1) == 1, "an octet in the pipe");
        return ends[0];
    }();
    return ready;
}

class Session : public SNMPSession
{
public:
    Session() : SNMPSession(SNMP_VERSION_1, "public", "127.0.0.1:9", true)
    {
        netsnmp_transport* const transport = snmp_sess_transport(m_sessionHandle);
        close(transport->sock);
        transport->sock = dup(readyDescriptor()); // closed with the session
        transport->f_send = &send;
        transport->f_recv = &receive;
    }
};

class Application : public SNMPDiscoveryApp
{
public:
    using SNMPDiscoveryApp::m_responders;
};

/// The application keeps its responses until the process ends, by design; here they would add up.
void keepNot(SNMPSession& session, void* application, snmp_pdu* response)
{
    SNMPDiscoveryApp::SNMPCallback(session, application, response);
    session.ReleasePDU(response);
}

/// Who has answered, after one turn of the wait in which `datagram` arrives.
std::set<std::string> responders(const std::string& datagram)
{
    static Poco::AutoPtr<Application> application(new Application);
    const oid sysUpTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    toReceive = datagram;
    application->m_responders.clear();
    Session session;
    check(session.Get(OID(sysUpTime, 9, 9), &keepNot,
                      static_cast<SNMPDiscoveryApp*>(application.get()), Poco::Timespan(1)),
          "the request is sent");
    return application->m_responders;
}

std::string wellFormed()
{
    return std::string("\x30\x2a\x02\x01\x00\x04\x06public", 13) +
           std::string("\xa2\x1d\x02\x04\x11\x22\x33\x44\x02\x01\x00\x02\x01\x00\x30\x0f\x30\x0d"
                       "\x06\x08\x2b\x06\x01\x02\x01\x01\x03\x00\x43\x01\x2a",
                       31);
}

void setUpOnce()
{
    static const bool done = [] {
        fuzzing::setUpSNMP("/nonexistent", "");
        check(responders(wellFormed()) == std::set<std::string>{sender}, "an answer counts");
        return true;
    }();
    static_cast<void>(done);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kindOfSender = 0;
    setUpOnce();
    fuzzing::Choices input(data, size);
    kindOfSender = input.byte();
    const std::set<std::string> found = responders(input.rest());
    check(found.empty() || found == std::set<std::string>{sender},
          "nobody but the sender is found");
    return 0;
}

// The road of one answer, from the response PDU to the set of responders.

#include "app/SNMPDiscoveryApp.h"

#include <Poco/ScopedLock.h>

#include <net-snmp/library/snmp_transport.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>

namespace {

/// sizeof(netsnmp_indexed_addr_pair) in a Net-SNMP that was built without IPv6: two addresses of 16
/// octets and an interface index of 4. Built with IPv6 the record is larger (60 octets on Linux).
constexpr std::size_t ipv4AddressPairSize = 36;

/// The address-pair record that Net-SNMP's UDP transport made when it received `pdu`, or null if
/// the PDU has none. A PDU either carries the record itself, told by its size, or the transport,
/// whose data is the record.
const void* addressPair(const snmp_pdu& pdu)
{
    const auto length = static_cast<std::size_t>(pdu.transport_data_length);
    if (pdu.transport_data == nullptr) {
        return nullptr;
    }
    if (length == ipv4AddressPairSize || length == sizeof(netsnmp_indexed_addr_pair)) {
        return pdu.transport_data;
    }
    return static_cast<const netsnmp_transport*>(pdu.transport_data)->data;
}

/// Dotted-quad text of `address`, valid until this thread's next call; null on failure.
const char* addressText(in_addr address)
{
#ifdef __GLIBC__
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the C library here keeps the text per thread
    return inet_ntoa(address);
#else
    // Elsewhere all threads may share the text of inet_ntoa, and workers convert at the same time.
    static thread_local char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof text);
#endif
}

} // namespace

void SNMPDiscoveryApp::SNMPCallback(UVARNETSNMP::SNMPSession& /*session*/, void* context,
                                    snmp_pdu* pdu)
{
    if (context == nullptr || pdu == nullptr) {
        return;
    }

    const void* record = addressPair(*pdu);
    if (record == nullptr) {
        return;
    }

    // In every build the remote address is the record's first member, and a sockaddr_in is at its
    // head. It is copied out because the record says nothing of its alignment.
    sockaddr_in sender;
    std::memcpy(&sender, record, sizeof sender);

    // Nobody reads the variable bindings, and an agent decides how many there are: up to 5 MB of
    // memory for one datagram. The PDU stays, as one without any.
    snmp_free_varbind(pdu->variables);
    pdu->variables = nullptr;

    const char* text = addressText(sender.sin_addr);
    if (text == nullptr) {
        return;
    }

    static_cast<SNMPDiscoveryApp*>(context)->AddIP(text);
}

void SNMPDiscoveryApp::AddIP(const std::string& ip)
{
    const Poco::ScopedLock<Poco::Mutex> lock(m_mutex);
    m_responders.insert(ip);
}

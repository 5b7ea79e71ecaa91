// Net-SNMP's UDP transport makes a record of two addresses for each datagram, the sender's and its
// own, and hands it over as the PDU's transport data.

#include "snmp/Sender.h"

#include <net-snmp/library/snmp_transport.h>
#include <net-snmp/session_api.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace UVARNETSNMP {

namespace {

/// sizeof(netsnmp_indexed_addr_pair) in a Net-SNMP that was built without IPv6: two addresses of 16
/// octets and an interface index of 4. Built with IPv6 the record is larger (60 octets on Linux).
constexpr std::size_t ipv4AddressPairSize = 36;

/// The address-pair record, or null if the PDU has none. The length of the transport data tells
/// what they are. 36 (built without IPv6) or sizeof here: the record. Any other: a
/// netsnmp_transport, whose `data` is the record.
const void* AddressPair(const snmp_pdu& pdu) noexcept
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

} // namespace

std::optional<in_addr> SenderOf(const snmp_pdu& pdu) noexcept
{
    const void* const record = AddressPair(pdu);
    if (record == nullptr) {
        return std::nullopt;
    }
    // In every build the remote address is the record's first member, and a sockaddr_in is at its
    // head. It is copied out because the record may be unaligned.
    sockaddr_in sender;
    std::memcpy(&sender, record, sizeof sender);
    return sender.sin_addr;
}

void ReleaseUnread(snmp_pdu& pdu) noexcept
{
    snmp_free_varbind(pdu.variables);
    pdu.variables = nullptr;
    std::free(pdu.community);
    pdu.community = nullptr;
    pdu.community_len = 0;
}

} // namespace UVARNETSNMP

#pragma once

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/types.h>

#include <netinet/in.h>

#include <optional>

namespace UVARNETSNMP {

/// The IPv4 address that a received PDU came from, or nothing if the PDU has no address-pair record
/// (see Sender.cpp). Any thread. `pdu` must come from a transport over IPv4, with its transport
/// data as Net-SNMP made them: what is not a record is taken for a transport.
std::optional<in_addr> SenderOf(const snmp_pdu& pdu) noexcept;

/// Releases what an agent can make large in a PDU that is kept although nobody reads it: the
/// variable bindings and the community. The PDU stays valid, as one without either, and its
/// transport data stay. Their release is the owner's, by SNMPSession::ReleasePDU.
void ReleaseUnread(snmp_pdu& pdu) noexcept;

} // namespace UVARNETSNMP

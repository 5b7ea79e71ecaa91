#pragma once

#include <string>

/// SNMPv1 and SNMPv2c messages as octets (RFC 3416 in BER), encoded without Net-SNMP, so that the
/// tests compare what the library sends with something independent.
namespace Wire {

constexpr unsigned char get = 0xa0;
constexpr unsigned char getNext = 0xa1;
constexpr unsigned char response = 0xa2;
constexpr unsigned char trap2 = 0xa7;

struct Message
{
    int version; ///< 0 for SNMPv1, 1 for SNMPv2c
    std::string community;
    unsigned char type;    ///< tag of the PDU
    std::string requestID; ///< content octets of the INTEGER
    int errorStatus;       ///< 0 to 127
    int errorIndex;        ///< 0 to 127
    std::string bindings;  ///< content octets of the list
};

/// Tag, length in the short form or the long one of one octet, content of up to 255 octets.
std::string Field(unsigned char tag, const std::string& content);

std::string Encode(const Message& message);

/// Throws std::runtime_error on octets that are not such a message.
Message Decode(const std::string& octets);

/// One binding: sysUpTime.0 (1.3.6.1.2.1.1.3.0) with a null, or with one octet of TimeTicks.
std::string SysUpTimeNull();
std::string SysUpTime(unsigned char ticks);

/// A response to `request`, with its request ID and one octet of TimeTicks.
std::string Response(const std::string& request, unsigned char ticks);

} // namespace Wire

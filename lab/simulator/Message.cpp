#include "lab/simulator/Message.h"

namespace Simulator {

const Octets sysUpTime("\x2b\x06\x01\x02\x01\x01\x03\x00", 8);

Octets Message::encode() const
{
    const Octets pdu = integer(requestId) + integer(errorStatus) + integer(errorIndex) +
                       element(tagSequence, bindings);
    return element(tagSequence,
                   integer(version) + element(tagOctetString, community) + element(pduType, pdu));
}

std::optional<Message> readRequest(std::string_view datagram)
{
    Message request;
    Reader outer(datagram);
    Reader body(outer.content(tagSequence));
    request.version = body.number();
    request.community = body.content(tagOctetString);
    Reader pdu(body.content(0, &request.pduType));
    request.requestId = pdu.number();
    request.errorStatus = pdu.number();
    request.errorIndex = pdu.number();
    request.bindings = pdu.content(tagSequence);
    const bool asks = request.pduType == pduGet || request.pduType == pduGetNext;
    if (outer.failed() || body.failed() || pdu.failed() || !asks) {
        return std::nullopt;
    }
    return request;
}

namespace {

/// The value of the object `name`: a time for sysUpTime.0, "printer" for hrDeviceType.1 (how CUPS
/// recognises printers), and a text for everything else.
Octets valueOf(std::string_view name)
{
    constexpr std::int64_t ticks = 4200;
    const Octets deviceType("\x2b\x06\x01\x02\x01\x19\x03\x02\x01\x02\x01", 11);
    const Octets printer("\x2b\x06\x01\x02\x01\x19\x03\x01\x05", 9);
    if (name == sysUpTime) {
        return integer(ticks, tagTimeTicks);
    }
    return name == deviceType ? element(tagObjectIdentifier, printer)
                              : element(tagOctetString, "simulated");
}

} // namespace

Message plainAnswer(const Message& request)
{
    Reader list(request.bindings);
    Reader first(list.content(tagSequence));
    const std::string_view found = first.content(tagObjectIdentifier);
    const Octets asked = found.empty() ? sysUpTime : Octets(found);

    Message answer = request;
    answer.pduType = pduResponse;
    answer.errorStatus = 0;
    answer.errorIndex = 0;
    answer.bindings = binding(asked, valueOf(asked));
    return answer;
}

Octets binding(std::string_view name, std::string_view value)
{
    return element(tagSequence, element(tagObjectIdentifier, name) + Octets(value));
}

} // namespace Simulator

// Every function here makes the payload of one datagram. The agent's number selects among the
// variants of a behaviour, so that enough agents cover them all in one run.

#include "lab/simulator/Behaviours.h"

#include <algorithm>
#include <iterator>

namespace Simulator {

namespace {

constexpr std::size_t largePayload = 60000;

Octets randomOctets(std::size_t size, std::mt19937& random)
{
    Octets made(size, '\0');
    for (char& each : made) {
        each = static_cast<char>(random() & 0xff);
    }
    return made;
}

Octets plain(const Message& answer, unsigned /*agent*/, std::mt19937& /*random*/)
{
    return answer.encode();
}

Octets truncated(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const Octets whole = answer.encode();
    return whole.substr(0, agent % whole.size());
}

Octets random(const Message& /*answer*/, unsigned agent, std::mt19937& random)
{
    constexpr unsigned longest = 1472; // what one Ethernet frame carries
    return randomOctets(agent % (longest + 1), random);
}

/// One to four octets of the answer changed: the result may still be an answer.
Octets mutated(const Message& answer, unsigned /*agent*/, std::mt19937& random)
{
    Octets made = answer.encode();
    for (unsigned left = 1 + random() % 4; left > 0; --left) {
        made[random() % made.size()] = static_cast<char>(random() & 0xff);
    }
    return made;
}

Octets requestId(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const std::int64_t wrong[] = {
        answer.requestId + 1, answer.requestId - 1, 0, -1, -answer.requestId, 0x7fffffff};
    Message made = answer;
    made.requestId = wrong[agent % std::size(wrong)];
    return made.encode();
}

Octets version(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const std::int64_t wrong[] = {1, 2, 3, 4, -1, 255, 0x7fffffff};
    Message made = answer;
    made.version = wrong[agent % std::size(wrong)];
    return made.encode();
}

Octets community(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const Octets wrong[] = {
        "", "other", "PUBLIC", Octets(200, 'c'), Octets(2000, 'c'), Octets("pub\0lic", 7)};
    Message made = answer;
    made.community = wrong[agent % std::size(wrong)];
    return made.encode();
}

/// Still an answer: nobody compares the community, and Net-SNMP accepts one of up to 255 octets.
Octets longCommunity(const Message& answer, unsigned /*agent*/, std::mt19937& /*random*/)
{
    Message made = answer;
    made.community = Octets(250, 'c');
    return made.encode();
}

Octets errorStatus(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const std::int64_t status[] = {1, 2, 3, 4, 5, 18, 19, 255, -1, 0x7fffffff};
    Message made = answer;
    made.errorStatus = status[agent % std::size(status)];
    made.errorIndex = agent % 3;
    return made.encode();
}

Octets empty(const Message& /*answer*/, unsigned /*agent*/, std::mt19937& /*random*/)
{
    return {};
}

/// A valid answer of 60 kB: the requested object, thousands of times.
Octets large(const Message& answer, unsigned /*agent*/, std::mt19937& /*random*/)
{
    Message made = answer;
    const Octets one = binding(sysUpTime, element(tagNull, ""));
    made.bindings.clear();
    made.bindings.reserve(largePayload);
    while (made.bindings.size() + one.size() <= largePayload) {
        made.bindings += one;
    }
    return made.encode();
}

/// Nested sequences, thousands deep, in three places of the message.
Octets deep(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    // From the inside out; every level says how long its content is, in two octets.
    const std::size_t levels = 1 + agent % 14000;
    Octets nested;
    nested.reserve(4 * levels);
    for (std::size_t left = levels; left > 0; --left) {
        const std::size_t size = 4 * (left - 1);
        nested += {tagSequence, static_cast<char>(0x82), static_cast<char>(size >> 8),
                   static_cast<char>(size & 0xff)};
    }
    Message made = answer;
    switch (agent % 3) {
    case 0:
        return nested;
    case 1:
        made.bindings = nested;
        break;
    default:
        made.bindings = binding(sysUpTime, nested);
        break;
    }
    return made.encode();
}

/// The indefinite form of a length, which SNMP forbids, at every place that has a length.
Octets indefinite(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    const Octets end(2, '\0');
    const auto open = [&](unsigned char tag, const Octets& content) {
        return Octets({static_cast<char>(tag), static_cast<char>(0x80)}) + content + end;
    };
    const Octets numbers = integer(answer.requestId) + integer(0) + integer(0);
    const Octets head = integer(answer.version) + element(tagOctetString, answer.community);
    const Octets list = element(tagSequence, answer.bindings);
    switch (agent % 4) {
    case 0:
        return open(tagSequence, head + element(pduResponse, numbers + list));
    case 1:
        return element(tagSequence, head + open(pduResponse, numbers + list));
    case 2:
        return element(tagSequence,
                       head + element(pduResponse, numbers + open(tagSequence, answer.bindings)));
    default:
        return element(tagSequence, integer(answer.version) +
                                        open(tagOctetString, answer.community) +
                                        element(pduResponse, numbers + list));
    }
}

/// A length that promises more than there is, up to the largest that can be written.
Octets overlong(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    Octets made = answer.encode();
    const Octets lengths[] = {Octets("\x7f"),
                              Octets("\x82\xff\xff"),
                              Octets("\x84\xff\xff\xff\xff"),
                              Octets("\x84\x7f\xff\xff\xff"),
                              Octets("\x88\xff\xff\xff\xff\xff\xff\xff\xff"),
                              Octets("\xff"),
                              Octets("\x89\x01\0\0\0\0\0\0\0\0", 10)};
    return made.replace(1, 1, lengths[agent % std::size(lengths)]);
}

Octets pduType(const Message& answer, unsigned agent, std::mt19937& /*random*/)
{
    Message made = answer;
    made.pduType = static_cast<unsigned char>(0xa0 + agent % 16);
    return made.encode();
}

/// A correct answer followed by surplus octets.
Octets trailing(const Message& answer, unsigned agent, std::mt19937& random)
{
    return answer.encode() + randomOctets(1 + agent % 1000, random);
}

} // namespace

const std::vector<Behaviour>& behaviours()
{
    static const std::vector<Behaviour> all = {
        {"plain", plain, "the right answer"},
        {"truncated", truncated, "cut at every length"},
        {"random", random, "random octets of every length"},
        {"mutated", mutated, "some octets changed"},
        {"request-id", requestId, "another request's identifier"},
        {"version", version, "another SNMP version"},
        {"community", community, "another community"},
        {"long-community", longCommunity, "an answer with a community of 250 octets"},
        {"error-status", errorStatus, "an error-status, defined or not"},
        {"empty", empty, "an empty datagram"},
        {"large", large, "60 kB of variable bindings"},
        {"deep", deep, "sequences up to 14,000 deep"},
        {"indefinite", indefinite, "the indefinite form of a length"},
        {"overlong", overlong, "a length beyond the end"},
        {"pdu-type", pduType, "every PDU type, defined or not"},
        {"trailing", trailing, "junk behind the answer"},
        {"unreachable", nullptr, "ICMP: port unreachable"},
    };
    return all;
}

const Behaviour* findBehaviour(const std::string& name)
{
    const auto found = std::find_if(behaviours().begin(), behaviours().end(),
                                    [&](const Behaviour& each) { return each.name == name; });
    return found == behaviours().end() ? nullptr : &*found;
}

} // namespace Simulator

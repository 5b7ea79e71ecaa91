#include "tests/snmp/helpers/Wire.h"

#include <stdexcept>

namespace Wire {

namespace {

constexpr unsigned char integer = 0x02;
constexpr unsigned char octetString = 0x04;
constexpr unsigned char null = 0x05;
constexpr unsigned char objectIdentifier = 0x06;
constexpr unsigned char sequence = 0x30;
constexpr unsigned char timeTicks = 0x43;

std::string SmallInteger(int value)
{
    return Field(integer, std::string(1, static_cast<char>(value)));
}

std::string Binding(const std::string& value)
{
    const std::string name("\x2b\x06\x01\x02\x01\x01\x03\x00", 8);
    return Field(sequence, Field(objectIdentifier, name) + value);
}

/// Takes fields off the front of octets.
class Reader
{
public:
    explicit Reader(const std::string& octets) : m_rest(octets) {}

    unsigned char NextTag() const { return Octet(0); }

    std::string Take(unsigned char tag)
    {
        size_t head = 2;
        size_t length = Octet(1);
        if (length == 0x81) {
            length = Octet(2);
            head = 3;
        }
        if (Octet(0) != tag || length > 0xff || m_rest.size() < head + length) {
            throw std::runtime_error("not the field expected");
        }
        std::string content = m_rest.substr(head, length);
        m_rest.erase(0, head + length);
        return content;
    }

    int TakeSmallInteger()
    {
        const std::string content = Take(integer);
        if (content.size() != 1) {
            throw std::runtime_error("not one octet");
        }
        return static_cast<signed char>(content[0]);
    }

    void End() const
    {
        if (!m_rest.empty()) {
            throw std::runtime_error("octets left over");
        }
    }

private:
    unsigned char Octet(size_t index) const
    {
        if (index >= m_rest.size()) {
            throw std::runtime_error("cut short");
        }
        return static_cast<unsigned char>(m_rest[index]);
    }

    std::string m_rest;
};

} // namespace

std::string Field(unsigned char tag, const std::string& content)
{
    if (content.size() > 0xff) {
        throw std::runtime_error("too long for a test");
    }
    std::string field(1, static_cast<char>(tag));
    if (content.size() > 0x7f) {
        field += '\x81';
    }
    field += static_cast<char>(content.size());
    return field + content;
}

std::string Encode(const Message& message)
{
    const std::string pdu = Field(integer, message.requestID) + SmallInteger(message.errorStatus) +
                            SmallInteger(message.errorIndex) + Field(sequence, message.bindings);
    return Field(sequence, SmallInteger(message.version) + Field(octetString, message.community) +
                               Field(message.type, pdu));
}

Message Decode(const std::string& octets)
{
    Reader datagram(octets);
    Reader fields(datagram.Take(sequence));
    datagram.End();

    Message message = {};
    message.version = fields.TakeSmallInteger();
    message.community = fields.Take(octetString);
    message.type = fields.NextTag();
    Reader pdu(fields.Take(message.type));
    fields.End();

    message.requestID = pdu.Take(integer);
    message.errorStatus = pdu.TakeSmallInteger();
    message.errorIndex = pdu.TakeSmallInteger();
    message.bindings = pdu.Take(sequence);
    pdu.End();
    return message;
}

std::string SysUpTimeNull()
{
    return Binding(Field(null, ""));
}

std::string SysUpTime(unsigned char ticks)
{
    return Binding(Field(timeTicks, std::string(1, static_cast<char>(ticks))));
}

std::string Response(const std::string& request, unsigned char ticks)
{
    Message message = Decode(request);
    message.type = response;
    message.errorIndex = 0;
    message.bindings = SysUpTime(ticks);
    return Encode(message);
}

} // namespace Wire

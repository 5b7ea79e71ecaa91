// Who sent a PDU, and what is released of a kept one. The PDUs are like those of Net-SNMP's UDP
// transport and parser.

#include "snmp/Sender.h"

#include "snmp/SNMPSession.h"

#include <net-snmp/library/snmp_transport.h>

#include <arpa/inet.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

namespace {

using UVARNETSNMP::ReleaseUnread;
using UVARNETSNMP::SenderOf;

/// A record as the UDP transport makes it: the sender's address at the head, the rest filled with
/// ones so that no other part of it can be taken for an address.
template <std::size_t size>
std::array<unsigned char, size> recordFrom(const char* address)
{
    sockaddr_in sender = {};
    sender.sin_family = AF_INET;
    sender.sin_port = htons(161);
    EXPECT_EQ(inet_pton(AF_INET, address, &sender.sin_addr), 1);

    std::array<unsigned char, size> record;
    record.fill(0xff);
    std::memcpy(record.data(), &sender, sizeof sender);
    return record;
}

/// The sender as dotted-quad text; "none" if there is none.
std::string senderText(void* transportData, std::size_t length)
{
    snmp_pdu pdu = {};
    pdu.transport_data = transportData;
    pdu.transport_data_length = static_cast<int>(length);
    const std::optional<in_addr> sender = SenderOf(pdu);
    char text[INET_ADDRSTRLEN] = "none";
    if (sender) {
        inet_ntop(AF_INET, &*sender, text, sizeof text);
    }
    return text;
}

TEST(Sender, IsAtTheHeadOfTheRecordOfABuildWithoutIpv6)
{
    auto record = recordFrom<36>("192.0.2.7");
    EXPECT_EQ(senderText(record.data(), record.size()), "192.0.2.7");
}

TEST(Sender, IsAtTheHeadOfTheRecordAsItIsBuiltHere)
{
    auto record = recordFrom<sizeof(netsnmp_indexed_addr_pair)>("192.0.2.8");
    EXPECT_EQ(senderText(record.data(), record.size()), "192.0.2.8");
}

TEST(Sender, MayBeUnaligned)
{
    auto record = recordFrom<36>("192.0.2.8");
    alignas(8) std::array<unsigned char, 37> shifted;
    std::memcpy(&shifted[1], record.data(), record.size());
    EXPECT_EQ(senderText(&shifted[1], record.size()), "192.0.2.8");
}

TEST(Sender, WithAnyOtherLengthIsInTheTransportsData)
{
    auto record = recordFrom<sizeof(netsnmp_indexed_addr_pair)>("192.0.2.9");
    netsnmp_transport transport = {};
    transport.data = record.data();
    for (const std::size_t length :
         {sizeof transport, std::size_t{0}, std::size_t{35}, std::size_t{37},
          sizeof(netsnmp_indexed_addr_pair) - 1, sizeof(netsnmp_indexed_addr_pair) + 1}) {
        EXPECT_EQ(senderText(&transport, length), "192.0.2.9") << length;
    }
}

TEST(Sender, OfATransportWithoutDataThereIsNone)
{
    netsnmp_transport transport = {};
    EXPECT_EQ(senderText(&transport, sizeof transport), "none");
}

TEST(Sender, WithoutTransportDataThereIsNoneWhateverTheLength)
{
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{36}, sizeof(netsnmp_indexed_addr_pair)}) {
        EXPECT_EQ(senderText(nullptr, length), "none") << length;
    }
}

TEST(Sender, IsAnyAddress)
{
    for (const char* address : {"0.0.0.0", "255.255.255.255", "198.51.100.1"}) {
        auto record = recordFrom<36>(address);
        EXPECT_EQ(senderText(record.data(), record.size()), address);
    }
}

/// A response with bindings of every kind: names and values inside the binding, and ones that
/// Net-SNMP allocates apart from it.
snmp_pdu* responseWithBindings()
{
    snmp_pdu* const pdu = snmp_pdu_create(SNMP_MSG_RESPONSE);
    const oid name[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    const std::string longText(60000, 'x');
    for (const std::string& text : {std::string("short"), longText}) {
        EXPECT_NE(snmp_pdu_add_variable(pdu, name, std::size(name), ASN_OCTET_STR, text.data(),
                                        text.size()),
                  nullptr);
    }
    std::array<oid, MAX_OID_LEN> longName = {};
    longName.fill(1);
    EXPECT_NE(snmp_add_null_var(pdu, longName.data(), longName.size()), nullptr);
    return pdu;
}

TEST(ReleaseUnread, LeavesAPduWithoutBindingsAndCommunity) // the leak checker sees the rest
{
    snmp_pdu* const pdu = responseWithBindings();
    pdu->reqid = 17;
    pdu->community = static_cast<u_char*>(std::calloc(1, 250));
    pdu->community_len = 250;
    auto* const record = static_cast<unsigned char*>(std::calloc(1, 36));
    pdu->transport_data = record;
    pdu->transport_data_length = 36;

    ReleaseUnread(*pdu);

    EXPECT_EQ(pdu->variables, nullptr);
    EXPECT_EQ(snmp_varbind_len(pdu), 0U);
    EXPECT_EQ(pdu->community, nullptr);
    EXPECT_EQ(pdu->community_len, 0U);
    EXPECT_EQ(pdu->reqid, 17);
    EXPECT_EQ(pdu->transport_data, record);
    EXPECT_EQ(pdu->transport_data_length, 36);
    snmp_free_pdu(pdu);
}

TEST(ReleaseUnread, DoesNothingTheSecondTime)
{
    snmp_pdu* const pdu = responseWithBindings();
    ReleaseUnread(*pdu);
    ReleaseUnread(*pdu);
    EXPECT_EQ(pdu->variables, nullptr);
    snmp_free_pdu(pdu);
}

} // namespace

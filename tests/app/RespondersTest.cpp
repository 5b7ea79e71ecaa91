// The road of one answer: the sender of a response becomes a responder.

#include "tests/app/FakeNetwork.h"
#include "tests/app/TestApp.h"

#include "snmp/SNMPSession.h"

#include <net-snmp/library/snmp_transport.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <arpa/inet.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

namespace {

using Responders = std::set<std::string>;

/// A record as Net-SNMP's UDP transport makes it: the sender's address at the head, the rest
/// filled with ones so that no other part of it can be taken for an address.
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

class Callback : public testing::Test
{
protected:
    /// Hands a response to the application as its library would, and returns the responders.
    Responders respond(void* transportData, std::size_t length)
    {
        snmp_pdu pdu = {};
        pdu.transport_data = transportData;
        pdu.transport_data_length = static_cast<int>(length);
        SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
        return application->m_responders;
    }

    FakeNetwork network;
    Poco::AutoPtr<TestApp> application{new TestApp};
    const std::unique_ptr<UVARNETSNMP::SNMPSession> session =
        std::make_unique<UVARNETSNMP::SNMPSession>(0, "public", "192.0.2.255", true);
};

TEST_F(Callback, TakesTheSenderFromTheRecordOfABuildWithoutIpv6)
{
    auto record = recordFrom<36>("192.0.2.7");
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, TakesTheSenderFromTheRecordAsItIsBuiltHere)
{
    auto record = recordFrom<sizeof(netsnmp_indexed_addr_pair)>("192.0.2.8");
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.8"});
}

TEST_F(Callback, TakesTheSenderOfAnyOtherLengthFromTheTransportsData)
{
    auto record = recordFrom<sizeof(netsnmp_indexed_addr_pair)>("192.0.2.9");
    netsnmp_transport transport = {};
    transport.data = record.data();
    EXPECT_EQ(respond(&transport, sizeof transport), Responders{"192.0.2.9"});
}

TEST_F(Callback, LengthsBesideTheRecordsAreNotTheRecord)
{
    auto record = recordFrom<sizeof(netsnmp_indexed_addr_pair)>("192.0.2.10");
    netsnmp_transport transport = {};
    transport.data = record.data();
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{35}, std::size_t{37}, sizeof(netsnmp_indexed_addr_pair) - 1,
          sizeof(netsnmp_indexed_addr_pair) + 1}) {
        application->m_responders.clear();
        EXPECT_EQ(respond(&transport, length), Responders{"192.0.2.10"}) << length;
    }
}

TEST_F(Callback, IgnoresATransportWithoutData)
{
    netsnmp_transport transport = {};
    EXPECT_EQ(respond(&transport, sizeof transport), Responders{});
}

TEST_F(Callback, IgnoresAResponseWithoutTransportDataWhateverItsLength)
{
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{36}, sizeof(netsnmp_indexed_addr_pair)}) {
        EXPECT_EQ(respond(nullptr, length), Responders{}) << length;
    }
}

TEST_F(Callback, IgnoresAMissingContext)
{
    auto record = recordFrom<36>("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, nullptr, &pdu);
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(Callback, IgnoresAMissingPdu)
{
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), nullptr);
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(Callback, ReadsOnlyTheSenderSoAnErrorStatusCountsAsAnAnswer)
{
    auto record = recordFrom<36>("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.errstat = SNMP_ERR_NOSUCHNAME;
    pdu.command = SNMP_MSG_TRAP;
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.7"});
}

TEST_F(Callback, LeavesTheResponseAllocatedAndUnchanged)
{
    auto record = recordFrom<36>("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    const snmp_pdu before = pdu;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(),
                                   &pdu); // the fake fails on a release
    EXPECT_EQ(pdu.transport_data, before.transport_data);
    EXPECT_EQ(pdu.transport_data_length, before.transport_data_length);
}

/// A heap PDU with bindings of every kind that Net-SNMP allocates for: a name and a value that fit
/// the binding itself, and ones that do not.
snmp_pdu* pduWithBindings(unsigned char* record, int length)
{
    auto* const pdu = static_cast<snmp_pdu*>(calloc(1, sizeof(snmp_pdu)));
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
    pdu->transport_data = record;
    pdu->transport_data_length = length;
    return pdu;
}

TEST_F(Callback, ReleasesTheBindingsAndLeavesAPduWithoutAny) // the leak checker sees the rest
{
    auto record = recordFrom<36>("192.0.2.7");
    snmp_pdu* const pdu = pduWithBindings(record.data(), 36);
    pdu->reqid = 17;

    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), pdu);

    EXPECT_EQ(pdu->variables, nullptr);
    EXPECT_EQ(snmp_varbind_len(pdu), 0U);
    EXPECT_EQ(pdu->reqid, 17);
    EXPECT_EQ(pdu->transport_data, record.data());
    EXPECT_EQ(pdu->transport_data_length, 36);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.7"});
    free(pdu);
}

TEST_F(Callback, KeepsTheBindingsOfAResponseWhoseSenderItCannotTell)
{
    netsnmp_transport transport = {};
    auto* const data = reinterpret_cast<unsigned char*>(&transport);
    snmp_pdu* const pdu = pduWithBindings(data, sizeof transport);

    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), pdu);

    ASSERT_NE(pdu->variables, nullptr);
    EXPECT_EQ(snmp_varbind_len(pdu), 3U);
    snmp_free_varbind(pdu->variables);
    free(pdu);
}

TEST_F(Callback, ExtremeAddressesAreTextLikeAllOthers)
{
    for (const char* address : {"0.0.0.0", "255.255.255.255", "198.51.100.1"}) {
        auto record = recordFrom<36>(address);
        application->m_responders.clear();
        EXPECT_EQ(respond(record.data(), record.size()), Responders{address});
    }
}

TEST_F(Callback, AnAgentThatAnswersTwiceIsListedOnce)
{
    auto record = recordFrom<36>("192.0.2.7");
    respond(record.data(), record.size());
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, TwoAgentsAreBothListed)
{
    auto first = recordFrom<36>("192.0.2.7");
    auto second = recordFrom<36>("192.0.2.8");
    respond(first.data(), first.size());
    EXPECT_EQ(respond(second.data(), second.size()), (Responders{"192.0.2.7", "192.0.2.8"}));
}

} // namespace

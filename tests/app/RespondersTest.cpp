// The road of one answer: the sender of a response becomes a responder.

#include "tests/app/FakeNetwork.h"
#include "tests/app/TestApp.h"

#include "snmp/SNMPSession.h"

#include <arpa/inet.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using Responders = std::set<std::string>;

/// A record as the UDP transport of a Net-SNMP without IPv6 makes it: the sender's address at the
/// head, the rest filled with ones so that no other part of it can be taken for an address.
std::array<unsigned char, 36> recordFrom(const char* address)
{
    sockaddr_in sender = {};
    sender.sin_family = AF_INET;
    sender.sin_port = htons(161);
    EXPECT_EQ(inet_pton(AF_INET, address, &sender.sin_addr), 1);

    std::array<unsigned char, 36> record;
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

TEST_F(Callback, AddsTheSender)
{
    auto record = recordFrom("192.0.2.7");
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, IgnoresAResponseWithoutASender)
{
    EXPECT_EQ(respond(nullptr, 36), Responders{});
}

TEST_F(Callback, IgnoresAMissingContext)
{
    auto record = recordFrom("192.0.2.7");
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
    auto record = recordFrom("192.0.2.7");
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
    auto record = recordFrom("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    const snmp_pdu before = pdu;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(),
                                   &pdu); // the fake fails on a release
    EXPECT_EQ(pdu.transport_data, before.transport_data);
    EXPECT_EQ(pdu.transport_data_length, before.transport_data_length);
}

class CallbackContents : public Callback
{
protected:
    CallbackContents()
    {
        pdu.community = static_cast<u_char*>(std::calloc(1, 6));
        pdu.community_len = 6;
        snmp_add_null_var(&pdu, std::array<oid, 2>{1, 3}.data(), 2);
    }
    ~CallbackContents() override
    {
        snmp_free_varbind(pdu.variables);
        std::free(pdu.community);
    }

    snmp_pdu pdu = {};
};

TEST_F(CallbackContents, AreReleasedOnceTheSenderIsTaken)
{
    auto record = recordFrom("192.0.2.7");
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_EQ(pdu.variables, nullptr);
    EXPECT_EQ(pdu.community, nullptr);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.7"});
}

TEST_F(CallbackContents, AreKeptInAResponseWithoutASender)
{
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_NE(pdu.variables, nullptr);
    EXPECT_NE(pdu.community, nullptr);
}

TEST_F(Callback, ExtremeAddressesAreTextLikeAllOthers)
{
    for (const char* address : {"0.0.0.0", "255.255.255.255", "198.51.100.1"}) {
        auto record = recordFrom(address);
        application->m_responders.clear();
        EXPECT_EQ(respond(record.data(), record.size()), Responders{address});
    }
}

TEST_F(Callback, AnAgentThatAnswersTwiceIsListedOnce)
{
    auto record = recordFrom("192.0.2.7");
    respond(record.data(), record.size());
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, TwoAgentsAreBothListed)
{
    auto first = recordFrom("192.0.2.7");
    auto second = recordFrom("192.0.2.8");
    respond(first.data(), first.size());
    EXPECT_EQ(respond(second.data(), second.size()), (Responders{"192.0.2.7", "192.0.2.8"}));
}

} // namespace

// The asynchronous Get with the real Net-SNMP, against agents of the test's own on the loopback
// interface: which of the datagrams that come back reach the callback.

#include "tests/snmp/SNMPSessionLoopback.h"
#include "tests/snmp/Wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>

#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;

/// The port of the sender, from the transport data that Net-SNMP keeps with a PDU: its record of a
/// UDP datagram starts with the sender's address.
unsigned short SenderPort(const snmp_pdu& pdu)
{
    sockaddr_in from = {};
    if (pdu.transport_data == nullptr ||
        pdu.transport_data_length < static_cast<int>(sizeof from)) {
        ADD_FAILURE() << "no transport data";
        return 0;
    }
    std::memcpy(&from, pdu.transport_data, sizeof from);
    return ntohs(from.sin_port);
}

TEST_F(SNMPSessionLoopback, ThreeAgentsThatAnswerABroadcast)
{
    const LoopbackSocket second;
    const LoopbackSocket third;
    LoopbackAgent agent([&](const LoopbackAgent& first, const std::string& request, size_t) {
        first.Reply(Wire::Response(request, 1));
        first.ReplyFrom(second, Wire::Response(request, 2));
        first.ReplyFrom(third, Wire::Response(request, 3));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_EQ(m_gathered.session, &session);
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(1, 2, 3));
    const std::set<snmp_pdu*> copies(m_gathered.responses.begin(), m_gathered.responses.end());
    EXPECT_EQ(copies.size(), 3U);
    ASSERT_EQ(m_gathered.responses.size(), 3U);
    EXPECT_EQ(SenderPort(*m_gathered.responses[0]), agent.Port());
    EXPECT_EQ(SenderPort(*m_gathered.responses[1]), second.Port());
    EXPECT_EQ(SenderPort(*m_gathered.responses[2]), third.Port());
}

TEST_F(SNMPSessionLoopback, AnAnswerFromAnotherAddress)
{
    std::unique_ptr<LoopbackSocket> other;
    try {
        other = std::make_unique<LoopbackSocket>("127.0.0.2");
    } catch (const std::system_error&) {
        GTEST_SKIP() << "NOT TESTED: the loopback interface has no address but 127.0.0.1";
    }
    LoopbackAgent agent([&](const LoopbackAgent& self, const std::string& request, size_t) {
        self.ReplyFrom(*other, Wire::Response(request, 2));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(2));
}

TEST_F(SNMPSessionLoopback, AnAnswerToAnotherRequestIsIgnored)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        Wire::Message other = Wire::Decode(Wire::Response(request, 1));
        other.requestID.back() = static_cast<char>(other.requestID.back() ^ 1);
        self.Reply(Wire::Encode(other));
        self.Reply(Wire::Response(request, 2));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(2));
}

TEST_F(SNMPSessionLoopback, AnAnswerThatComesAfterItsGetIsIgnored)
{
    std::string first;
    LoopbackAgent agent([&](const LoopbackAgent& self, const std::string& request, size_t number) {
        if (number == 0) {
            first = request;
        } else {
            self.Reply(Wire::Response(first, 1));
            self.Reply(Wire::Response(request, 2));
        }
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(0)));
    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(2));
}

TEST_F(SNMPSessionLoopback, WhatIsNotAnSNMPMessageIsIgnored)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        self.Reply("");
        self.Reply("not an SNMP message");
        self.Reply(request.substr(0, request.size() / 2));
        self.Reply(Wire::Response(request, 1));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(1));
}

TEST_F(SNMPSessionLoopback, AnyPDUWithTheRequestIDReachesTheCallback)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        self.Reply(request);
        for (const unsigned char type : {Wire::getNext, Wire::response}) {
            Wire::Message message = Wire::Decode(request);
            message.type = type;
            message.errorStatus = SNMP_ERR_GENERR;
            self.Reply(Wire::Encode(message));
        }
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    ASSERT_EQ(m_gathered.responses.size(), 3U);
    EXPECT_EQ(m_gathered.responses[0]->command, SNMP_MSG_GET);
    EXPECT_EQ(m_gathered.responses[1]->command, SNMP_MSG_GETNEXT);
    EXPECT_EQ(m_gathered.responses[2]->command, SNMP_MSG_RESPONSE);
    EXPECT_EQ(m_gathered.responses[2]->errstat, SNMP_ERR_GENERR);
}

TEST_F(SNMPSessionLoopback, SessionsOfSeveralThreads)
{
    std::vector<std::thread> threads;
    std::vector<Gathered> gathered(4);
    threads.reserve(gathered.size());
    for (Gathered& own : gathered) {
        threads.emplace_back([this, &own] {
            LoopbackAgent agent(&Answer);
            Session session(SNMP_VERSION_1, "public", agent.Host(), true);
            session.Get(m_oid, &Gather, &own, shortGathering);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Gathered& own : gathered) {
        EXPECT_THAT(own.Ticks(), ElementsAre(42));
    }
}

} // namespace

// The session with the real Net-SNMP, against agents of the test's own on the loopback interface:
// the octets that are sent, and what becomes of the octets that come back.

#include "snmp/SNMPSession.h"
#include "tests/snmp/LoopbackAgent.h"
#include "tests/snmp/Wire.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::EnvironmentGuard;
using TestSupport::SNMPEnvironment;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;

/// Net-SNMP is set up once a process, without any MIB module, and shut down at its end.
class Library : public ::testing::Environment
{
public:
    void SetUp() override
    {
        m_environment = std::make_unique<SNMPEnvironment>();
        m_mibs = std::make_unique<EnvironmentGuard>("MIBS", "");
        const std::string directory = m_environment->directory().string();
        SNMPSession::Initialize("snmp_session_tests", directory, directory, "");
    }
    void TearDown() override
    {
        SNMPSession::Terminate();
        m_mibs.reset();
        m_environment.reset();
    }

private:
    std::unique_ptr<SNMPEnvironment> m_environment;
    std::unique_ptr<EnvironmentGuard> m_mibs;
};

[[maybe_unused]] const ::testing::Environment* const kLibrary =
    ::testing::AddGlobalTestEnvironment(new Library);

class Session : public SNMPSession
{
public:
    using SNMPSession::m_initialized;
    using SNMPSession::m_sessionHandle;
    using SNMPSession::m_sessionPtr;
    using SNMPSession::SNMPSession;

    /// One try of 50 ms instead of three of 3 s each.
    void GiveUpSoon()
    {
        m_sessionPtr->timeout = 50000;
        m_sessionPtr->retries = 0;
    }
};

/// What an asynchronous Get handed over.
struct Gathered
{
    ~Gathered()
    {
        for (snmp_pdu* const response : responses) {
            snmp_free_pdu(response);
        }
    }

    std::vector<long> Ticks() const
    {
        std::vector<long> ticks;
        for (const snmp_pdu* const response : responses) {
            const variable_list* const binding = response->variables;
            ticks.push_back(
                binding != nullptr && binding->type == ASN_TIMETICKS ? *binding->val.integer : -1);
        }
        return ticks;
    }

    SNMPSession* session = nullptr;
    std::vector<snmp_pdu*> responses;
};

void Gather(SNMPSession& session, void* userData, snmp_pdu* response)
{
    auto* const gathered = static_cast<Gathered*>(userData);
    gathered->session = &session;
    gathered->responses.push_back(response);
}

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

const LoopbackAgent::Behaviour kAnswers = [](const LoopbackAgent& agent, const std::string& request,
                                             size_t) { agent.Reply(Wire::Response(request, 42)); };

const Poco::Timespan kShort(0, 200000); // much longer than an answer on the loopback interface

class SNMPSessionLoopback : public ::testing::Test
{
protected:
    const OID m_oid{"1.3.6.1.2.1.1.3.0"};
    Gathered m_gathered;
};

using Operation = snmp_pdu* (SNMPSession::*) (const OID&);

TEST_F(SNMPSessionLoopback, TheOctetsOfEverySynchronousRequest)
{
    struct Case
    {
        const char* name;
        Operation operation;
        long version;
        unsigned char type;
    };
    const Case cases[] = {
        {"Get, SNMPv1", &SNMPSession::Get, SNMP_VERSION_1, Wire::kGet},
        {"Get, SNMPv2c", &SNMPSession::Get, SNMP_VERSION_2c, Wire::kGet},
        {"GetNext, SNMPv1", &SNMPSession::GetNext, SNMP_VERSION_1, Wire::kGetNext},
        {"GetNext, SNMPv2c", &SNMPSession::GetNext, SNMP_VERSION_2c, Wire::kGetNext},
        {"GetBulk, SNMPv1", &SNMPSession::GetBulk, SNMP_VERSION_1, Wire::kGetNext},
        {"GetBulk, SNMPv2c", &SNMPSession::GetBulk, SNMP_VERSION_2c, Wire::kGetNext},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        LoopbackAgent agent(kAnswers);
        Session session(row.version, "public", agent.Host(), false);

        snmp_pdu* const response = (session.*row.operation)(m_oid);

        ASSERT_NE(response, nullptr);
        EXPECT_EQ(response->command, SNMP_MSG_RESPONSE);
        EXPECT_EQ(response->errstat, SNMP_ERR_NOERROR);
        ASSERT_NE(response->variables, nullptr);
        EXPECT_EQ(*response->variables->val.integer, 42);
        session.ReleasePDU(response);

        ASSERT_EQ(agent.Stop().size(), 1U);
        const std::string& sent = agent.Stop()[0];
        EXPECT_EQ(sent, Wire::Encode({static_cast<int>(row.version), "public", row.type,
                                      Wire::Decode(sent).requestID, 0, 10, Wire::SysUpTimeNull()}));
    }
}

TEST_F(SNMPSessionLoopback, TheOctetsOfTheAsynchronousGet)
{
    LoopbackAgent agent;
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(0)));

    ASSERT_EQ(agent.Stop().size(), 1U);
    const std::string& sent = agent.Stop()[0];
    EXPECT_EQ(sent, Wire::Encode({0, "public", Wire::kGet, Wire::Decode(sent).requestID, 0, 10,
                                  Wire::SysUpTimeNull()}));
}

TEST_F(SNMPSessionLoopback, ACommunityOfAnyOctets)
{
    LoopbackAgent agent;
    Session session(SNMP_VERSION_2c, "p\xfc\x62lic \x01", agent.Host(), false);

    session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(0));

    ASSERT_EQ(agent.Stop().size(), 1U);
    EXPECT_EQ(Wire::Decode(agent.Stop()[0]).community, "p\xfc\x62lic \x01");
}

TEST_F(SNMPSessionLoopback, AnOIDWithoutSubIdentifiersGoesOutAsZeros)
{
    LoopbackAgent agent;
    Session session(SNMP_VERSION_1, "public", agent.Host(), false);

    EXPECT_TRUE(session.Get(OID(), &Gather, &m_gathered, Poco::Timespan(0)));

    ASSERT_EQ(agent.Stop().size(), 1U);
    EXPECT_EQ(Wire::Decode(agent.Stop()[0]).bindings,
              std::string("\x30\x06\x06\x02\x00\x00\x05\x00", 8));
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

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

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
        GTEST_SKIP() << "the loopback interface has no address but 127.0.0.1";
    }
    LoopbackAgent agent([&](const LoopbackAgent& self, const std::string& request, size_t) {
        self.ReplyFrom(*other, Wire::Response(request, 2));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

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

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

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
    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

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

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(1));
}

TEST_F(SNMPSessionLoopback, AnyPDUWithTheRequestIDReachesTheCallback)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        self.Reply(request);
        for (const unsigned char type : {Wire::kGetNext, Wire::kResponse}) {
            Wire::Message message = Wire::Decode(request);
            message.type = type;
            message.errorStatus = SNMP_ERR_GENERR;
            self.Reply(Wire::Encode(message));
        }
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

    ASSERT_EQ(m_gathered.responses.size(), 3U);
    EXPECT_EQ(m_gathered.responses[0]->command, SNMP_MSG_GET);
    EXPECT_EQ(m_gathered.responses[1]->command, SNMP_MSG_GETNEXT);
    EXPECT_EQ(m_gathered.responses[2]->command, SNMP_MSG_RESPONSE);
    EXPECT_EQ(m_gathered.responses[2]->errstat, SNMP_ERR_GENERR);
}

TEST_F(SNMPSessionLoopback, TheWholeTimeoutPassesHoweverEarlyTheAnswer)
{
    LoopbackAgent agent(kAnswers);
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

    // The end is the system clock's, a coarse match for the steady one that is measured with.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(190));
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(42));
}

TEST_F(SNMPSessionLoopback, WithATimeoutOfZeroNoAnswerIsRead)
{
    for (const Poco::Timespan::TimeDiff timeout : {0, -1, -1000000}) {
        LoopbackAgent agent(kAnswers);
        Session session(SNMP_VERSION_1, "public", agent.Host(), true);

        EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(timeout)));

        EXPECT_EQ(agent.Stop().size(), 1U) << timeout;
        EXPECT_THAT(m_gathered.responses, IsEmpty()) << timeout;
    }
}

TEST_F(SNMPSessionLoopback, WithoutAnAnswerTheAsynchronousGetIsStillTrue)
{
    LoopbackAgent agent;
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort));

    EXPECT_EQ(agent.Stop().size(), 1U) << "no resend yet";
    EXPECT_THAT(m_gathered.responses, IsEmpty());
}

TEST_F(SNMPSessionLoopback, AResendAfterThreeSecondsIsAnsweredAgain)
{
    LoopbackAgent agent(kAnswers);
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(3, 300000)));

    ASSERT_EQ(agent.Stop().size(), 2U);
    EXPECT_EQ(agent.Stop()[0], agent.Stop()[1]) << "the same request ID, octet for octet";
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(42, 42));
}

TEST_F(SNMPSessionLoopback, OnceItsTriesAreUsedUpTheRequestIsForgotten)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t number) {
        if (number == 1) {
            self.Reply(Wire::Response(request, 1));
        }
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    session.m_sessionPtr->timeout = 50000;
    session.m_sessionPtr->retries = 2;

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(0, 500000)));

    EXPECT_EQ(agent.Stop().size(), 3U);
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(1)) << "and no call for the end of the tries";
}

TEST_F(SNMPSessionLoopback, ASynchronousRequestWithoutAnAnswerIsNull)
{
    for (const Operation operation : {static_cast<Operation>(&SNMPSession::Get),
                                      &SNMPSession::GetNext, &SNMPSession::GetBulk}) {
        LoopbackAgent agent;
        Session session(SNMP_VERSION_2c, "public", agent.Host(), false);
        session.GiveUpSoon();

        EXPECT_EQ((session.*operation)(m_oid), nullptr);
        EXPECT_EQ(agent.Stop().size(), 1U);
    }
}

TEST_F(SNMPSessionLoopback, AResponseWithAnErrorStatusIsReturnedAsItIs)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        Wire::Message message = Wire::Decode(request);
        message.type = Wire::kResponse;
        message.errorStatus = SNMP_ERR_NOSUCHNAME;
        message.errorIndex = 1;
        self.Reply(Wire::Encode(message));
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), false);

    snmp_pdu* const response = session.Get(m_oid);

    ASSERT_NE(response, nullptr);
    EXPECT_EQ(response->errstat, SNMP_ERR_NOSUCHNAME);
    EXPECT_EQ(response->errindex, 1);
    session.ReleasePDU(response);
}

TEST_F(SNMPSessionLoopback, TheSocketMayBroadcastWhenAsked)
{
    for (const bool broadcast : {false, true}) {
        const LoopbackSocket peer;
        Session session(SNMP_VERSION_1, "public", "udp:127.0.0.1:" + std::to_string(peer.Port()),
                        broadcast);
        ASSERT_NE(session.m_sessionHandle, nullptr);
        int allowed = -1;
        socklen_t size = sizeof allowed;
        ASSERT_EQ(getsockopt(snmp_sess_transport(session.m_sessionHandle)->sock, SOL_SOCKET,
                             SO_BROADCAST, &allowed, &size),
                  0);
        EXPECT_EQ(allowed != 0, broadcast);
    }
}

TEST_F(SNMPSessionLoopback, ASessionThatNetSNMPRefuses)
{
    Session session(SNMP_VERSION_1, "public", "unix:/nonexistent/agent", false);

    EXPECT_TRUE(session.m_initialized);
    EXPECT_EQ(session.m_sessionPtr, nullptr);
    EXPECT_EQ(session.m_sessionHandle, nullptr);
    EXPECT_EQ(session.Get(m_oid), nullptr);
    EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, kShort));
}

TEST_F(SNMPSessionLoopback, ARequestThatCannotBeSent)
{
    LoopbackAgent agent;
    // SNMPv3 without a user: refused before anything is sent.
    Session session(SNMP_VERSION_3,
                    SNMPSecurity(std::map<std::string, std::string>{
                        {"securityengid", "8000000001"}, {"securitylevel", "AuthNoPriv"}}),
                    agent.Host(), false);

    EXPECT_EQ(session.Get(m_oid), nullptr);
    EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, kShort));
    EXPECT_THAT(agent.Stop(), IsEmpty());
}

TEST_F(SNMPSessionLoopback, AStreamThatItsPeerCloses)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_GE(listener, 0);
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof own;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&own), size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&own), &size), 0);
    {
        Session session(SNMP_VERSION_1, "public",
                        "tcp:127.0.0.1:" + std::to_string(ntohs(own.sin_port)), false);
        ASSERT_NE(session.m_sessionPtr, nullptr);
        close(accept(listener, nullptr, nullptr));

        EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, kShort)) << "sent, not answered";
        EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, kShort)) << "no stream any more";
        EXPECT_EQ(session.Get(m_oid), nullptr);
    }
    close(listener);
    EXPECT_THAT(m_gathered.responses, IsEmpty());
}

TEST_F(SNMPSessionLoopback, SessionsOfSeveralThreads)
{
    std::vector<std::thread> threads;
    std::vector<Gathered> gathered(4);
    for (Gathered& own : gathered) {
        threads.emplace_back([this, &own] {
            LoopbackAgent agent(kAnswers);
            Session session(SNMP_VERSION_1, "public", agent.Host(), true);
            session.Get(m_oid, &Gather, &own, kShort);
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

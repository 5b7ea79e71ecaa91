// The session with the real Net-SNMP, against agents of the test's own on the loopback interface.

#include "tests/snmp/helpers/SNMPSessionLoopback.h"
#include "tests/snmp/helpers/Wire.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;
using Operation = snmp_pdu* (SNMPSession::*) (const OID&);

// The asynchronous Get: which of the datagrams that come back reach the callback.

/// The port of the sender: the transport data of a PDU start with its address.
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

TEST_F(SNMPSessionLoopback, SessionsOfSeveralThreadsCallBackOnTheirOwn)
{
    std::vector<std::thread> threads;
    std::vector<Gathered> gathered(4);
    threads.reserve(gathered.size());
    for (Gathered& own : gathered) {
        threads.emplace_back([this, &own] {
            LoopbackAgent agent(&Answer);
            Session session(SNMP_VERSION_1, "public", agent.Host(), true);
            session.Get(m_oid, &Gather, &own, shortGathering);
            EXPECT_EQ(own.thread, std::this_thread::get_id());
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Gathered& own : gathered) {
        EXPECT_THAT(own.Ticks(), ElementsAre(42));
    }
}

// The asynchronous Get: when it ends, what is sent again, what becomes of streams and descriptors.

TEST_F(SNMPSessionLoopback, TheWholeTimeoutPassesHoweverEarlyTheAnswer)
{
    LoopbackAgent agent(&Answer);
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    // The system clock determines the end; the steady one here may differ from it a little.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(390));
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(42));
}

TEST_F(SNMPSessionLoopback, WithATimeoutOfZeroNoAnswerIsRead)
{
    for (const Poco::Timespan::TimeDiff timeout : {0, -1, -1000000}) {
        LoopbackAgent agent(&Answer);
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

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    EXPECT_EQ(agent.Stop().size(), 1U) << "no resend yet";
    EXPECT_THAT(m_gathered.responses, IsEmpty());
}

TEST_F(SNMPSessionLoopback, AResendAfterThreeSecondsIsAnsweredAgain)
{
    LoopbackAgent agent(&Answer);
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(3, 500000)));

    ASSERT_EQ(agent.Stop().size(), 2U);
    EXPECT_EQ(agent.Stop()[0], agent.Stop()[1]) << "the same request ID, octet for octet";
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(42, 42));
}

TEST_F(SNMPSessionLoopback, OnceItsTriesAreUsedUpTheRequestIsForgotten)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t number) {
        if (number == 0) {
            self.Reply(Wire::Response(request, 1));
        }
    });
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    session.m_sessionPtr->timeout = 100000;
    session.m_sessionPtr->retries = 2;

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, Poco::Timespan(0, 700000)));

    EXPECT_EQ(agent.Stop().size(), 3U);
    EXPECT_THAT(m_gathered.Ticks(), ElementsAre(1)) << "and no call for the end of the tries";
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

        EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering))
            << "sent, not answered";
        EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, shortGathering))
            << "no stream any more";
        EXPECT_EQ(session.Get(m_oid), nullptr);
    }
    close(listener);
    EXPECT_THAT(m_gathered.responses, IsEmpty());
}

TEST_F(SNMPSessionLoopback, ADescriptorThatAnOrdinarySetDoesNotHold)
{
#ifdef SNMPDISCOVERY_EMULATED
    GTEST_SKIP() << "NOT TESTED: qemu-user's select() holds only such a set itself";
#endif
    for (const int first : {FD_SETSIZE - 1, FD_SETSIZE, FD_SETSIZE + 1, 3 * FD_SETSIZE}) {
        SCOPED_TRACE(first);
        LoopbackAgent agent(&Answer);
        const TestSupport::OccupiedDescriptors occupied(first, 16);
        Session session(SNMP_VERSION_1, "public", agent.Host(), true);
        ASSERT_NE(session.m_sessionPtr, nullptr);
        ASSERT_EQ(snmp_sess_transport(session.m_sessionHandle)->sock, first);
        Gathered gathered;

        EXPECT_TRUE(session.Get(m_oid, &Gather, &gathered, shortGathering));
        EXPECT_THAT(gathered.Ticks(), ElementsAre(42));

        // Synchronous requests: Net-SNMP waits for these itself.
        Session another(SNMP_VERSION_1, "public", agent.Host(), false);
        snmp_pdu* const response = another.Get(m_oid);
        EXPECT_NE(response, nullptr);
        another.ReleasePDU(response);
    }
}

TEST_F(SNMPSessionLoopback, WithoutADescriptorTheSessionIsNotOpen)
{
    LoopbackAgent agent(&Answer);
    {
        // The limit covers only the session: UndefinedBehaviorSanitizer needs a descriptor when it
        // meets a class for the first time.
        const Session first(SNMP_VERSION_1, "public", agent.Host(), true);
        EXPECT_NE(first.m_sessionPtr, nullptr);
    }
    std::optional<TestSupport::DescriptorLimit> none(std::in_place, 0);

    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    none.reset();

    EXPECT_TRUE(session.m_initialized);
    EXPECT_EQ(session.m_sessionPtr, nullptr);
    EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));
    EXPECT_THAT(m_gathered.responses, IsEmpty());
}

// The octets that are sent, and the synchronous requests.

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
        {"Get, SNMPv1", &SNMPSession::Get, SNMP_VERSION_1, Wire::get},
        {"Get, SNMPv2c", &SNMPSession::Get, SNMP_VERSION_2c, Wire::get},
        {"GetNext, SNMPv1", &SNMPSession::GetNext, SNMP_VERSION_1, Wire::getNext},
        {"GetNext, SNMPv2c", &SNMPSession::GetNext, SNMP_VERSION_2c, Wire::getNext},
        {"GetBulk, SNMPv1", &SNMPSession::GetBulk, SNMP_VERSION_1, Wire::getNext},
        {"GetBulk, SNMPv2c", &SNMPSession::GetBulk, SNMP_VERSION_2c, Wire::getNext},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        LoopbackAgent agent(&Answer);
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
    EXPECT_EQ(sent, Wire::Encode({0, "public", Wire::get, Wire::Decode(sent).requestID, 0, 10,
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
        message.type = Wire::response;
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
    EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));
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
    EXPECT_FALSE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));
    EXPECT_THAT(agent.Stop(), IsEmpty());
}

// The size of the sessions' receive buffers.

/// Sets Net-SNMP's setting, as a configuration file does, for a scope.
class Setting
{
public:
    explicit Setting(int octets) : m_former(Value()) { Set(octets); }
    ~Setting() { Set(m_former); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    static int Value()
    {
        return netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF);
    }

private:
    static void Set(int octets)
    {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF, octets);
    }

    int m_former;
};

/// The size that the system gives the socket of a new session.
int BufferOfASession()
{
    const Session session(SNMP_VERSION_1, "public", "127.0.0.1:1", true);
    const netsnmp_transport* const transport = snmp_sess_transport(session.m_sessionHandle);
    int octets = 0;
    socklen_t length = sizeof octets;
    if (transport == nullptr ||
        getsockopt(transport->sock, SOL_SOCKET, SO_RCVBUF, &octets, &length) != 0) {
        ADD_FAILURE() << "no socket";
    }
    return octets;
}

class ReceiveBuffer : public SNMPSessionLoopback
{};

TEST_F(ReceiveBuffer, IsAskedForWhereNothingIsConfigured)
{
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
    EXPECT_EQ(Setting::Value(), 4194304);
}

TEST_F(ReceiveBuffer, ReachesTheSocket)
{
    // Small enough that no system limits it. Linux doubles it for its own data.
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(8192);
    const int octets = BufferOfASession();
    EXPECT_GE(octets, 8192);
    EXPECT_LE(octets, 2 * 8192);
}

TEST_F(ReceiveBuffer, AConfiguredSizeStays)
{
    // A configuration may say 1 too; with a negative number Net-SNMP requests no size.
    for (const int configured : {1, 65536, 8388608, -1}) {
        const Setting setting(configured);
        UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
        EXPECT_EQ(Setting::Value(), configured);
    }
}

TEST_F(ReceiveBuffer, TheFirstWishStays)
{
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(65536);
    EXPECT_EQ(Setting::Value(), 4194304);
}

} // namespace

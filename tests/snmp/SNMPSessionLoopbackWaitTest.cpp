// The asynchronous Get with the real Net-SNMP, against agents of the test's own on the loopback
// interface: when it ends, what is sent again, and what becomes of streams and descriptors.

#include "tests/snmp/SNMPSessionLoopback.h"
#include "tests/snmp/Wire.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(SNMPSessionLoopback, TheWholeTimeoutPassesHoweverEarlyTheAnswer)
{
    LoopbackAgent agent(&Answer);
    Session session(SNMP_VERSION_1, "public", agent.Host(), true);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_TRUE(session.Get(m_oid, &Gather, &m_gathered, shortGathering));

    // The end is the system clock's, a coarse match for the steady one that is measured with.
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
        // UndefinedBehaviorSanitizer needs a descriptor when it meets a class for the first time,
        // so the limit holds for nothing but the session.
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

} // namespace

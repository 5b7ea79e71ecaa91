// SNMPSessionWait.cpp, with Net-SNMP faked: the wait of the asynchronous Get. Only select() moves
// the clock.

#include "tests/snmp/helpers/ReceivingSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using ::testing::IsEmpty;

class SNMPSessionWait : public ReceivingSession
{};

TEST_F(SNMPSessionWait, EveryTurnStartsAfreshAndServesTheSession)
{
    struct Case
    {
        const char* name;
        int result;
        int error;
        const char* served;
    };
    const Case cases[] = {
        {"ready", 1, 0, "snmp_sess_read({7})"},
        {"timed out", 0, 0, "snmp_sess_timeout"},
        {"interrupted", -1, EINTR, "snmp_sess_timeout"},
        {"failed", -1, EBADF, "snmp_sess_timeout"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        m_fake.created = 0;
        m_fake.onSelect = [this, &row] {
            m_fake.now += turn;
            errno = row.error;
            return row.result;
        };

        EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

        EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, Turn(row.served), Turn(row.served)}));
        m_fake.DropOutstanding();
    }
}

TEST_F(SNMPSessionWait, ADueResendShortensTheTurn)
{
    m_fake.nextResend = {0, 1200};

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(1200)));

    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending,
                      {"snmp_sess_select_info(0, {}, 0.005000, 0)",
                       "select(8, {7}, null, null, 0.001200)", "snmp_sess_timeout"}}));
}

TEST_F(SNMPSessionWait, AClosedStreamIsLeftAloneUntilTheTimeIsOver)
{
    m_fake.onRead = [this] { m_fake.descriptor = -1; };
    m_fake.onSelect = [this] {
        m_fake.now += turn;
        return 1;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(3 * turn)));

    const std::string waiting = "select(0, null, null, null, 0.005000)";
    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending, Turn("snmp_sess_read({7})"), {waiting, waiting}}));
}

// A process whose standard input is closed gets it for its first session.
TEST_F(SNMPSessionWait, TheFirstDescriptorIsServedToo)
{
    m_fake.descriptor = 0;

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(turn)));

    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending,
                      {"snmp_sess_select_info(0, {}, 0.005000, 0)",
                       "select(1, {0}, null, null, 0.005000)", "snmp_sess_timeout"}}));
}

TEST_F(SNMPSessionWait, TheLastDescriptorThatAnOrdinarySetHolds)
{
    m_fake.descriptor = FD_SETSIZE - 1;

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(turn)));

    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending,
                      {"snmp_sess_select_info(0, {}, 0.005000, 0)",
                       "select(1024, {1023}, null, null, 0.005000)", "snmp_sess_timeout"}}));
}

TEST_F(SNMPSessionWait, ADescriptorBeyondIsServedWithALargeSet)
{
    struct Case
    {
        const char* name;
        int descriptor;
        int result;
        const char* served;
    };
    const Case cases[] = {
        {"first, ready", FD_SETSIZE, 1, "snmp_sess_read2([room 1025: 1024])"},
        {"first, timed out", FD_SETSIZE, 0, "snmp_sess_timeout"},
        {"first, failed", FD_SETSIZE, -1, "snmp_sess_timeout"},
        {"far, ready", 70000, 1, "snmp_sess_read2([room 70001: 70000])"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        m_fake.created = 0;
        m_fake.descriptor = row.descriptor;
        m_fake.onSelect = [this, &row] {
            m_fake.now += turn;
            return row.result;
        };

        EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

        const std::string count = std::to_string(row.descriptor + 1);
        const std::string empty = "[room " + count + ":]";
        const std::string own = "[room " + count + ": " + std::to_string(row.descriptor) + "]";
        std::string waiting = "netsnmp_large_fd_set_select(";
        waiting.append(count).append(", ").append(own).append(", 0.005000)");
        const std::vector<std::string> once = {
            "snmp_sess_select_info2(0, " + empty + ", 0.005000, 0)", waiting, row.served};
        EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, once, once}));
        m_fake.DropOutstanding();
    }
}

TEST_F(SNMPSessionWait, WithoutMemoryForALargeSetTheTurnOnlyWaits)
{
    m_fake.descriptor = FD_SETSIZE;
    m_fake.largeSetFails = true;

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

    const std::string waiting = "select(0, null, null, null, 0.005000)";
    EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, {waiting, waiting}}));
}

TEST_F(SNMPSessionWait, TheWaitEndsWithTheTurnInWhichItsTimeRunsOut)
{
    struct Case
    {
        const char* name;
        Poco::Timespan::TimeDiff timeout;
        size_t turns;
    };
    const Case cases[] = {
        {"one microsecond", 1, 1},
        {"just less than a turn", turn - 1, 1},
        {"a turn", turn, 1},
        {"just more than a turn", turn + 1, 2},
        {"five seconds", 5000000, 1000},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(row.timeout)));
        EXPECT_EQ(m_fake.TakeCalls().size(), sending.size() + 3 * row.turns);
        m_fake.DropOutstanding();
    }
}

TEST_F(SNMPSessionWait, TheLongestTimeoutEndsWithTheLastTimestamp)
{
    int turns = 0;
    m_fake.onSelect = [&] {
        ++turns;
        m_fake.now = turns == 3 ? Poco::Timestamp::TIMEVAL_MAX : m_fake.now + turn;
        return 0;
    };
    const Poco::Timespan longest(Poco::Timespan::TimeDiff{Poco::Timestamp::TIMEVAL_MAX});

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, longest));

    EXPECT_EQ(turns, 3);
}

TEST_F(SNMPSessionWait, TheTimeThatSendingTakesCounts)
{
    m_fake.onSend = [this](snmp_pdu&) {
        m_fake.now += 2 * turn;
        return requestID;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

    EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, Turn("snmp_sess_timeout")}))
        << "one turn always: the remaining time is computed after it";
}

TEST_F(SNMPSessionWait, AnEarlyAnswerDoesNotEndTheWait)
{
    snmp_pdu* const answer = m_fake.MakePDU("answer", SNMP_MSG_RESPONSE);
    m_fake.onSelect = [this] {
        m_fake.now += turn;
        return 1;
    };
    m_fake.onRead = [&] {
        EXPECT_EQ(m_fake.Deliver(NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE, requestID, answer), 0);
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(3 * turn)));

    ASSERT_EQ(AllReceived().size(), 3U) << "one in each turn";
    EXPECT_NE(AllReceived()[0].response, AllReceived()[1].response);
    EXPECT_NE(AllReceived()[1].response, AllReceived()[2].response);
    for (const Received& received : AllReceived()) {
        EXPECT_EQ(received.session, &m_session);
        EXPECT_EQ(received.userData, &m_userData);
        EXPECT_NE(received.response, answer);
    }
    m_session.ReleasePDU(answer);
}

TEST_F(SNMPSessionWait, WithoutAnAnswerItIsStillTrue)
{
    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(AllReceived(), IsEmpty());
}

} // namespace

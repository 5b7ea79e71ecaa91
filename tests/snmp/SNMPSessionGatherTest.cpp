// The asynchronous Get, which gathers answers until its time is over, and the callback through
// which Net-SNMP delivers them. The clock stands still but for what select() takes.

#include "tests/snmp/FakeNetSNMP.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

constexpr int requestID = 4711;
constexpr Poco::Timespan::TimeDiff turn = 5000; // microseconds

/// What the caller's function was given, in order.
struct Received
{
    SNMPSession* session;
    void* userData;
    snmp_pdu* response;
};
std::vector<Received> s_received;

void Receive(SNMPSession& session, void* userData, snmp_pdu* response)
{
    s_received.push_back({&session, userData, response});
}

class SNMPSessionGather : public ::testing::Test
{
protected:
    SNMPSessionGather() { m_fake.ForgetCalls(); }
    ~SNMPSessionGather() override
    {
        for (const Received& received : s_received) {
            m_session.ReleasePDU(received.response);
        }
        s_received.clear();
        m_fake.ForgetCalls();
    }

    const OpenBook::RequestContext& Context() const
    {
        return *static_cast<OpenBook::RequestContext*>(m_fake.live.callback_magic);
    }

    const std::vector<std::string> sending = {"snmp_pdu_create(160)",
                                              "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                              "snmp_sess_send(request1)"};

    /// The calls of one turn of the wait, the last one given.
    static std::vector<std::string> Turn(const std::string& served)
    {
        return {"snmp_sess_select_info(0, {}, 0.005000, 0)", "select(8, {7}, null, null, 0.005000)",
                served};
    }

    static std::vector<std::string> Joined(const std::vector<std::vector<std::string>>& parts)
    {
        std::vector<std::string> all;
        for (const std::vector<std::string>& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    NameGuard m_name{"Test"};
    FakeNetSNMP m_fake;
    OpenBook m_session{SNMP_VERSION_1, "public", "192.0.2.255", true};
    const OID m_oid = SysUpTimeName();
    int m_userData = 0;
};

TEST_F(SNMPSessionGather, TheRequestIsAGetWithErrorIndexTen)
{
    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(0)));

    EXPECT_EQ(m_fake.TakeCalls(), sending);
    ASSERT_EQ(m_fake.sent.size(), 1U);
    EXPECT_EQ(m_fake.sent[0].command, SNMP_MSG_GET);
    EXPECT_EQ(m_fake.sent[0].errorStatus, 0);
    EXPECT_EQ(m_fake.sent[0].errorIndex, 10);
    EXPECT_THAT(m_fake.sent[0].bindings,
                ElementsAre("1.3.6.1.2.1.1.3.0 " + std::to_string(ASN_NULL)));
}

TEST_F(SNMPSessionGather, ATimeoutOfZeroOrLessSendsAndReturns)
{
    for (const Poco::Timespan::TimeDiff timeout : {0, -1, -5000000}) {
        m_fake.created = 0;
        EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(timeout)));
        EXPECT_EQ(m_fake.TakeCalls(), sending) << timeout;
        EXPECT_NE(m_fake.Outstanding(), nullptr);
        m_fake.DropOutstanding();
    }
    EXPECT_THAT(s_received, IsEmpty());
}

TEST_F(SNMPSessionGather, TheCallbackIsSetBeforeTheRequestIsSent)
{
    m_fake.onSend = [this](snmp_pdu&) {
        EXPECT_EQ(m_fake.live.callback, &SNMPSession::Callback);
        EXPECT_EQ(Context().session, &m_session);
        EXPECT_EQ(Context().reqid, 0) << "not sent yet";
        EXPECT_EQ(Context().callback, &Receive);
        EXPECT_EQ(Context().userData, &m_userData);
        return requestID;
    };
    m_fake.onSelect = [this] {
        EXPECT_EQ(Context().reqid, requestID);
        m_fake.now += turn;
        return 0;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(turn)));

    EXPECT_EQ(m_fake.live.callback, &SNMPSession::Callback) << "left in place";
    EXPECT_NE(m_fake.live.callback_magic, nullptr) << "left in place";
    EXPECT_EQ(m_session.m_session.callback, nullptr) << "the template is not the live session";
}

TEST_F(SNMPSessionGather, TheResponseFlagOfTheSentRequestIsCleared)
{
    m_fake.onSend = [](snmp_pdu& request) {
        request.flags |= UCD_MSG_FLAG_RESPONSE_PDU | UCD_MSG_FLAG_EXPECT_RESPONSE;
        return requestID;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(0)));

    ASSERT_NE(m_fake.Outstanding(), nullptr);
    EXPECT_EQ(m_fake.Outstanding()->flags, u_long{UCD_MSG_FLAG_EXPECT_RESPONSE});
}

TEST_F(SNMPSessionGather, ARequestThatCannotBeCreated)
{
    m_fake.createFails = true;

    EXPECT_FALSE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(160)"));
    EXPECT_EQ(m_fake.live.callback, &SNMPSession::Callback) << "set before";
}

TEST_F(SNMPSessionGather, ARequestThatCannotBeSentIsReleased)
{
    m_fake.onSend = [](snmp_pdu&) { return 0; };

    EXPECT_FALSE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, {"snmp_free_pdu(request1)"}}));
}

TEST_F(SNMPSessionGather, ANullCallbackSendsNothing)
{
    EXPECT_FALSE(m_session.Get(m_oid, nullptr, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
    EXPECT_EQ(m_fake.live.callback, nullptr);
}

TEST_F(SNMPSessionGather, ASessionThatIsNotOpenSendsNothing)
{
    OpenBook uninitialised(SNMP_VERSION_1, "public", "", true);
    EXPECT_FALSE(uninitialised.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    m_fake.openSucceeds = false;
    OpenBook refused(SNMP_VERSION_1, "public", "192.0.2.255", true);
    m_fake.ForgetCalls();
    EXPECT_FALSE(refused.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionGather, EveryTurnStartsAfreshAndServesTheSession)
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

TEST_F(SNMPSessionGather, ADueResendShortensTheTurn)
{
    m_fake.nextResend = {0, 1200};

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(1200)));

    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending,
                      {"snmp_sess_select_info(0, {}, 0.005000, 0)",
                       "select(8, {7}, null, null, 0.001200)", "snmp_sess_timeout"}}));
}

TEST_F(SNMPSessionGather, AClosedStreamIsLeftAloneUntilTheTimeIsOver)
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

TEST_F(SNMPSessionGather, TheLastDescriptorThatAnOrdinarySetHolds)
{
    m_fake.descriptor = FD_SETSIZE - 1;

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(turn)));

    EXPECT_EQ(m_fake.TakeCalls(),
              Joined({sending,
                      {"snmp_sess_select_info(0, {}, 0.005000, 0)",
                       "select(1024, {1023}, null, null, 0.005000)", "snmp_sess_timeout"}}));
}

TEST_F(SNMPSessionGather, ADescriptorBeyondIsServedWithALargeSet)
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

        const std::string room = "[room " + std::to_string(row.descriptor + 1) + ":";
        const std::string count = std::to_string(row.descriptor + 1);
        const std::string own = " " + std::to_string(row.descriptor) + "]";
        const std::vector<std::string> once = {
            "snmp_sess_select_info2(0, " + room + "], 0.005000, 0)",
            "netsnmp_large_fd_set_select(" + count + ", " + room + own + ", 0.005000)", row.served};
        EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, once, once}));
        m_fake.DropOutstanding();
    }
}

TEST_F(SNMPSessionGather, WithoutMemoryForALargeSetTheTurnOnlyWaits)
{
    m_fake.descriptor = FD_SETSIZE;
    m_fake.largeSetFails = true;

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

    const std::string waiting = "select(0, null, null, null, 0.005000)";
    EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, {waiting, waiting}}));
}

TEST_F(SNMPSessionGather, TheWaitEndsWithTheTurnInWhichItsTimeRunsOut)
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

TEST_F(SNMPSessionGather, TheTimeThatSendingTakesCounts)
{
    m_fake.onSend = [this](snmp_pdu&) {
        m_fake.now += 2 * turn;
        return requestID;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(2 * turn)));

    EXPECT_EQ(m_fake.TakeCalls(), Joined({sending, Turn("snmp_sess_timeout")}))
        << "one turn always: the remaining time is computed after it";
}

TEST_F(SNMPSessionGather, AnEarlyAnswerDoesNotEndTheWait)
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

    ASSERT_EQ(s_received.size(), 3U) << "one in each turn";
    EXPECT_NE(s_received[0].response, s_received[1].response);
    EXPECT_NE(s_received[1].response, s_received[2].response);
    for (const Received& received : s_received) {
        EXPECT_EQ(received.session, &m_session);
        EXPECT_EQ(received.userData, &m_userData);
        EXPECT_NE(received.response, answer);
    }
    m_session.ReleasePDU(answer);
}

TEST_F(SNMPSessionGather, WithoutAnAnswerItIsStillTrue)
{
    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(s_received, IsEmpty());
}

TEST_F(SNMPSessionGather, AnotherGetReplacesTheContext)
{
    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(0)));
    m_fake.DropOutstanding();
    int other = 0;
    m_fake.onSend = [&](snmp_pdu&) {
        EXPECT_EQ(Context().userData, &other);
        EXPECT_EQ(Context().reqid, 0);
        return requestID + 1;
    };

    EXPECT_TRUE(m_session.Get(m_oid, &Receive, &other, Poco::Timespan(0)));
}

} // namespace

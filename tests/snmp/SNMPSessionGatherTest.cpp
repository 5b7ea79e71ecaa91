// The asynchronous Get, which gathers answers until its time is over. The clock stands still but
// for what select() takes.

#include "tests/snmp/ReceivingSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UVARNETSNMP::SNMPSession;

class SNMPSessionGather : public ReceivingSession
{
protected:
    const OpenBook::RequestContext& Context() const
    {
        return *static_cast<OpenBook::RequestContext*>(m_fake.live.callback_magic);
    }
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
    EXPECT_THAT(AllReceived(), IsEmpty());
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

    m_session.m_initialized = false; // though it is live
    EXPECT_FALSE(m_session.Get(m_oid, &Receive, &m_userData, Poco::Timespan(5, 0)));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
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

// SNMPSessionRequests.cpp, with Net-SNMP faked. Only select() moves the clock.

#include "tests/snmp/helpers/FakeNetSNMP.h"
#include "tests/snmp/helpers/ReceivingSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;
using Operation = snmp_pdu* (SNMPSession::*) (const OID&);

// The synchronous requests: which PDU is sent, and what becomes of it and of the response.

constexpr const char* sysUpTime = "1.3.6.1.2.1.1.3.0";

class SNMPSessionExchange : public ::testing::Test
{
protected:
    SNMPSessionExchange() { m_fake.ForgetCalls(); }

    NameGuard m_name{"Test"};
    FakeNetSNMP m_fake;
    const OID m_oid = SysUpTimeName();
};

struct OperationCase
{
    const char* name;
    Operation operation;
    long version;
    int command;
};

// With the non-repeaters that snmp_pdu_create presets, no GETBULK is ever sent.
const OperationCase operations[] = {
    {"Get, SNMPv1", &SNMPSession::Get, SNMP_VERSION_1, SNMP_MSG_GET},
    {"Get, SNMPv2c", &SNMPSession::Get, SNMP_VERSION_2c, SNMP_MSG_GET},
    {"Get, SNMPv3", &SNMPSession::Get, SNMP_VERSION_3, SNMP_MSG_GET},
    {"GetNext, SNMPv1", &SNMPSession::GetNext, SNMP_VERSION_1, SNMP_MSG_GETNEXT},
    {"GetNext, SNMPv2c", &SNMPSession::GetNext, SNMP_VERSION_2c, SNMP_MSG_GETNEXT},
    {"GetBulk, SNMPv1", &SNMPSession::GetBulk, SNMP_VERSION_1, SNMP_MSG_GETNEXT},
    {"GetBulk, SNMPv2c", &SNMPSession::GetBulk, SNMP_VERSION_2c, SNMP_MSG_GETNEXT},
    {"GetBulk, SNMPv3", &SNMPSession::GetBulk, SNMP_VERSION_3, SNMP_MSG_GETNEXT},
};

TEST_F(SNMPSessionExchange, EveryRequestCarriesErrorIndexTenAndOneNull)
{
    for (const OperationCase& row : operations) {
        SCOPED_TRACE(row.name);
        OpenBook session(row.version, "public", "192.0.2.7", false);
        m_fake.sent.clear();
        m_fake.response = m_fake.MakePDU("response", SNMP_MSG_RESPONSE);

        snmp_pdu* const response = (session.*row.operation)(m_oid);

        EXPECT_EQ(response, m_fake.response);
        ASSERT_EQ(m_fake.sent.size(), 1U);
        EXPECT_EQ(m_fake.sent[0].command, row.command);
        EXPECT_EQ(m_fake.sent[0].errorStatus, 0);
        EXPECT_EQ(m_fake.sent[0].errorIndex, 10);
        EXPECT_THAT(m_fake.sent[0].bindings,
                    ElementsAre(std::string(sysUpTime) + " " + std::to_string(ASN_NULL)));
        session.ReleasePDU(response);
        m_fake.ForgetCalls();
    }
}

TEST_F(SNMPSessionExchange, AGetInOrder)
{
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    session.Get(m_oid);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(160)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
}

TEST_F(SNMPSessionExchange, AGetNextInOrder)
{
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    session.GetNext(m_oid);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(161)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
}

TEST_F(SNMPSessionExchange, ARequestThatCannotBeCreated)
{
    m_fake.createFails = true;
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    EXPECT_EQ(session.Get(m_oid), nullptr);
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(160)"));
    EXPECT_EQ(session.GetNext(m_oid), nullptr);
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(161)"));
    EXPECT_EQ(session.GetBulk(m_oid), nullptr);
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(165)"));
}

TEST_F(SNMPSessionExchange, OutcomesOfAnExchange)
{
    struct Case
    {
        const char* name;
        long errorStatus;
        int status;
        bool responds;
        bool returned;
    };
    const Case cases[] = {
        {"a response", SNMP_ERR_NOERROR, STAT_SUCCESS, true, true},
        {"a response with an error-status", SNMP_ERR_NOSUCHNAME, STAT_SUCCESS, true, true},
        {"success, and yet no response", 0, STAT_SUCCESS, false, false},
        {"a time-out", 0, STAT_TIMEOUT, false, false},
        {"an error", 0, STAT_ERROR, false, false},
        {"a time-out with a response", 0, STAT_TIMEOUT, true, false},
        {"an error with a response", 0, STAT_ERROR, true, false},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
        m_fake.status = row.status;
        m_fake.response = row.responds ? m_fake.MakePDU("response", SNMP_MSG_RESPONSE) : nullptr;
        if (row.responds) {
            m_fake.response->errstat = row.errorStatus;
        }
        m_fake.ForgetCalls();

        snmp_pdu* const response = session.Get(m_oid);

        const std::vector<std::string> calls = m_fake.TakeCalls();
        EXPECT_EQ(calls.size(), row.responds && !row.returned ? 4U : 3U);
        EXPECT_EQ(calls.back() == "snmp_free_pdu(response)", row.responds && !row.returned);
        EXPECT_EQ(response, row.returned ? m_fake.response : nullptr);
        if (response != nullptr) {
            EXPECT_EQ(response->errstat, row.errorStatus);
            session.ReleasePDU(response);
        }
        m_fake.ForgetCalls();
    }
}

TEST_F(SNMPSessionExchange, ASessionThatIsNotOpenSendsNothing)
{
    struct Case
    {
        const char* name;
        const char* library;
        const char* host;
        bool opens;
    };
    const Case cases[] = {
        {"library not set up", "", "192.0.2.7", true},
        {"no host", "Test", "", true},
        {"refused by Net-SNMP", "Test", "192.0.2.7", false},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const NameGuard name(row.library);
        m_fake.openSucceeds = row.opens;
        OpenBook session(SNMP_VERSION_2c, "public", row.host, false);
        m_fake.ForgetCalls();

        EXPECT_EQ(session.Get(m_oid), nullptr);
        EXPECT_EQ(session.GetNext(m_oid), nullptr);
        EXPECT_EQ(session.GetBulk(m_oid), nullptr);
        EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
    }
}

TEST_F(SNMPSessionExchange, ASessionThatOnlyTheFillingOpenedSendsNothing)
{
    // A subclass can bring this about: a live session in an object that is not initialised.
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    session.m_initialized = false;
    m_fake.ForgetCalls();

    EXPECT_EQ(session.Get(m_oid), nullptr);
    EXPECT_EQ(session.GetNext(m_oid), nullptr);
    EXPECT_EQ(session.GetBulk(m_oid), nullptr);
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionExchange, ReleasingAPDUFreesItAndIgnoresNull)
{
    OpenBook session(SNMP_VERSION_1, "public", "", false);

    session.ReleasePDU(nullptr);
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());

    session.ReleasePDU(m_fake.MakePDU("response", SNMP_MSG_RESPONSE));
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_free_pdu(response)"));
}

// GetBulk, which sends a GETNEXT in nearly every case.

class SNMPSessionGetBulk : public ::testing::Test
{
protected:
    SNMPSessionGetBulk() { m_fake.ForgetCalls(); }

    NameGuard m_name{"Test"};
    FakeNetSNMP m_fake;
    const OID m_oid = SysUpTimeName();
};

TEST_F(SNMPSessionGetBulk, OfVersion1IsAGetNext)
{
    OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    session.GetBulk(m_oid);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(161)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
}

TEST_F(SNMPSessionGetBulk, PresetOtherwiseThanZeroEndsAsAGetNext)
{
    for (const long preset : {-1L, 1L, 10L}) {
        OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
        m_fake.ForgetCalls();
        m_fake.created = 0;
        m_fake.presetNonRepeaters = preset;
        m_fake.response = m_fake.MakePDU("response", SNMP_MSG_RESPONSE);

        snmp_pdu* const response = session.GetBulk(m_oid);

        EXPECT_EQ(response, m_fake.response);
        EXPECT_THAT(m_fake.TakeCalls(),
                    ElementsAre("snmp_pdu_create(165)", "snmp_pdu_create(161)",
                                "snmp_add_null_var(request2, 1.3.6.1.2.1.1.3.0)",
                                "snmp_sess_synch_response(request2)", "snmp_free_pdu(request1)"))
            << preset;
        session.ReleasePDU(response);
        m_fake.ForgetCalls();
    }
}

TEST_F(SNMPSessionGetBulk, PresetToZeroIsSent)
{
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();
    m_fake.presetNonRepeaters = 0;
    m_fake.response = m_fake.MakePDU("response", SNMP_MSG_RESPONSE);

    snmp_pdu* const response = session.GetBulk(m_oid);

    EXPECT_EQ(response, m_fake.response);
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(165)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
    ASSERT_EQ(m_fake.sent.size(), 1U);
    EXPECT_EQ(m_fake.sent[0].errorStatus, 0);
    EXPECT_EQ(m_fake.sent[0].errorIndex, 10);
    session.ReleasePDU(response);
    m_fake.ForgetCalls();
}

TEST_F(SNMPSessionGetBulk, AsksTheTemplateForTheVersion)
{
    OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();
    m_fake.live.version = SNMP_VERSION_2c;

    session.GetBulk(m_oid);

    EXPECT_EQ(m_fake.TakeCalls().front(), "snmp_pdu_create(161)");
}

// The asynchronous Get up to its wait, for which see SNMPSessionWaitTest.cpp.

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

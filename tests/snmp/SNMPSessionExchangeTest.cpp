// The synchronous requests: which PDU is sent, and what becomes of it and of the response.

#include "tests/snmp/FakeNetSNMP.h"

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
    // What a subclass can make: a live session in an object that does not count as initialised.
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

} // namespace

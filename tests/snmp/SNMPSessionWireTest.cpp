// The session with the real Net-SNMP, against agents of the test's own on the loopback interface:
// the octets that are sent, and the synchronous requests.

#include "tests/snmp/SNMPSessionLoopback.h"
#include "tests/snmp/Wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/socket.h>

#include <map>
#include <string>

namespace {

using ::testing::IsEmpty;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;

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

} // namespace

// SNMPSessionCallback.cpp, with Net-SNMP faked: which events reach the caller's function.

#include "tests/snmp/helpers/ReceivingSession.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using UVARNETSNMP::SNMPSession;

class SNMPSessionCallback : public ReceivingSession
{};

TEST_F(SNMPSessionCallback, WhatTheCallbackDelivers)
{
    struct Case
    {
        const char* name;
        int operation;
        int requestID;
        bool hasPDU;
        bool hasContext;
        bool hasCallback;
        bool cloneFails;
        bool delivered;
        bool cloned;
    };
    const int received = NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE;
    const int id = requestID;
    const Case cases[] = {
        {"an answer", received, id, true, true, true, false, true, true},
        {"no context", received, id, true, false, true, false, false, false},
        {"another request's", received, id + 1, true, true, true, false, false, false},
        {"no PDU", received, id, false, true, true, false, false, false},
        {"a time-out", NETSNMP_CALLBACK_OP_TIMED_OUT, id, true, true, true, false, false, false},
        {"a failed send", NETSNMP_CALLBACK_OP_SEND_FAILED, id, true, true, true, false, false,
         false},
        {"a connection", NETSNMP_CALLBACK_OP_CONNECT, id, true, true, true, false, false, false},
        {"a disconnection", NETSNMP_CALLBACK_OP_DISCONNECT, id, true, true, true, false, false,
         false},
        {"a resend", NETSNMP_CALLBACK_OP_RESEND, id, true, true, true, false, false, false},
        {"a security error", NETSNMP_CALLBACK_OP_SEC_ERROR, id, true, true, true, false, false,
         false},
        {"no function", received, id, true, true, false, false, false, false},
        {"no memory for a copy", received, id, true, true, true, true, false, true},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        OpenBook::RequestContext context = {&m_session, requestID,
                                            row.hasCallback ? &Receive : nullptr, &m_userData};
        snmp_pdu* const pdu = m_fake.MakePDU("answer", SNMP_MSG_RESPONSE);
        pdu->errstat = SNMP_ERR_NOSUCHNAME;
        m_fake.cloneFails = row.cloneFails;

        EXPECT_EQ(SNMPSession::Callback(row.operation, &m_fake.live, row.requestID,
                                        row.hasPDU ? pdu : nullptr,
                                        row.hasContext ? &context : nullptr),
                  0);

        EXPECT_EQ(m_fake.TakeCalls(), row.cloned
                                          ? std::vector<std::string>{"snmp_clone_pdu(answer)"}
                                          : std::vector<std::string>{});
        ASSERT_EQ(AllReceived().size(), row.delivered ? 1U : 0U);
        if (row.delivered) {
            EXPECT_EQ(AllReceived()[0].session, &m_session);
            EXPECT_EQ(AllReceived()[0].userData, &m_userData);
            EXPECT_NE(AllReceived()[0].response, pdu);
            EXPECT_EQ(AllReceived()[0].response->errstat, SNMP_ERR_NOSUCHNAME);
        }
        ReleaseReceived();
        m_session.ReleasePDU(pdu); // still the caller's
        m_fake.ForgetCalls();
    }
}

TEST_F(SNMPSessionCallback, TheCallbackLooksAtTheRequestIDAndNotAtTheTypeOrTheSender)
{
    OpenBook::RequestContext context = {&m_session, requestID, &Receive, nullptr};
    const int commands[] = {SNMP_MSG_RESPONSE, SNMP_MSG_GET, SNMP_MSG_TRAP2, SNMP_MSG_REPORT};
    for (const int command : commands) {
        snmp_pdu* const pdu = m_fake.MakePDU("answer", command);

        SNMPSession::Callback(NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE, nullptr, requestID, pdu,
                              &context);

        EXPECT_EQ(AllReceived().back().response->command, command);
        EXPECT_EQ(AllReceived().back().userData, nullptr);
        m_session.ReleasePDU(pdu);
    }
    EXPECT_EQ(AllReceived().size(), 4U);
}

} // namespace

#pragma once

#include "tests/snmp/helpers/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// The identifier that the fake gives a request.
constexpr int requestID = 4711;

/// The longest wait of one turn, in microseconds.
constexpr Poco::Timespan::TimeDiff turn = 5000;

/// An open session, and what its callback received, in order.
class ReceivingSession : public ::testing::Test
{
protected:
    ReceivingSession() { m_fake.ForgetCalls(); }
    ~ReceivingSession() override
    {
        ReleaseReceived();
        m_fake.ForgetCalls();
    }

    struct Received
    {
        UVARNETSNMP::SNMPSession* session;
        void* userData;
        snmp_pdu* response;
    };
    static std::vector<Received>& AllReceived()
    {
        static std::vector<Received> all;
        return all;
    }
    /// The callback of the requests.
    static void Receive(UVARNETSNMP::SNMPSession& session, void* userData, snmp_pdu* response)
    {
        AllReceived().push_back({&session, userData, response});
    }
    void ReleaseReceived()
    {
        for (const Received& received : AllReceived()) {
            m_session.ReleasePDU(received.response);
        }
        AllReceived().clear();
    }

    /// The calls of an asynchronous Get until its wait begins.
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
    const UVARNETSNMP::OID m_oid = SysUpTimeName();
    int m_userData = 0;
};

// Each allocation in the library's code and each call to Net-SNMP that can fail fails in turn.
// Nothing may crash or leak (LeakSanitizer checks that), and every object must be in a state that
// its class documents.

#include "tests/snmp/helpers/FaultPoints.h"
#include "tests/snmp/helpers/LoopbackAgent.h"
#include "tests/snmp/helpers/SNMPSessionLoopback.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using UVARNETSNMP::ByteString;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;

/// Long enough for an answer on the loopback interface to come, on a busy machine too.
const Poco::Timespan aMoment(0, 250000);

/// A callback that allocates nothing, as exceptions may not pass through Net-SNMP. What follows an
/// answer is only waiting, whose calls repeat, so they are no longer counted.
void countAndRelease(SNMPSession& session, void* number, snmp_pdu* response)
{
    ++*static_cast<int*>(number);
    session.ReleasePDU(response);
    FaultPoints::stopCounting();
}

class Probe : public Session
{
public:
    using Session::Session;
    using SNMPSession::m_session;
};

void expectNoCopiesIn(const netsnmp_session& session)
{
    EXPECT_EQ(session.community, nullptr);
    EXPECT_EQ(session.contextEngineID, nullptr);
    EXPECT_EQ(session.contextName, nullptr);
    EXPECT_EQ(session.securityEngineID, nullptr);
    EXPECT_EQ(session.securityName, nullptr);
    EXPECT_EQ(session.securityAuthProto, nullptr);
    EXPECT_EQ(session.securityPrivProto, nullptr);
}

/// Calls `road` once for each fault point, which then fails, and a last time without a failure.
/// Returns the names of the functions that failed. `road` asks FaultPoints::failed() what has
/// failed and checks its own result.
std::set<std::string> failEachInTurn(const std::function<void()>& road)
{
    constexpr int most = 2000; // more than any road has
    std::set<std::string> functions;
    for (int due = 1; due < most; ++due) {
        const FaultPoints points(due);
        try {
            road();
            EXPECT_NE(FaultPoints::failed().substr(0, 12), "operator new")
                << "the exception was kept inside";
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(FaultPoints::failed().substr(0, 12), "operator new");
        }
        const std::string failed = FaultPoints::failed();
        if (failed.empty()) {
            return functions;
        }
        functions.insert(failed);
    }
    ADD_FAILURE() << "the road has no end";
    return functions;
}

TEST_F(SNMPSessionLoopback, EachFailureOnTheRoadOfAWorker)
{
    LoopbackAgent agent(&Answer);
    const std::string host = agent.Host();
    const std::string community = "public";
    int withAnswer = 0;
    const std::set<std::string> functions = failEachInTurn([&] {
        const OID name("1.3.6.1.2.1.1.3.0");
        EXPECT_EQ(name.valid(), name.oidptr() != nullptr);
        EXPECT_EQ(name.oidsize(), name.valid() ? 9U : 0U);
        Probe session(SNMP_VERSION_1, community, host, true);
        EXPECT_TRUE(session.m_initialized);
        if (session.m_sessionHandle == nullptr) {
            EXPECT_EQ(session.m_sessionPtr, nullptr);
        }
        expectNoCopiesIn(session.m_session);
        int answers = 0;
        const bool sent = session.Get(name, &countAndRelease, &answers, aMoment);
        if (session.m_sessionPtr == nullptr) {
            EXPECT_FALSE(sent);
        }
        if (!sent) {
            EXPECT_EQ(answers, 0);
        }
        const std::string failed = FaultPoints::failed();
        if (failed.empty() || failed == "snmp_sess_select_info" || failed == "select" ||
            failed == "snmp_sess_read" || failed == "snmp_sess_transport") {
            EXPECT_TRUE(sent) << failed;
            EXPECT_EQ(answers, 1) << "the next turn makes good for it: " << failed;
        }
        withAnswer += answers;
    });
    EXPECT_GT(withAnswer, 0);
    for (const char* name :
         {"malloc", "netsnmp_malloc", "snmp_parse_oid", "snmp_sess_open", "snmp_sess_session",
          "snmp_sess_transport", "snmp_pdu_create", "snmp_add_null_var", "snmp_sess_send",
          "snmp_sess_select_info", "select", "snmp_sess_read", "snmp_clone_pdu", "operator new",
          "operator new[]"}) {
        EXPECT_EQ(functions.count(name), 1U) << name << " was never called";
    }
}

TEST_F(SNMPSessionLoopback, EachFailureOfASynchronousRequest)
{
    LoopbackAgent agent(&Answer);
    const std::string host = agent.Host();
    const std::string community = "public";
    const std::set<std::string> functions = failEachInTurn([&] {
        Probe session(SNMP_VERSION_2c, community, host, false);
        for (const auto request :
             {static_cast<snmp_pdu* (SNMPSession::*) (const OID&)>(&SNMPSession::Get),
              &SNMPSession::GetNext, &SNMPSession::GetBulk}) {
            snmp_pdu* const response = (session.*request)(m_oid);
            if (FaultPoints::failed().empty()) {
                EXPECT_NE(response, nullptr);
            }
            session.ReleasePDU(response);
        }
    });
    EXPECT_EQ(functions.count("snmp_sess_synch_response"), 1U);
    EXPECT_EQ(functions.count("snmp_pdu_create"), 1U);
}

TEST_F(SNMPSessionLoopback, EachFailureWhileCredentialsAreFilledIn)
{
    const auto bytes = [](const char* text) { return SNMPSession::snmpstring(text); };
    const SNMPSecurity security(std::map<std::string, ByteString>{
        {"securityname", bytes("user")},
        {"contextname", bytes("context")},
        {"authprotocol", bytes("SHA")},
        {"privprotocol", bytes("AES")},
        {"authpassphrase", bytes("authentic-phrase")},
        {"privpassphrase", bytes("private-phrase")},
        {"securityengid", bytes("8000000001020304")},
        {"contextengid", bytes("8000000001020304")},
        {"securitylevel", bytes("AuthPriv")},
    });
    const std::string host = "127.0.0.1:9";
    const std::set<std::string> functions = failEachInTurn([&] {
        Probe session(SNMP_VERSION_3, security, host, false);
        EXPECT_TRUE(session.m_initialized);
        expectNoCopiesIn(session.m_session);
    });
    for (const char* name : {"malloc", "snmp_duplicate_objid", "snmp_hex_to_binary", "generate_Ku",
                             "snmp_sess_open", "operator new", "operator new[]"}) {
        EXPECT_EQ(functions.count(name), 1U) << name << " was never called";
    }
}

TEST_F(SNMPSessionLoopback, EachFailureOfAnEngineID)
{
    const std::string text = "8000000001020304";
    const std::set<std::string> functions = failEachInTurn([&] {
        unsigned char* engineID = nullptr;
        std::size_t length = 7;
        const bool made = SNMPSession::MakeEngineID(text, &engineID, &length);
        EXPECT_EQ(made, FaultPoints::failed().empty());
        EXPECT_EQ(engineID != nullptr, made);
        EXPECT_EQ(length, made ? 8U : 7U);
        std::free(engineID);
    });
    EXPECT_EQ(functions, (std::set<std::string>{"malloc", "snmp_hex_to_binary"}));
}

TEST_F(SNMPSessionLoopback, ThreadsOpenTheirSessionsOneAfterTheOther)
{
    // Two threads that open at once can leave a lock of Net-SNMP's locked for ever.
    std::vector<std::thread> threads;
    threads.reserve(16);
    for (int i = 0; i < 16; ++i) {
        threads.emplace_back([] {
            for (int session = 0; session < 50; ++session) {
                const Probe probe(SNMP_VERSION_1, "public", "127.0.0.1:9", true);
                EXPECT_NE(probe.m_sessionPtr, nullptr);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(FaultPoints::sessionsWereOpenedAtOnce());
}

} // namespace

// Requests that end at a deadline, with the real Net-SNMP, against agents of the test's own on the
// loopback interface.

#include "snmp/SNMPTimedSession.h"
#include "tests/snmp/helpers/SNMPSessionLoopback.h"
#include "tests/snmp/helpers/Wire.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/resource.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

using namespace std::chrono_literals;
using UVARNETSNMP::ByteString;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPTimedSession;

const SNMPSecurity publicCommunity(std::map<std::string, std::string>{{"community", "public"}});

class SNMPTimedSessionTest : public ::testing::Test
{
protected:
    static SNMPTimedSession::Time in(std::chrono::milliseconds time)
    {
        return std::chrono::steady_clock::now() + time;
    }

    /// The TimeTicks of the answer, -1 without one.
    long ask(SNMPTimedSession& session, std::chrono::milliseconds time)
    {
        snmp_pdu* const answer = session.Ask(SNMP_MSG_GETNEXT, {m_oid}, in(time));
        const variable_list* const binding = answer == nullptr ? nullptr : answer->variables;
        const long ticks =
            binding == nullptr || binding->type != ASN_TIMETICKS ? -1 : *binding->val.integer;
        session.ReleasePDU(answer);
        return ticks;
    }

    const OID m_oid{"1.3.6.1.2.1.1.3.0"};
};

TEST_F(SNMPTimedSessionTest, AnAnswerAndThenAnother)
{
    LoopbackAgent agent(&Answer);
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 1000000);

    EXPECT_FALSE(session.Heard());
    EXPECT_EQ(ask(session, 5s), 42);
    EXPECT_TRUE(session.Heard());
    EXPECT_EQ(ask(session, 5s), 42);
    EXPECT_EQ(agent.Stop().size(), 2U);
}

TEST_F(SNMPTimedSessionTest, SeveralNamesGoInOneRequest)
{
    for (const long version : {long{SNMP_VERSION_1}, long{SNMP_VERSION_2c}}) {
        LoopbackAgent agent(&Answer);
        SNMPTimedSession session(version, publicCommunity, agent.Host(), 1000000);

        session.ReleasePDU(session.Ask(SNMP_MSG_GETNEXT, {m_oid, m_oid}, in(5s)));

        const auto& requests = agent.Stop();
        ASSERT_EQ(requests.size(), 1U);
        const Wire::Message request = Wire::Decode(requests[0]);
        EXPECT_EQ(request.version, version);
        EXPECT_EQ(request.community, "public");
        EXPECT_EQ(request.type, Wire::getNext);
        EXPECT_EQ(request.errorStatus, 0);
        EXPECT_EQ(request.bindings, Wire::SysUpTimeNull() + Wire::SysUpTimeNull());
    }
}

TEST_F(SNMPTimedSessionTest, ASilentAgentCostsTheTimeThatItWasGiven)
{
    LoopbackAgent agent;
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 60000);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(ask(session, 300ms), -1);

    EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    EXPECT_FALSE(session.Heard());
    const auto& requests = agent.Stop();
    EXPECT_GE(requests.size(), 2U) << "it is sent again";
    EXPECT_LE(requests.size(), 6U);
    for (const std::string& request : requests) {
        EXPECT_EQ(request, requests[0]);
    }
}

TEST_F(SNMPTimedSessionTest, NothingIsSentAfterASilence)
{
    LoopbackAgent agent;
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 1000000);

    EXPECT_EQ(ask(session, 50ms), -1);
    EXPECT_EQ(ask(session, 50ms), -1);

    EXPECT_EQ(agent.Stop().size(), 1U);
}

TEST_F(SNMPTimedSessionTest, AnAnswerToTheResend)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t number) {
        if (number > 0) {
            self.Reply(Wire::Response(request, 7));
        }
    });
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 20000);

    EXPECT_EQ(ask(session, 5s), 7);
}

TEST_F(SNMPTimedSessionTest, AnAnswerFromAnotherAddressDoesNotCount)
{
    std::unique_ptr<LoopbackSocket> other;
    try {
        other = std::make_unique<LoopbackSocket>("127.0.0.2");
    } catch (const std::system_error&) {
        GTEST_SKIP() << "NOT TESTED: the loopback interface has no address but 127.0.0.1";
    }
    LoopbackAgent agent([&](const LoopbackAgent& self, const std::string& request, size_t number) {
        self.ReplyFrom(*other, Wire::Response(request, 1));
        if (number > 2) {
            self.Reply(Wire::Response(request, 2));
        }
    });
    SNMPTimedSession silent(SNMP_VERSION_1, publicCommunity, agent.Host(), 10000000);
    EXPECT_EQ(ask(silent, 100ms), -1);
    EXPECT_FALSE(silent.Heard());

    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 50000);
    EXPECT_EQ(ask(session, 5s), 2);
    EXPECT_TRUE(session.Heard());
}

TEST_F(SNMPTimedSessionTest, AnotherRequestIdentifierAndOtherPDUsDoNotCount)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        Wire::Message other = Wire::Decode(Wire::Response(request, 1));
        other.requestID.back() = static_cast<char>(other.requestID.back() ^ 1);
        self.Reply(Wire::Encode(other));
        self.Reply(request);
        self.Reply("not an SNMP message");
        self.Reply("");
    });
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 1000000);

    EXPECT_EQ(ask(session, 100ms), -1);
    EXPECT_FALSE(session.Heard());
}

TEST_F(SNMPTimedSessionTest, AnErrorStatusIsAnAnswer)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        Wire::Message message = Wire::Decode(request);
        message.type = Wire::response;
        message.errorStatus = SNMP_ERR_NOSUCHNAME;
        message.errorIndex = 1;
        self.Reply(Wire::Encode(message));
    });
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 1000000);

    snmp_pdu* const answer = session.Ask(SNMP_MSG_GETNEXT, {m_oid}, in(5s));

    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer->errstat, SNMP_ERR_NOSUCHNAME);
    EXPECT_EQ(answer->errindex, 1);
    session.ReleasePDU(answer);
    EXPECT_TRUE(session.Heard());
}

TEST_F(SNMPTimedSessionTest, ASilentEngineOfSNMPv3CostsTheTimeThatItWasGiven)
{
    LoopbackAgent agent;
    const SNMPSecurity user(std::map<std::string, std::string>{{"securityname", "nobody"},
                                                               {"securitylevel", "NoAuthNoPriv"}});
    SNMPTimedSession session(SNMP_VERSION_3, user, agent.Host(), 50000);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(ask(session, 200ms), -1);
    EXPECT_EQ(ask(session, 10s), -1);

    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    EXPECT_GE(agent.Stop().size(), 2U);
}

/// The last sub-identifiers of the counters that reports carry (RFC 3414, usmStats).
enum Counter : char
{
    notInTimeWindows = 2,
    unknownUserNames = 3,
    unknownEngineIDs = 4
};

/// A report of SNMPv3 to the request whose message identifier it repeats.
std::string reportTo(const std::string& request, const std::string& engine, const std::string& user,
                     Counter counter)
{
    // SEQUENCE, version, SEQUENCE, identifier: Net-SNMP's lengths are short here, or 0x82 and two.
    const auto skip = [&request](std::size_t at) {
        return at + 2 +
               (static_cast<unsigned char>(request.at(at + 1)) & 0x7fU) *
                   (static_cast<unsigned char>(request.at(at + 1)) >> 7U);
    };
    const std::size_t identifier = skip(skip(0) + 3);
    const std::string content =
        request.substr(identifier + 2, static_cast<unsigned char>(request.at(identifier + 1)));
    using Wire::Field;
    constexpr unsigned char integer = 2;
    constexpr unsigned char octets = 4;
    constexpr unsigned char sequence = 0x30;
    const std::string zero = Field(integer, std::string(1, '\0'));
    const std::string largest("\x40\0", 2);
    const std::string global =
        Field(sequence, Field(integer, content) + Field(integer, largest) +
                            Field(octets, std::string(1, '\0')) + Field(integer, "\x03"));
    const std::string security =
        Field(octets, Field(sequence, Field(octets, engine) + zero + zero + Field(octets, user) +
                                          Field(octets, "") + Field(octets, "")));
    const std::string name = std::string("\x2b\x06\x01\x06\x03\x0f\x01\x01") + char(counter) + '\0';
    const std::string binding = Field(sequence, Field(6, name) + Field(0x41, "\x01"));
    const std::string report = Field(0xa8, zero + zero + zero + Field(sequence, binding));
    return Field(sequence, Field(integer, "\x03") + global + security +
                               Field(sequence, Field(octets, engine) + Field(octets, "") + report));
}

std::string unknownEngine(const std::string& request, const std::string& engine)
{
    return reportTo(request, engine, "", unknownEngineIDs);
}

const std::string ownEngine("\x80\x00\x1f\x88\x04own", 8);
const std::string foreignEngine("\x80\x00\x1f\x88\x04other", 10);

const SNMPSecurity someUser(std::map<std::string, std::string>{{"securityname", "nobody"},
                                                               {"securitylevel", "NoAuthNoPriv"}});

bool contains(const std::string& datagram, const std::string& octets)
{
    return datagram.find(octets) != std::string::npos;
}

TEST_F(SNMPTimedSessionTest, TheEngineIDIsTheOneThatTheAgentReports)
{
    LoopbackAgent agent([](const LoopbackAgent& self, const std::string& request, size_t) {
        self.Reply(unknownEngine(request, ownEngine));
    });
    SNMPTimedSession session(SNMP_VERSION_3, someUser, agent.Host(), 1000000);

    EXPECT_EQ(ask(session, 5s), -1) << "it refuses the request too";

    EXPECT_TRUE(session.Heard());
    const auto& requests = agent.Stop();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_FALSE(contains(requests[0], ownEngine));
    EXPECT_TRUE(contains(requests[1], ownEngine));
}

TEST_F(SNMPTimedSessionTest, AReportOfTheAgentRefusesTheRequestUnlessItTellsTheTime)
{
    for (const Counter counter : {unknownUserNames, notInTimeWindows}) {
        SCOPED_TRACE(int(counter));
        LoopbackAgent agent(
            [&](const LoopbackAgent& self, const std::string& request, size_t number) {
                self.Reply(number == 0 ? unknownEngine(request, ownEngine)
                                       : reportTo(request, ownEngine, "nobody", counter));
            });
        SNMPTimedSession session(SNMP_VERSION_3, someUser, agent.Host(), 50000);

        EXPECT_EQ(ask(session, 300ms), -1);

        EXPECT_TRUE(session.Heard());
        const std::size_t requests = agent.Stop().size();
        if (counter == notInTimeWindows) {
            EXPECT_GT(requests, 2U) << "it is sent again, with the time";
        } else {
            EXPECT_EQ(requests, 2U);
        }
    }
}

TEST_F(SNMPTimedSessionTest, AReportFromAnotherAddressDoesNotCount)
{
    std::unique_ptr<LoopbackSocket> other;
    try {
        other = std::make_unique<LoopbackSocket>("127.0.0.2");
    } catch (const std::system_error&) {
        GTEST_SKIP() << "NOT TESTED: the loopback interface has no address but 127.0.0.1";
    }
    for (const bool agentReports : {false, true}) {
        SCOPED_TRACE(agentReports);
        LoopbackAgent agent(
            [&](const LoopbackAgent& self, const std::string& request, size_t number) {
                if (number == 0) {
                    self.ReplyFrom(*other, unknownEngine(request, foreignEngine));
                } else if (agentReports) {
                    self.Reply(unknownEngine(request, ownEngine));
                }
            });
        SNMPTimedSession session(SNMP_VERSION_3, someUser, agent.Host(), 50000);
        const auto start = std::chrono::steady_clock::now();

        EXPECT_EQ(ask(session, agentReports ? 5000ms : 300ms), -1);

        EXPECT_EQ(session.Heard(), agentReports);
        const auto& requests = agent.Stop();
        EXPECT_GE(requests.size(), 2U) << "it is sent anew";
        EXPECT_EQ(contains(requests.back(), ownEngine), agentReports);
        for (const std::string& request : requests) {
            EXPECT_FALSE(contains(request, foreignEngine));
        }
        if (!agentReports) {
            EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
        }
    }
}

/// While it exists, the process can open nothing more.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &m_limit);
        const rlimit none = {0, m_limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_limit); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_limit = {};
};

TEST_F(SNMPTimedSessionTest, WithoutADescriptorItIsNotOpen)
{
    if (dlsym(RTLD_DEFAULT, "__ubsan_handle_out_of_bounds") != nullptr) {
        GTEST_SKIP() << "NOT TESTED: UndefinedBehaviorSanitizer needs descriptors of its own";
    }
    const LoopbackAgent agent(&Answer);
    const auto open = [&] {
        return std::make_unique<SNMPTimedSession>(SNMP_VERSION_1, publicCommunity, agent.Host(),
                                                  1000000);
    };
    EXPECT_TRUE(open()->Open());
    std::unique_ptr<SNMPTimedSession> session;
    {
        const NoDescriptors none;
        session = open();
    }
    EXPECT_FALSE(session->Open());
    EXPECT_EQ(ask(*session, 5s), -1);
    EXPECT_FALSE(session->Heard());
}

TEST_F(SNMPTimedSessionTest, WhatIsNoAddressIsNeverAsked)
{
    LoopbackAgent agent(&Answer);
    const std::string port = agent.Host().substr(agent.Host().rfind(':'));
    SNMPTimedSession name(SNMP_VERSION_1, publicCommunity, "localhost" + port, 1000000);
    SNMPTimedSession empty(SNMP_VERSION_1, publicCommunity, "", 1000000);

    EXPECT_EQ(ask(name, 100ms), -1);
    EXPECT_EQ(ask(empty, 100ms), -1);

    EXPECT_EQ(agent.Stop().size(), 0U);
}

TEST_F(SNMPTimedSessionTest, ARequestThatCannotBeSentEndsAtOnce)
{
    LoopbackAgent agent(&Answer);
    SNMPTimedSession session(SNMP_VERSION_1, publicCommunity, agent.Host(), 1000000);
    const std::vector<OID> moreThanADatagramHolds(10000, m_oid);
    const auto start = std::chrono::steady_clock::now();

    EXPECT_EQ(session.Ask(SNMP_MSG_GETNEXT, moreThanADatagramHolds, in(60s)), nullptr);

    EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
    EXPECT_EQ(agent.Stop().size(), 0U);
}

} // namespace

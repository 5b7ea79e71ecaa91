// The end of an answer's road. The callback makes the sender of a response a responder; all workers
// add to one set of responders. Both survive a mutex that fails and memory that runs out.

#include "snmp/SNMPSession.h"
#include "tests/app/helpers/FakeNetwork.h"
#include "tests/app/helpers/TestApp.h"
#include "tests/support/CountedNew.h"
#include "tests/support/FailingMutex.h"

#include <Poco/AutoPtr.h>
#include <Poco/Bugcheck.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::StartsWith;

int unexpectedErrors = 0;

} // namespace

/// POCO's hook for errors that cannot be thrown. POCO's own does nothing in a release build.
void Poco::Bugcheck::unexpected(const char*, int)
{
    ++unexpectedErrors;
}

namespace {

using Responders = std::set<std::string>;

// The callback.

/// A record as the UDP transport of a Net-SNMP without IPv6 makes it: the sender's address at the
/// head, the rest filled with ones so that no other part of it can be taken for an address.
std::array<unsigned char, 36> recordFrom(const char* address)
{
    sockaddr_in sender = {};
    sender.sin_family = AF_INET;
    sender.sin_port = htons(161);
    EXPECT_EQ(inet_pton(AF_INET, address, &sender.sin_addr), 1);

    std::array<unsigned char, 36> record;
    record.fill(0xff);
    std::memcpy(record.data(), &sender, sizeof sender);
    return record;
}

class Callback : public testing::Test
{
protected:
    /// Hands a response to the application as its library would, and returns the responders.
    Responders respond(void* transportData, std::size_t length)
    {
        snmp_pdu pdu = {};
        pdu.transport_data = transportData;
        pdu.transport_data_length = static_cast<int>(length);
        SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
        return application->m_responders;
    }

    FakeNetwork network;
    Poco::AutoPtr<TestApp> application{new TestApp};
    const std::unique_ptr<UVARNETSNMP::SNMPSession> session =
        std::make_unique<UVARNETSNMP::SNMPSession>(0, "public", "192.0.2.255", true);
};

TEST_F(Callback, AddsTheSender)
{
    auto record = recordFrom("192.0.2.7");
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, IgnoresAResponseWithoutASender)
{
    EXPECT_EQ(respond(nullptr, 36), Responders{});
}

TEST_F(Callback, IgnoresAMissingContext)
{
    auto record = recordFrom("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, nullptr, &pdu);
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(Callback, IgnoresAMissingPdu)
{
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), nullptr);
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(Callback, ReadsOnlyTheSenderSoAnErrorStatusCountsAsAnAnswer)
{
    auto record = recordFrom("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.errstat = SNMP_ERR_NOSUCHNAME;
    pdu.command = SNMP_MSG_TRAP;
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.7"});
}

TEST_F(Callback, LeavesTheResponseAllocatedAndUnchanged)
{
    auto record = recordFrom("192.0.2.7");
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    const snmp_pdu before = pdu;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(),
                                   &pdu); // the fake fails on a release
    EXPECT_EQ(pdu.transport_data, before.transport_data);
    EXPECT_EQ(pdu.transport_data_length, before.transport_data_length);
}

class CallbackContents : public Callback
{
protected:
    CallbackContents()
    {
        pdu.community = static_cast<u_char*>(std::calloc(1, 6));
        pdu.community_len = 6;
        snmp_add_null_var(&pdu, std::array<oid, 2>{1, 3}.data(), 2);
    }
    ~CallbackContents() override
    {
        snmp_free_varbind(pdu.variables);
        std::free(pdu.community);
    }

    snmp_pdu pdu = {};
};

TEST_F(CallbackContents, AreReleasedOnceTheSenderIsTaken)
{
    auto record = recordFrom("192.0.2.7");
    pdu.transport_data = record.data();
    pdu.transport_data_length = 36;
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_EQ(pdu.variables, nullptr);
    EXPECT_EQ(pdu.community, nullptr);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.7"});
}

TEST_F(CallbackContents, AreKeptInAResponseWithoutASender)
{
    SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu);
    EXPECT_NE(pdu.variables, nullptr);
    EXPECT_NE(pdu.community, nullptr);
}

TEST_F(Callback, ExtremeAddressesAreTextLikeAllOthers)
{
    for (const char* address : {"0.0.0.0", "255.255.255.255", "198.51.100.1"}) {
        auto record = recordFrom(address);
        application->m_responders.clear();
        EXPECT_EQ(respond(record.data(), record.size()), Responders{address});
    }
}

TEST_F(Callback, AnAgentThatAnswersTwiceIsListedOnce)
{
    auto record = recordFrom("192.0.2.7");
    respond(record.data(), record.size());
    EXPECT_EQ(respond(record.data(), record.size()), Responders{"192.0.2.7"});
}

TEST_F(Callback, TwoAgentsAreBothListed)
{
    auto first = recordFrom("192.0.2.7");
    auto second = recordFrom("192.0.2.8");
    respond(first.data(), first.size());
    EXPECT_EQ(respond(second.data(), second.size()), (Responders{"192.0.2.7", "192.0.2.8"}));
}

// The set.

class AddIP : public testing::Test
{
protected:
    Poco::AutoPtr<TestApp> application{new TestApp};
};

TEST_F(AddIP, KeepsOneCopyOfEachAddress)
{
    application->AddIP("192.0.2.9");
    application->AddIP("192.0.2.10");
    application->AddIP("192.0.2.9");
    EXPECT_EQ(application->m_responders, (Responders{"192.0.2.10", "192.0.2.9"}));
}

TEST_F(AddIP, WaitsForTheMutex)
{
    application->m_mutex.lock();
    const auto added = std::async(std::launch::async, [&] { application->AddIP("192.0.2.9"); });
    EXPECT_EQ(added.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_EQ(application->m_responders, Responders{});
    application->m_mutex.unlock();
    added.wait();
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.9"});
}

TEST_F(AddIP, ReleasesTheMutex)
{
    application->AddIP("192.0.2.9");
    bool locked = false;
    std::thread([&] {
        locked = application->m_mutex.tryLock();
        if (locked) {
            application->m_mutex.unlock();
        }
    }).join();
    EXPECT_TRUE(locked);
}

TEST_F(AddIP, TakesAddressesOfManyThreadsAtOnce)
{
    constexpr int threads = 8;
    constexpr int addresses = 200;
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int thread = 0; thread < threads; ++thread) {
        workers.emplace_back([&] {
            for (int each = 0; each < addresses; ++each) {
                application->AddIP("192.0.2." + std::to_string(each));
            }
        });
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    EXPECT_EQ(application->m_responders.size(), static_cast<std::size_t>(addresses));
}

// Failures.

class ResponderLock : public Callback
{
protected:
    void SetUp() override
    {
        if (!FailingMutex::supported()) {
            GTEST_SKIP() << "NOT TESTED: mutexes cannot be replaced beside this sanitizer";
        }
    }
};

TEST_F(ResponderLock, AFailureToLockAddsNothing)
{
    EXPECT_THAT(failureToLock([this] { application->AddIP("192.0.2.9"); }),
                StartsWith("cannot lock mutex"));
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(ResponderLock, AFailureToLockPassesOutOfTheCallback)
{
    auto record = recordFrom("192.0.2.9");
    EXPECT_THAT(failureToLock([&] { respond(record.data(), record.size()); }),
                StartsWith("cannot lock mutex"));
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(ResponderLock, AFailureToUnlockIsKeptInside)
{
    bool thrown = false;
    try {
        const FailingMutex failing(FailingMutex::Call::unlock);
        application->AddIP("192.0.2.9");
    } catch (const Poco::SystemException&) {
        thrown = true;
    }
    EXPECT_FALSE(thrown);
    EXPECT_EQ(unexpectedErrors, 1);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.9"});
}

class ResponderMemory : public CallbackContents
{
protected:
    void SetUp() override
    {
        if (!Allocations::supported()) {
            GTEST_SKIP() << "NOT TESTED: operator new cannot be replaced beside this sanitizer";
        }
    }
};

/// Whether `body` fails for lack of memory when that many allocations succeed.
template <typename Body>
bool runsOut(long allocations, Body body)
{
    const AllocationLimit limit(allocations);
    try {
        body();
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

TEST_F(ResponderMemory, AResponderThatFindsNoRoomLeavesTheOthers)
{
    application->AddIP("192.0.2.1");
    const std::string ip = "192.0.2.2";
    EXPECT_TRUE(runsOut(0, [&] { application->AddIP(ip); }));
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.1"});

    EXPECT_FALSE(runsOut(1, [&] { application->AddIP(ip); })) << "neither locked nor lost";
    EXPECT_EQ(application->m_responders, (Responders{"192.0.2.1", "192.0.2.2"}));
}

TEST_F(ResponderMemory, AKnownResponderNeedsNone)
{
    application->AddIP("192.0.2.1");
    const std::string ip = "192.0.2.1";
    EXPECT_FALSE(runsOut(0, [&] { application->AddIP(ip); }));
}

TEST_F(ResponderMemory, TheCallbackPassesTheFailureOnAndIsReadyForTheNextAnswer)
{
    auto record = recordFrom("192.0.2.3");
    pdu.transport_data = record.data();
    pdu.transport_data_length = static_cast<int>(record.size());

    const auto answer = [&] { SNMPDiscoveryApp::SNMPCallback(*session, application.get(), &pdu); };
    EXPECT_TRUE(runsOut(0, answer));
    EXPECT_EQ(application->m_responders, Responders{});
    EXPECT_EQ(pdu.variables, nullptr) << "released all the same";
    EXPECT_FALSE(runsOut(1, answer));
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.3"});
}

} // namespace

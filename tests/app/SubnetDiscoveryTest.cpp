#include "tests/app/helpers/FakeNetwork.h"
#include "tests/app/helpers/TestApp.h"
#include "tests/support/WatchedJoins.h"

#include <Poco/ErrorHandler.h>
#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>

using Worker = SNMPDiscoveryApp::SubnetDiscovery;
using UVARNETSNMP::SNMPSession;

namespace {

static_assert(std::is_nothrow_destructible_v<Worker>);
static_assert(std::is_convertible_v<Worker*, Poco::Runnable*>);
static_assert(!std::is_copy_constructible_v<Worker> && !std::is_copy_assignable_v<Worker>);
static_assert(!std::is_move_constructible_v<Worker> && !std::is_move_assignable_v<Worker>);

/// The calls of one worker from its start to its end.
const std::vector<std::string> asOneProbe = {"parse sysUpTime.0", "open", "close"};

class SubnetDiscovery : public testing::Test
{
protected:
    FakeNetwork network;
    Poco::AutoPtr<TestApp> application{new TestApp};
};

TEST_F(SubnetDiscovery, SendsOneBroadcastGetOfSysUpTimeAndListensForFiveSeconds)
{
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    Worker(*application, "192.0.2.255", "private")
        .run(); // and once more on the worker's own thread

    const std::vector<FakeNetwork::Request> requests = network.requests();
    ASSERT_EQ(requests.size(), 2U);
    for (const FakeNetwork::Request& request : requests) {
        EXPECT_EQ(request.oidText, "sysUpTime.0");
        EXPECT_EQ(request.version, 0);
        EXPECT_EQ(request.community, "private");
        EXPECT_EQ(request.peer, "192.0.2.255");
        EXPECT_TRUE(request.broadcast);
        EXPECT_EQ(request.context, application.get());
        EXPECT_EQ(request.callback, &SNMPDiscoveryApp::SNMPCallback);
        EXPECT_EQ(request.timeout, 5000000);
    }
}

TEST_F(SubnetDiscovery, RunsOnAThreadOfItsOwnFromTheConstructorOn)
{
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    const Worker worker(*application, "192.0.2.255", "public");
    ASSERT_TRUE(network.waitForRequests(1));
    EXPECT_FALSE(pthread_equal(network.requests().front().thread, pthread_self()));
}

TEST_F(SubnetDiscovery, KeepsItsOwnCopiesOfTheTexts)
{
    std::promise<void> changed;
    const std::shared_future<void> whenChanged = changed.get_future();
    network.open = [&] { whenChanged.wait(); };
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    {
        auto address =
            std::make_unique<std::string>("198.51.100.255 is longer than any small text");
        auto community = std::make_unique<std::string>("a community longer than any small text");
        const Worker worker(*application, *address, *community);
        address.reset();
        community.reset();
        changed.set_value();
    }
    ASSERT_EQ(network.requests().size(), 1U);
    EXPECT_EQ(network.requests().front().peer, "198.51.100.255 is longer than any small text");
    EXPECT_EQ(network.requests().front().community, "a community longer than any small text");
}

TEST_F(SubnetDiscovery, BlocksItsDestroyerUntilTheWaitIsOver)
{
    std::promise<void> release;
    const std::shared_future<void> whenReleased = release.get_future();
    network.get = [&](SNMPSession&, const FakeNetwork::Request&) {
        whenReleased.wait();
        return true;
    };
    auto worker = std::make_unique<Worker>(*application, "192.0.2.255", "public");
    ASSERT_TRUE(network.waitForRequests(1));

    const auto destroyed = std::async(std::launch::async, [&] { worker.reset(); });
    EXPECT_EQ(destroyed.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    release.set_value();
    destroyed.wait();
    EXPECT_EQ(network.calls(), asOneProbe);
}

TEST_F(SubnetDiscovery, AFailedRequestIsNoError)
{
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return false; };
    {
        const Worker worker(*application, "192.0.2.255", "public");
    }
    EXPECT_EQ(network.calls(), asOneProbe);
    EXPECT_TRUE(application->m_responders.empty());
}

/// Counts what POCO's threads report, instead of printing it.
class CountingErrorHandler : public Poco::ErrorHandler
{
public:
    CountingErrorHandler() : m_previous(Poco::ErrorHandler::set(this)) {}
    ~CountingErrorHandler() override { Poco::ErrorHandler::set(m_previous); }
    CountingErrorHandler(const CountingErrorHandler&) = delete;
    CountingErrorHandler& operator=(const CountingErrorHandler&) = delete;

    void exception(const Poco::Exception&) override { ++count; }
    void exception(const std::exception&) override { ++count; }
    void exception() override { ++count; }

    std::atomic<int> count{0};

private:
    Poco::ErrorHandler* m_previous;
};

TEST_F(SubnetDiscovery, AnExceptionEndsItsOwnThreadAlone)
{
    CountingErrorHandler handler;
    std::atomic<int> opened{0};
    network.open = [&] {
        if (opened++ == 0) {
            throw Poco::SystemException("no session");
        }
    };
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    {
        const Worker failing(*application, "192.0.2.255", "public");
        const Worker other(*application, "198.51.100.255", "public");
        ASSERT_TRUE(network.waitForRequests(1));
    }
    EXPECT_EQ(handler.count, 1);
    EXPECT_EQ(network.requests().size(), 1U);
}

TEST_F(SubnetDiscovery, AJoinThatFailsEndsTheProcess)
{
    if (!WatchedJoins::supported()) {
        GTEST_SKIP() << "NOT TESTED: pthread_join cannot be replaced here";
    }
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    const auto joinInVain = [this] {
        WatchedJoins joins;
        joins.fail();
        const Worker worker(*application, "192.0.2.255", "public");
    };
    EXPECT_EXIT(joinInVain(), testing::KilledBySignal(SIGABRT), "");
}

} // namespace

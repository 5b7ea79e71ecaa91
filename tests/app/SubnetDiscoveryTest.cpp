#include "tests/app/FakeNetwork.h"
#include "tests/app/TestApp.h"

#include <Poco/ErrorHandler.h>
#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

using Worker = SNMPDiscoveryApp::SubnetDiscovery;
using UVARNETSNMP::SNMPSession;

namespace {

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
    EXPECT_NE(network.requests().front().thread, std::this_thread::get_id());
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
    EXPECT_EQ(network.requests().front().community, "a community longer than any small text");
}

TEST_F(SubnetDiscovery, BlocksItsDestroyerUntilTheWaitIsOver)
{
    std::promise<void> release;
    const std::shared_future<void> whenReleased = release.get_future();
    std::atomic<bool> destroyed{false};
    std::atomic<bool> destroyedBeforeTheEnd{false};
    network.get = [&](SNMPSession&, const FakeNetwork::Request&) {
        whenReleased.wait();
        destroyedBeforeTheEnd = destroyed.load();
        return true;
    };
    auto worker = std::make_unique<Worker>(*application, "192.0.2.255", "public");
    ASSERT_TRUE(network.waitForRequests(1));

    std::promise<void> destroying;
    std::thread destroyer([&] {
        destroying.set_value();
        worker.reset();
        destroyed = true;
    });
    destroying.get_future().wait();
    release.set_value();
    destroyer.join();
    EXPECT_FALSE(destroyedBeforeTheEnd);
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"open", "close"}));
}

TEST_F(SubnetDiscovery, AFailedRequestIsNoError)
{
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return false; };
    {
        const Worker worker(*application, "192.0.2.255", "public");
    }
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"open", "close"}));
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

} // namespace

// The end of the workers: in which order their threads are joined, what a failure to join does, and
// that none is forgotten when memory runs out.

#include "tests/app/DiscoveryRun.h"
#include "tests/support/CountedNew.h"
#include "tests/support/WatchedJoins.h"

#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

#include <pthread.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>

using UVARNETSNMP::SNMPSession;

namespace {

using Worker = SNMPDiscoveryApp::SubnetDiscovery;

static_assert(std::is_nothrow_destructible_v<Worker>);

class WorkerJoin : public DiscoveryRun
{
protected:
    void SetUp() override
    {
        if (!WatchedJoins::supported()) {
            GTEST_SKIP() << "NOT TESTED: pthread_join cannot be replaced here";
        }
    }
};

TEST_F(WorkerJoin, GoesFromTheLastWorkerToTheFirst)
{
    constexpr std::size_t subnets = 3;
    network.list = [] { return interfacesInSubnets(subnets); };
    std::size_t passes = 0;
    network.pause = [&] { EXPECT_TRUE(network.waitForRequests(subnets * ++passes)); };
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    const WatchedJoins joins;
    application->initWith({});
    EXPECT_EQ(application->run(), 64);

    // Each worker by its pass and its subnet. All threads lived until they were joined, so no two
    // have the same handle.
    const std::vector<FakeNetwork::Request> requests = network.requests();
    std::vector<std::string> joined;
    for (const pthread_t thread : joins.threads()) {
        for (std::size_t i = 0; i < requests.size(); ++i) {
            if (pthread_equal(requests[i].thread, thread)) {
                joined.push_back(std::to_string(1 + i / subnets) + " " + requests[i].peer);
            }
        }
    }
    EXPECT_EQ(joined,
              (std::vector<std::string>{"2 198.51.100.47", "2 198.51.100.31", "2 198.51.100.15",
                                        "1 198.51.100.47", "1 198.51.100.31", "1 198.51.100.15"}));
}

TEST_F(WorkerJoin, ThatFailsEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    const auto joinInVain = [this] {
        WatchedJoins joins;
        joins.fail();
        const Worker worker(*application, "192.0.2.255", "public");
    };
    EXPECT_EXIT(joinInVain(), testing::KilledBySignal(SIGABRT), "");
}

std::ptrdiff_t threadsOfTheProcess()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
}

/// Waits until every other thread has ended, one that nobody joins too; ten seconds at most.
bool waitForTheOthersToEnd()
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (threadsOfTheProcess() > 1 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return threadsOfTheProcess() == 1;
}

TEST_F(WorkerJoin, ForgetsNobodyWhicheverAllocationOfTheMainThreadFails)
{
    if (!Allocations::supported()) {
        GTEST_SKIP() << "NOT TESTED: operator new cannot be replaced beside this sanitizer";
    }
    network.list = [] { return interfacesInSubnets(3); };
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    // From shortly before the first worker until the document is written: POCO's frame allocates
    // outside its own handlers afterwards.
    std::optional<FailingAllocation> failing;
    bool failed = true;
    long successes = 0;
    network.initialize = [&](auto&&...) {
        application->logger().setChannel(new Poco::NullChannel);
        failing.emplace(successes);
        return true;
    };
    network.terminate = [&] {
        failed = failing->happened();
        failing.reset();
    };
    application->initWith({});

    const int software = Poco::Util::Application::EXIT_SOFTWARE;
    std::size_t before = 0;
    int failures = 0;
    for (; failed; ++successes) {
        SCOPED_TRACE("successful allocations: " + std::to_string(successes));
        const WatchedJoins joins;
        const int code = application->run();
        failing.reset();
        failures += failed ? 1 : 0;

        // Also a thread that nobody joined has sent its request by then.
        ASSERT_TRUE(waitForTheOthersToEnd());
        EXPECT_EQ(joins.threads().size(), network.requests().size() - before);
        before = network.requests().size();
        EXPECT_TRUE(code == 64 || (failed && code == software)) << code;
    }
    EXPECT_GT(failures, 20);
}

} // namespace

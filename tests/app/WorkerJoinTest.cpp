// The end of the workers: in which order their threads are joined, and what a failure to join does.

#include "tests/app/DiscoveryRun.h"
#include "tests/support/WatchedJoins.h"

#include <pthread.h>

#include <csignal>
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

} // namespace

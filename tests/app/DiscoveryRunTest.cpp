#include "tests/app/DiscoveryRun.h"

#include "snmp/SNMPSession.h"

#include <Poco/Exception.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

#include <chrono>
#include <future>
#include <set>
#include <thread>

using Poco::Net::NetworkInterface;
using UVARNETSNMP::SNMPSession;

using namespace std::chrono_literals;

namespace {

const char* const mask24 = "255.255.255.0";

TEST_F(DiscoveryRun, NoUsableInterfaceGivesAnEmptyArrayAfterBothPauses)
{
    network.list = [] {
        return std::vector<NetworkInterface>{makeInterface({{"127.0.0.1", "255.0.0.0"}})};
    };
    network.terminate = [this] {
        EXPECT_EQ(output.text(), "[]") << "the document comes before the library is torn down";
    };
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(output.text(), "[]");
    EXPECT_EQ(output.flushes(), 0);
    std::vector<std::string> expected = {"list ip up", "initialize", "receive buffer 4194304"};
    if (FakeNetwork::pausesAreFaked()) {
        expected.insert(expected.end(), {"pause 2000", "pause 2000"});
    }
    expected.push_back("terminate");
    EXPECT_EQ(network.calls(), expected);
}

TEST_F(DiscoveryRun, ProbesEverySubnetTwiceAndPrintsTheRespondersInByteOrder)
{
    network.list = [] {
        return std::vector<NetworkInterface>{makeInterface({{"127.0.0.1", "255.0.0.0"}}),
                                             makeInterface({{"198.51.100.1", mask24}}),
                                             makeInterface({{"192.0.2.1", mask24}})};
    };
    // Every worker waits until all four have sent: the first pass still listens while the second
    // begins, or the waiting would end in failure.
    network.get = [this](SNMPSession&, const FakeNetwork::Request&) {
        EXPECT_TRUE(network.waitForRequests(4));
        application->AddIP("192.0.2.9");
        application->AddIP("192.0.2.10");
        application->AddIP("192.0.2.9");
        return true;
    };
    application->initWith({"-c", "private"});
    EXPECT_EQ(application->run(), 64);

    EXPECT_EQ(output.text(), R"([{"hostname":"192.0.2.10"},{"hostname":"192.0.2.9"}])");

    const std::vector<FakeNetwork::Request> requests = network.requests();
    ASSERT_EQ(requests.size(), 4U);
    std::multiset<std::string> peers;
    for (const FakeNetwork::Request& request : requests) {
        peers.insert(request.peer);
        EXPECT_EQ(request.community, "private");
        EXPECT_EQ(request.context, static_cast<SNMPDiscoveryApp*>(application.get()));
    }
    EXPECT_EQ(peers, (std::multiset<std::string>{"192.0.2.255", "192.0.2.255", "198.51.100.255",
                                                 "198.51.100.255"}));

    const std::vector<std::string> calls = network.calls();
    EXPECT_EQ(calls[0], "list ip up");
    EXPECT_EQ(calls[1], "initialize");
    EXPECT_EQ(calls[2], "receive buffer 4194304"); // before the first session
    EXPECT_EQ(calls.back(), "terminate");
    EXPECT_EQ(countOf("parse sysUpTime.0"), 4U);
    EXPECT_EQ(countOf("open"), 4U);
    EXPECT_EQ(countOf("close"), 4U);
}

TEST_F(DiscoveryRun, SendsTheLibrarysMessagesToStandardError)
{
    shutdown_snmp_logging(); // what a run before has set up
    network.initialize = [](auto&&...) {
        snmp_log(LOG_ERR, "a complaint\n");
        return true;
    };
    application->initWith({});
    testing::internal::CaptureStderr();
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a complaint\n");
    EXPECT_EQ(output.text(), "[]");
}

TEST_F(DiscoveryRun, EachPassProbesEverySubnetOnceAndIsFollowedByAPauseOfTwoSeconds)
{
    std::size_t pauses = 0;
    network.pause = [&] {
        // The workers that are to come in a pass have all been started before its pause.
        EXPECT_TRUE(network.waitForRequests(4 * ++pauses));
        EXPECT_EQ(network.requests().size(), 4 * pauses);
    };
    network.list = [] { return interfacesInSubnets(4); };
    // The workers of a pass may overtake each other, so what is compared is the set of each pass.
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return false; };
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    const std::vector<FakeNetwork::Request> requests = network.requests();
    ASSERT_EQ(requests.size(), 8U);
    const std::set<std::string> expected = {"198.51.100.15", "198.51.100.31", "198.51.100.47",
                                            "198.51.100.63"};
    for (std::size_t pass = 0; pass < 2; ++pass) {
        std::set<std::string> peers;
        for (std::size_t i = 0; i < 4; ++i) {
            peers.insert(requests[pass * 4 + i].peer);
        }
        EXPECT_EQ(peers, expected);
    }
    EXPECT_EQ(output.text(), "[]");
    EXPECT_EQ(pauses, FakeNetwork::pausesAreFaked() ? 2U : 0U);
    EXPECT_EQ(countOf("pause 2000"), pauses);
}

TEST_F(DiscoveryRun, AnAnswerAfterTheLastPauseIsInTheDocument)
{
    network.list = [] {
        return std::vector<NetworkInterface>{makeInterface({{"192.0.2.1", mask24}})};
    };
    int pauses = 0;
    std::promise<void> last;
    network.pause = [&] {
        if (++pauses == 2) {
            last.set_value();
        }
    };
    const std::shared_future<void> lastPause = last.get_future();
    network.get = [&](SNMPSession&, const FakeNetwork::Request&) {
        lastPause.wait_for(4500ms); // where the pauses are real, they are over by then
        application->AddIP("192.0.2.9");
        return true;
    };
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(output.text(), R"([{"hostname":"192.0.2.9"}])");
}

TEST_F(DiscoveryRun, ReadsTheRespondersWithoutTheLock)
{
    std::promise<void> held;
    std::promise<void> over;
    std::thread holder([&] {
        const Poco::ScopedLock<Poco::Mutex> lock(application->m_mutex);
        held.set_value();
        EXPECT_EQ(over.get_future().wait_for(10s), std::future_status::ready) << "the run waits";
    });
    held.get_future().wait();
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    over.set_value();
    holder.join();
    EXPECT_EQ(output.text(), "[]");
}

TEST_F(DiscoveryRun, AnInterfaceThatCannotBeJudgedFailsAfterTheSetUp)
{
    network.terminate = nullptr;
    network.list = [] { return std::vector<NetworkInterface>{makeInterface({})}; };
    application->initWith({});
    EXPECT_THROW(application->main({}), Poco::Exception);
    EXPECT_EQ(network.calls(),
              (std::vector<std::string>{"list ip up", "initialize", "receive buffer 4194304"}));
    EXPECT_EQ(output.text(), "");
}

TEST_F(DiscoveryRun, AFailureToListTheInterfacesGivesNoDocument)
{
    network.terminate = nullptr;
    network.initialize = nullptr;
    network.list = []() -> std::vector<NetworkInterface> {
        throw Poco::SystemException("no interfaces today");
    };
    application->initWith({});
    application->logger().setChannel(new Poco::NullChannel);
    EXPECT_THROW(application->main({}), Poco::SystemException);
    EXPECT_EQ(application->run(), Poco::Util::Application::EXIT_SOFTWARE);
    EXPECT_EQ(output.text(), "");
}

TEST_F(DiscoveryRun, AFailureAmongTheWorkersJoinsThoseThatRunAndTearsNothingDown)
{
    network.terminate = nullptr;
    network.list = [] {
        // The second has a mask of the other family, from which no address can be made.
        return std::vector<NetworkInterface>{makeInterface({{"192.0.2.1", mask24}}),
                                             makeInterface({{"192.0.2.2", "ffff::"}})};
    };
    network.get = [this](SNMPSession&, const FakeNetwork::Request&) {
        std::this_thread::sleep_for(300ms); // the run fails meanwhile
        application->AddIP("192.0.2.9");
        return true;
    };
    application->initWith({});
    EXPECT_THROW(application->main({}), Poco::Exception);
    EXPECT_EQ(application->m_responders, std::set<std::string>{"192.0.2.9"});
    EXPECT_EQ(network.calls().back(), "close");
    EXPECT_EQ(countOf("open"), 1U);
    EXPECT_EQ(output.text(), "");
}

} // namespace

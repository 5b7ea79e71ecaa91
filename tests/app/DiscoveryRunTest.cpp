// A whole run: what it hands to the SNMP library when it sets it up, its two passes and its
// document, and the end of its workers.

#include "tests/app/helpers/DiscoveryRun.h"
#include "snmp/SNMPSession.h"
#include "tests/support/CountedNew.h"
#include "tests/support/Guards.h"
#include "tests/support/WatchedJoins.h"

#include <Poco/Exception.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

#include <pthread.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace {

using Poco::Net::NetworkInterface;
using TestSupport::TemporaryDirectory;
using UVARNETSNMP::SNMPSession;
using namespace std::chrono_literals;

// The set-up, and the settings that it takes its values from.

/// Runs that end at the set-up of the library, and record the arguments that it is given.
class SetUp : public DiscoveryRun
{
protected:
    SetUp()
    {
        network.terminate = nullptr;
        network.initialize = [this](const std::string& name, const std::string& persistent,
                                    const std::string& mibs, const std::string& mib) {
            arguments = {name, persistent, mibs, mib};
            return false;
        };
    }

    std::vector<std::string> arguments;
};

TEST_F(SetUp, AFailureEndsTheRunWithoutADocument)
{
    application->initWith({});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"list ip up", "initialize"}));
}

TEST_F(SetUp, HandsOverTheNameTheFoldersAndThePrinterMib)
{
    application->initWith({});
    application->run();
    const std::string persistent = temporary.path().string() + "/SNMPDiscoveryApp/snmp-persist/";
    EXPECT_EQ(arguments, (std::vector<std::string>{"SNMPDiscovery", persistent, "/opt/tool/mibs/",
                                                   "Printer-MIB"}));
}

TEST_F(SetUp, IgnoresItsArguments)
{
    application->initWith({"office", "-c", "private"});
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(application->m_community, "private");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"list ip up", "initialize"}));
}

TEST_F(SetUp, HandsOverNoFolderIfOthersCanWriteToTheDefault)
{
    const std::filesystem::path parent = temporary.path() / "SNMPDiscoveryApp";
    std::filesystem::create_directories(parent / "snmp-persist");
    std::filesystem::permissions(parent, std::filesystem::perms::all);
    application->initWith({});
    testing::internal::CaptureStderr();
    application->run();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing is said about it";
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], "");
}

struct Folder
{
    const char* name;
    const char* given;
    const char* handedOver;
};

class PersistentFolder : public SetUp, public testing::WithParamInterface<Folder>
{};

TEST_P(PersistentFolder, IsADirectoryEndingWithASeparator)
{
    application->initWith({"--SNMPPersistPath", GetParam().given});
    application->run();
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], GetParam().handedOver);
}

INSTANTIATE_TEST_SUITE_P(Paths, PersistentFolder,
                         testing::Values(Folder{"WithoutSeparator", "/var/lib/a", "/var/lib/a/"},
                                         Folder{"WithSeparator", "/var/lib/a/", "/var/lib/a/"},
                                         Folder{"Relative", "a/b", "a/b/"},
                                         Folder{"WithDot", "/var/a.b", "/var/a.b/"},
                                         Folder{"WithSpace", "/var/a b", "/var/a b/"},
                                         Folder{"Root", "/", "/"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SetUp, AConfigurationFileNamesThePersistentFolderToo)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "SNMPPersistPath = /srv/state\n";
    application->initWith({}, folder.path().string() + "/SNMPDiscovery");
    application->run();
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], "/srv/state/");
    EXPECT_EQ(arguments[2], folder.path().string() + "/mibs/");
}

TEST_F(SetUp, DoesNotCreateThePersistentFolder)
{
    const TemporaryDirectory folder;
    application->initWith({"--SNMPPersistPath", folder.path().string() + "/state"});
    application->run();
    EXPECT_FALSE(std::ifstream(folder.path().string() + "/state").good());
}

struct Community
{
    const char* name;
    std::vector<std::string> arguments;
    const char* file;
    const char* expected;
};

class CommunityOfARun : public SetUp, public testing::WithParamInterface<Community>
{};

TEST_P(CommunityOfARun, ComesFromOptionThenFileThenDefault)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << GetParam().file;
    application->initWith(GetParam().arguments, folder.path().string() + "/SNMPDiscovery");
    application->m_community = "overwritten at the start of the run";
    application->run();
    EXPECT_EQ(application->m_community, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, CommunityOfARun,
    testing::Values(Community{"Default", {}, "", "public"},
                    Community{"ShortOption", {"-c", "private"}, "", "private"},
                    Community{"ShortOptionJoined", {"-cprivate"}, "", "private"},
                    Community{"LongOption", {"--Community=private"}, "", "private"},
                    Community{"LongOptionApart", {"--Community", "private"}, "", "private"},
                    Community{"File", {}, "Community = private\n", "private"},
                    Community{"OptionBeforeFile", {"-c", "a"}, "Community = b\n", "a"}),
    [](const auto& row) { return row.param.name; });

// The two passes and the document.

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
    // Every worker waits until all four have sent. This succeeds only if the first pass still
    // listens while the second begins.
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
    shutdown_snmp_logging(); // an earlier run may have set it up
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
        // All workers of a pass have been started before its pause.
        EXPECT_TRUE(network.waitForRequests(4 * ++pauses));
        EXPECT_EQ(network.requests().size(), 4 * pauses);
    };
    network.list = [] { return interfacesInSubnets(4); };
    // The workers of a pass may overtake each other, so the test compares the set of each pass.
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
        lastPause.wait_for(4500ms); // real pauses (macOS) have ended by then
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

// The end of the workers: the order in which their threads are joined, and that none is forgotten
// when memory runs out.

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

    // Names each worker by its pass and its subnet. No thread ends before it is joined, so no two
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

std::ptrdiff_t threadsOfTheProcess()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
}

/// Waits until no more threads are left than `before`, even of those that nobody joins; ten seconds
/// at most.
bool waitForTheOthersToEnd(std::ptrdiff_t before)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (threadsOfTheProcess() > before && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return threadsOfTheProcess() == before;
}

TEST_F(WorkerJoin, ForgetsNobodyWhicheverAllocationOfTheMainThreadFails)
{
    if (!Allocations::supported()) {
        GTEST_SKIP() << "NOT TESTED: operator new cannot be replaced beside this sanitizer";
    }
    network.list = [] { return interfacesInSubnets(3); };
    network.get = [](SNMPSession&, const FakeNetwork::Request&) { return true; };
    // Allocations fail from shortly before the first worker until the document is written. After
    // that POCO's framework allocates where it handles no exception.
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
    const std::ptrdiff_t threads = threadsOfTheProcess(); // an emulator has one of its own
    std::size_t before = 0;
    int failures = 0;
    for (; failed; ++successes) {
        SCOPED_TRACE("successful allocations: " + std::to_string(successes));
        const WatchedJoins joins;
        const int code = application->run();
        failing.reset();
        failures += failed ? 1 : 0;

        // By then every thread has sent its request, even one that nobody joined.
        ASSERT_TRUE(waitForTheOthersToEnd(threads));
        EXPECT_EQ(joins.threads().size(), network.requests().size() - before);
        before = network.requests().size();
        EXPECT_TRUE(code == 64 || (failed && code == software)) << code;
    }
    EXPECT_GT(failures, 20);
}

} // namespace

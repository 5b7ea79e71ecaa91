#include "tests/app/FakeNetwork.h"
#include "tests/app/TestApp.h"
#include "tests/support/Guards.h"

#include "snmp/SNMPSession.h"

#include <Poco/Exception.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>
#include <Poco/Path.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>

using Poco::Net::NetworkInterface;
using UVARNETSNMP::SNMPSession;

// The pauses of a run are real and take four seconds, so few of these tests go through them.

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using TestSupport::EnvironmentGuard;
using TestSupport::TemporaryDirectory;

namespace {

const char* const mask24 = "255.255.255.0";

class DiscoveryRun : public testing::Test
{
protected:
    DiscoveryRun()
    {
        network.list = [] { return std::vector<NetworkInterface>{}; };
        network.initialize = [](auto&&...) { return true; };
        network.mayTerminate = true;
    }

    std::size_t countOf(const std::string& call) const
    {
        const std::vector<std::string> calls = network.calls();
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application{new TestApp};
};

TEST_F(DiscoveryRun, NoUsableInterfaceGivesAnEmptyArrayAfterBothPauses)
{
    network.list = [] {
        return std::vector<NetworkInterface>{makeInterface({{"127.0.0.1", "255.0.0.0"}})};
    };
    application->initWith({});
    const auto start = steady_clock::now();
    EXPECT_EQ(application->run(), 64);
    EXPECT_GE(steady_clock::now() - start, 4s);
    EXPECT_EQ(output.text(), "[]");
    EXPECT_EQ(network.calls(), (std::vector<std::string>{"list ip up", "initialize",
                                                         "receive buffer 4194304", "terminate"}));
}

TEST_F(DiscoveryRun, ProbesEverySubnetTwiceAndPrintsTheRespondersInByteOrder)
{
    network.list = [] {
        return std::vector<NetworkInterface>{makeInterface({{"127.0.0.1", "255.0.0.0"}}),
                                             makeInterface({{"198.51.100.1", mask24}}),
                                             makeInterface({{"192.0.2.1", mask24}})};
    };
    steady_clock::time_point setUp;
    network.initialize = [&setUp](auto&&...) {
        setUp = steady_clock::now();
        return true;
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
    // Not the time since the first pass sent: its threads may have been late.
    EXPECT_GE(std::min(requests[2].opened, requests[3].opened) - setUp, 2s);

    const std::vector<std::string> calls = network.calls();
    ASSERT_EQ(calls.size(), 12U);
    EXPECT_EQ(calls[0], "list ip up");
    EXPECT_EQ(calls[1], "initialize");
    EXPECT_EQ(calls[2], "receive buffer 4194304"); // before the first session
    EXPECT_EQ(calls.back(), "terminate");
    EXPECT_EQ(countOf("open"), 4U);
    EXPECT_EQ(countOf("close"), 4U);
}

TEST_F(DiscoveryRun, EachPassProbesEverySubnetOnce)
{
    network.list = [] {
        std::vector<NetworkInterface> interfaces;
        for (int i = 0; i < 4; ++i) {
            interfaces.push_back(
                makeInterface({{"198.51.100." + std::to_string(16 * i + 1), "255.255.255.240"}}));
        }
        return interfaces;
    };
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
}

/// Runs that end where the library is set up; they show what it is handed.
class SetUp : public DiscoveryRun
{
protected:
    SetUp()
    {
        network.mayTerminate = false;
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
    const EnvironmentGuard temp("TMPDIR", "/tmp/somewhere");
    application->initWith({});
    application->run();
    EXPECT_EQ(arguments, (std::vector<std::string>{"SNMPDiscovery",
                                                   "/tmp/somewhere/SNMPDiscoveryApp/snmp-persist/",
                                                   "/opt/tool/mibs/", "Printer-MIB"}));
}

TEST_F(SetUp, HandsOverNoFolderIfOthersCanWriteToTheDefault)
{
    const TemporaryDirectory temporary;
    const EnvironmentGuard temp("TMPDIR", temporary.path().string());
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

TEST_F(DiscoveryRun, AFailureToListTheInterfacesGivesNoDocument)
{
    network.mayTerminate = false;
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

} // namespace

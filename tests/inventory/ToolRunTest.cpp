// The tool's process: scripts and programs of the test's own in its place.

#include "inventory/ToolRun.h"
#include "inventory/Document.h"
#include "inventory/Failure.h"
#include "tests/support/Guards.h"

#include <Poco/Util/Application.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using inventory::Failure;
using inventory::PrivateFolder;
using inventory::ToolRun;

class ToolRunTest : public testing::Test
{
protected:
    std::string script(const std::string& body, const std::string& name = "SNMPDiscovery") const
    {
        const fs::path path = m_folder.path() / name;
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        fs::permissions(path, fs::perms::owner_all);
        return path.string();
    }
    std::string document(const std::string& body, std::chrono::milliseconds time = 20s) const
    {
        return ToolRun(script(body)).document(time, [] {});
    }
    /// What the Failure says.
    std::string failure(const std::string& body, std::chrono::milliseconds time = 20s) const
    {
        try {
            ADD_FAILURE() << "no failure: " << document(body, time);
        } catch (const Failure& reason) {
            return reason.what();
        }
        return {};
    }
    const fs::path& folder() const { return m_folder.path(); }

private:
    const TestSupport::TemporaryDirectory m_folder;
};

TEST_F(ToolRunTest, StandardOutputWhateverTheExitCode)
{
    for (const char* const code : {"0", "1", "64", "70", "255"}) {
        EXPECT_EQ(document(std::string("printf '[]'; exit ") + code), "[]");
    }
    EXPECT_EQ(document("printf 'a\\000b\\n'"), std::string("a\0b\n", 4));
    EXPECT_EQ(document("true"), "");
}

TEST_F(ToolRunTest, NoArgumentsAreGiven)
{
    EXPECT_EQ(document("echo $#"), "0\n");
}

TEST_F(ToolRunTest, ADocumentLargerThanAPipeHolds)
{
    EXPECT_EQ(document("head -c 1000000 /dev/zero").size(), 1000000U);
}

TEST_F(ToolRunTest, MoreThan16MiBEndsTheTool)
{
    EXPECT_NE(failure("cat /dev/zero").find("16 MiB"), std::string::npos);
}

TEST_F(ToolRunTest, AToolThatASignalEndedGaveNoDocument)
{
    EXPECT_NE(failure("printf '[]'; kill -KILL $$").find("signal 9"), std::string::npos);
    EXPECT_NE(failure("printf '[]'; kill -TERM $$").find("signal 15"), std::string::npos);
}

TEST_F(ToolRunTest, AToolThatHangsIsEnded)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(failure("printf '[]'; exec sleep 1000", 200ms).find("no document"),
              std::string::npos);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST_F(ToolRunTest, AToolThatIgnoresSIGTERMIsKilled)
{
    const fs::path pid = folder() / "pid";
    const auto start = std::chrono::steady_clock::now();
    failure("trap '' TERM INT HUP; echo $$ >" + pid.string() + "; while :; do sleep 0.05; done",
            2s);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    pid_t child = 0;
    std::ifstream(pid) >> child;
    ASSERT_GT(child, 0);
    EXPECT_EQ(kill(child, 0), -1) << "it is still there";
}

TEST_F(ToolRunTest, TheToolsEndEndsTheWaitNotThatOfItsOutput)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(document("printf '[]'; sleep 5 &"), "[]");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4s);
}

TEST_F(ToolRunTest, AToolThatClosesItsOutputIsWaitedFor)
{
    const fs::path done = folder() / "done";
    EXPECT_EQ(document("printf '[]'; exec >&-; sleep 0.3; echo >" + done.string()), "[]");
    EXPECT_TRUE(fs::exists(done));
}

TEST_F(ToolRunTest, AToolThatFillsStandardErrorIsReadOn)
{
    // Standard error is this process's, which the tool finds there.
    testing::internal::CaptureStderr();
    EXPECT_EQ(document("head -c 300000 /dev/zero | tr '\\0' e >&2; printf '[]'"), "[]");
    EXPECT_EQ(testing::internal::GetCapturedStderr().size(), 300000U);
}

TEST_F(ToolRunTest, WhatCannotBeStarted)
{
    EXPECT_THROW(ToolRun((folder() / "absent").string()), Failure);
    EXPECT_THROW(ToolRun(folder().string()), Failure);
    const fs::path plain = folder() / "plain";
    std::ofstream(plain) << "#!/bin/sh\n";
    EXPECT_THROW(ToolRun(plain.string()), Failure);
#ifdef SNMPDISCOVERY_EMULATED
    GTEST_SKIP()
        << "NOT TESTED to the end: qemu-user's posix_spawn() does not tell of a failing exec";
#endif
    fs::permissions(plain, fs::perms::owner_all);
    std::ofstream(plain) << "#!/nonexistent/interpreter\n";
    EXPECT_THROW(ToolRun(plain.string()).document(5s, [] {}), Failure);
}

TEST_F(ToolRunTest, WithoutAChoiceTheFirstOnPATH)
{
    const std::string path = script("printf '[\"found\"]'");
    const TestSupport::EnvironmentGuard guard("PATH",
                                              "/nonexistent:" + folder().string() + ":/bin");
    EXPECT_EQ(ToolRun({}).document(20s, [] {}), "[\"found\"]");
    const TestSupport::EnvironmentGuard none("PATH", "/nonexistent");
    EXPECT_THROW(ToolRun{std::nullopt}, Failure);
}

TEST_F(ToolRunTest, WithPublicAScriptIsGoodEnough)
{
    const PrivateFolder own;
    ToolRun tool(script("echo $0"));
    tool.configure("public", own);
    EXPECT_EQ(tool.document(20s, [] {}), (folder() / "SNMPDiscovery").string() + "\n");
    EXPECT_TRUE(fs::is_empty(own.path()));
}

TEST_F(ToolRunTest, AScriptCannotBeGivenTheCommunityInSecret)
{
    const PrivateFolder own;
    ToolRun tool(script("true"));
    EXPECT_THROW(tool.configure("secret", own), Failure);
    fs::create_symlink(script("true", "launcher"), folder() / "link");
    ToolRun link((folder() / "link").string());
    EXPECT_THROW(link.configure("secret", own), Failure);
}

TEST_F(ToolRunTest, AnotherCommunityComesInAPrivateFolder)
{
    // The program "ls" in the tool's place; the folder's links lead to the executable itself.
    fs::copy_file("/bin/ls", folder() / "real");
    fs::create_directory(folder() / "mibs");
    fs::create_symlink("real", folder() / "link");
    std::string path;
    {
        const PrivateFolder own;
        path = own.path();
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
        ToolRun tool((folder() / "link").string());
        tool.configure("secret", own);

        const fs::path started = own.path();
        EXPECT_EQ(fs::read_symlink(started / "SNMPDiscovery"), fs::canonical(folder() / "real"));
        EXPECT_EQ(fs::read_symlink(started / "mibs"), fs::canonical(folder() / "mibs"));
        const fs::path properties = started / "SNMPDiscovery.properties";
        EXPECT_EQ(fs::status(properties).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write);
        std::string line;
        std::ifstream in(properties);
        while (std::getline(in, line) && line.rfind("Community", 0) != 0) {
        }
        EXPECT_EQ(line, "Community = secret");
        EXPECT_NE(tool.document(20s, [] {}), "") << "it is started";
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(ToolRunTest, NoConfigurationIsLookedForInTheFoldersAbove)
{
    // Everybody can write to the folder for temporary files, and POCO takes each type of file from
    // the nearest folder that has it.
    const TestSupport::EnvironmentGuard guard("TMPDIR", folder().string());
    const std::string hostile = "Community = hostile\n";
    for (const char* const type : {"properties", "ini"}) {
        std::ofstream(folder() / (std::string("SNMPDiscovery.") + type)) << hostile;
    }
    std::ofstream(folder() / "SNMPDiscovery.json") << R"({"Community":"hostile"})";
    std::ofstream(folder() / "SNMPDiscovery.xml") << "<c><Community>hostile</Community></c>";
    fs::copy_file("/bin/ls", folder() / "real");
    const PrivateFolder own;
    ToolRun((folder() / "real").string()).configure("secret", own);

    /// Looks for its configuration as the tool does.
    class Probe : public Poco::Util::Application
    {
    public:
        explicit Probe(const std::string& path)
        {
            setUnixOptions(true);
            init({path});
            m_files = loadConfiguration();
        }
        int m_files = 0;
    };
    Probe probe(own.path() + "/SNMPDiscovery");
    EXPECT_EQ(probe.config().getString("Community"), "secret");
    EXPECT_GE(probe.m_files, 3) << "the files must be valid";
    for (const char* const type : {"properties", "ini", "json", "xml"}) {
        const fs::path file = fs::path(own.path()) / (std::string("SNMPDiscovery.") + type);
        EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    }
}

TEST_F(ToolRunTest, AToolWithoutMIBModulesBesideIt)
{
    fs::copy_file("/bin/ls", folder() / "real");
    const PrivateFolder own;
    ToolRun tool((folder() / "real").string());
    tool.configure("secret", own);
    EXPECT_FALSE(fs::exists(fs::path(own.path()) / "mibs"));
    EXPECT_NE(tool.document(20s, [] {}), "");
}

TEST_F(ToolRunTest, AnEndThatIsNotToldIsNotWaitedFor)
{
    auto* const former = std::signal(SIGCHLD, SIG_IGN);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(failure("printf '[]'").find("the tool's end"), std::string::npos);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    std::signal(SIGCHLD, former);
}

TEST_F(ToolRunTest, TheToolHasTheDefaultActionForSIGPIPE)
{
    auto* const former = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_NE(failure("kill -PIPE $$; sleep 1").find("signal 13"), std::string::npos);
    std::signal(SIGPIPE, former);
}

TEST_F(ToolRunTest, ProgressIsCalledMeanwhile)
{
    int calls = 0;
    ToolRun(script("sleep 0.2")).document(20s, [&calls] { ++calls; });
    EXPECT_GT(calls, 1);
}

} // namespace

// The end by a signal, in a process that the test starts anew, and progress on a terminal.

#include "inventory/Ending.h"
#include "inventory/PrivateFolder.h"
#include "inventory/Progress.h"
#include "inventory/ToolRun.h"
#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h> // the functions of pseudo-terminals are POSIX
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using inventory::Ending;

constexpr const char* variable = "INVENTORY_ENDING_TEST";

/// The parameter is the signal.
class EndingTest : public testing::TestWithParam<int>
{
protected:
    EndingTest()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        // The process that dies runs this too, and must use its parent's folder.
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes the environment
        const char* const given = std::getenv(variable);
        m_folder = given == nullptr ? m_own.emplace().path() : fs::path(given);
        m_shared.emplace(variable, m_folder.string());
        m_temporary.emplace("TMPDIR", m_folder.string());
    }
    const fs::path& folder() const { return m_folder; }
    fs::path file() const { return m_folder / "report"; }
    fs::path pid() const { return m_folder / "pid"; }

    /// Does not return: the signal ends the process while its child runs, which ignores signals.
    void endWhileTheChildRuns(int signal) const
    {
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_CORE, &none); // SIGQUIT
        Ending::watch();
        const inventory::PrivateFolder own;
        std::ofstream(fs::path(own.path()) / "content") << "x";
        Ending::change([this](Ending::Record& record) {
            std::ofstream(file()) << "x";
            record.file = file().string();
        });
        // It ends by itself too: a death test waits for whoever has its standard error.
        const fs::path script = folder() / "SNMPDiscovery";
        std::ofstream(script) << "#!/bin/sh\ntrap '' TERM INT HUP QUIT\necho $$ >" << pid().string()
                              << ".new\nmv " << pid().string() << ".new " << pid().string()
                              << "\nfor turn in $(seq 200); do sleep 0.05; done\n";
        fs::permissions(script, fs::perms::owner_all);
        bool sent = false;
        inventory::ToolRun(script.string()).document(20s, [this, signal, &sent] {
            if (!sent && fs::exists(pid())) {
                sent = true;
                kill(getpid(), signal);
            }
        });
    }

private:
    std::optional<TestSupport::TemporaryDirectory> m_own;
    fs::path m_folder;
    std::optional<TestSupport::EnvironmentGuard> m_shared;
    std::optional<TestSupport::EnvironmentGuard> m_temporary;
};

TEST_P(EndingTest, NothingOutlivesTheProcess)
{
    EXPECT_EXIT(endWhileTheChildRuns(GetParam()), testing::KilledBySignal(GetParam()), "");
    pid_t child = 0;
    std::ifstream(pid()) >> child;
    ASSERT_GT(child, 0) << "the child never ran";
    EXPECT_EQ(kill(child, 0), -1) << "it is still there";
    EXPECT_EQ(errno, ESRCH);
    EXPECT_FALSE(fs::exists(file()));
    for (const fs::directory_entry& entry : fs::directory_iterator(folder())) {
        EXPECT_FALSE(entry.is_directory()) << entry.path();
    }
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingTest, testing::Values(SIGTERM, SIGINT, SIGHUP, SIGQUIT));

/// Standard error is a terminal meanwhile.
class TerminalGuard
{
public:
    TerminalGuard() : m_former(dup(STDERR_FILENO)), m_user(posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (m_user >= 0 && grantpt(m_user) == 0 && unlockpt(m_user) == 0) {
            // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread asks for a terminal's name
            const int terminal = open(ptsname(m_user), O_RDWR | O_NOCTTY);
            dup2(terminal, STDERR_FILENO);
            close(terminal);
        }
    }
    ~TerminalGuard()
    {
        dup2(m_former, STDERR_FILENO);
        close(m_former);
        close(m_user);
    }
    TerminalGuard(const TerminalGuard&) = delete;
    TerminalGuard& operator=(const TerminalGuard&) = delete;

    /// What was written, within two seconds at most.
    std::string read() const
    {
        pollfd ready = {m_user, POLLIN, 0};
        std::array<char, 200> buffer = {};
        const ssize_t count =
            poll(&ready, 1, 2000) == 1 ? ::read(m_user, buffer.data(), buffer.size()) : 0;
        return {buffer.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
    }

private:
    int m_former;
    int m_user;
};

TEST(ProgressTest, AStoppedTerminalIsNotWaitedFor)
{
    alarm(20); // in place of a test that waits for good
    const TerminalGuard terminal;
    if (isatty(STDERR_FILENO) != 1) {
        GTEST_SKIP() << "no pseudo-terminal";
    }
    inventory::Progress progress(true);
    progress.show("one");
    EXPECT_EQ(terminal.read(), "\r\x1b[Kone");
    ASSERT_EQ(tcflow(STDERR_FILENO, TCOOFF), 0);
    progress.show("two");
    progress.clear();
    ASSERT_EQ(tcflow(STDERR_FILENO, TCOON), 0);
    progress.show("three");
    EXPECT_EQ(terminal.read(), "\r\x1b[Kthree");
    alarm(0);
}

} // namespace

#include "tests/app/helpers/FakeNetwork.h"
#include "tests/app/helpers/TestApp.h"
#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ios>
#include <iostream>
#include <streambuf>

/// The process entry, which app/main.cpp defines as main: this program compiles it under this name.
int processEntry(int argc, char** argv);

using TestSupport::EnvironmentGuard;

namespace {

int enter(std::vector<std::string> arguments)
{
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return processEntry(static_cast<int>(arguments.size()), argv.data());
}

TEST(Entry, ReturnsWhatTheRunReturns)
{
    const FakeNetwork network;
    const CapturedOutput output;
    EXPECT_EQ(enter({"/opt/tool/SNMPDiscovery", "--help"}), 64);
}

TEST(Entry, ABadCommandLineEndsWith64Too)
{
    const FakeNetwork network;
    const CapturedOutput output;
    EXPECT_EQ(enter({"/opt/tool/SNMPDiscovery", "--unknown"}), 64);
    EXPECT_NE(output.text(), "");
}

TEST(Entry, StandardDescriptorsThatTheParentClosedAreOpenBeforeAnythingElse)
{
    const FakeNetwork network;
    const pid_t child = fork();
    if (child == 0) {
        close(STDIN_FILENO);
        close(STDERR_FILENO);
        const bool ended = enter({"/opt/tool/SNMPDiscovery", "--help"}) == 64;
        const bool open = fcntl(STDIN_FILENO, F_GETFD) == 0 && fcntl(STDERR_FILENO, F_GETFD) == 0;
        _exit(ended && open ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(Entry, AnExceptionFromInitIsLoggedAndEndsWith78)
{
    // POCO looks a command without a path up in PATH. Without that variable it does not learn the
    // command's name, and so cannot show the help.
    const FakeNetwork network;
    const CapturedOutput output;
    const EnvironmentGuard path("PATH", std::nullopt);
    testing::internal::CaptureStderr();
    EXPECT_EQ(enter({"SNMPDiscovery", "--help"}), 78);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Not found: application.baseName\n");
    EXPECT_EQ(output.text(), "");
}

/// Makes std::cout refuse every character, and throw because of it, while it lives.
class RefusingOutput
{
public:
    RefusingOutput() : m_previous(std::cout.rdbuf(&m_refusing))
    {
        std::cout.exceptions(std::ios_base::badbit);
    }
    ~RefusingOutput()
    {
        std::cout.exceptions(std::ios_base::goodbit);
        std::cout.clear();
        std::cout.rdbuf(m_previous);
    }
    RefusingOutput(const RefusingOutput&) = delete;
    RefusingOutput& operator=(const RefusingOutput&) = delete;

private:
    class Refusing : public std::streambuf
    {}; // which has no room

    Refusing m_refusing;
    std::streambuf* m_previous;
};

TEST(Entry, AnExceptionThatIsNotPocosPassesOut)
{
    const FakeNetwork network;
    for (int i = 0; i < 2; ++i) { // the second time shows that the first application is gone
        const RefusingOutput output;
        EXPECT_THROW(enter({"/opt/tool/SNMPDiscovery", "--help"}), std::ios_base::failure);
    }
}

TEST(Entry, TheApplicationIsDestroyedOnEveryWayOut)
{
    // The framework allows one application at a time, so a second entry shows that the first is
    // gone.
    const FakeNetwork network;
    const CapturedOutput output;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(enter({"/opt/tool/SNMPDiscovery", "-h"}), 64);
        const EnvironmentGuard path("PATH", std::nullopt);
        testing::internal::CaptureStderr();
        EXPECT_EQ(enter({"SNMPDiscovery"}), 78);
        testing::internal::GetCapturedStderr();
    }
}

} // namespace

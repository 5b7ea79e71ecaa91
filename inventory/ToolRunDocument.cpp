#include "inventory/Document.h"
#include "inventory/Ending.h"
#include "inventory/Failure.h"
#include "inventory/ToolRun.h"

#include <sys/wait.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

// NOLINTNEXTLINE(readability-redundant-declaration): glibc declares it, macOS leaves it to us
extern char** environ;

// The tool runs as a child whose standard output is a pipe. The record of the child is the one
// that a signal's ending works on too, so it is only changed under its lock.

namespace inventory {

namespace {

constexpr int turn = 20;       // milliseconds
constexpr long patience = 500; // milliseconds between SIGTERM and SIGKILL

/// Both ends of a pipe; the process's own end does not block and is not inherited.
class Pipe
{
public:
    Pipe()
    {
        if (pipe(m_ends.data()) != 0) {
            throw Failure("no pipe", errno);
        }
        for (const int end : m_ends) {
            fcntl(end, F_SETFD, FD_CLOEXEC);
        }
        fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
    }
    ~Pipe()
    {
        close(m_ends[0]);
        closeWriting();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reading() const { return m_ends[0]; }
    int writing() const { return m_ends[1]; }
    void closeWriting()
    {
        if (m_ends[1] >= 0) {
            close(m_ends[1]);
            m_ends[1] = -1;
        }
    }
    /// Appends what is there; false when it ended.
    bool drain(std::string& text) const
    {
        std::array<char, 65536> buffer = {};
        ssize_t count = 0;
        while (text.size() <= largestDocument &&
               (count = read(m_ends[0], buffer.data(), buffer.size())) > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return count != 0;
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

/// Starts `path` with its standard output in the pipe. By posix_spawn and not by Poco::Process,
/// which closes every possible descriptor one by one: where their limit is a thousand million, as
/// in some containers, that takes minutes.
void start(const std::string& path, const Pipe& output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.writing(), STDOUT_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    const sigset_t mask = Ending::maskOfChild();
    posix_spawnattr_setsigmask(&attributes, &mask);
    // Ignored signals stay so over exec, and this program ignores SIGPIPE.
    sigset_t standard;
    sigemptyset(&standard);
    sigaddset(&standard, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &standard);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string name = path;
    std::array<char*, 2> arguments = {name.data(), nullptr};
    int reason = 0;
    Ending::change([&](Ending::Record& record) {
        pid_t child = 0;
        reason =
            posix_spawn(&child, path.c_str(), &actions, &attributes, arguments.data(), environ);
        record.child = reason == 0 ? child : 0;
    });
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (reason != 0) {
        throw Failure(path, reason);
    }
}

/// Its status, once the child has ended. Throws Failure when somebody else was told of its end.
std::optional<int> statusOfChild()
{
    std::optional<int> ended;
    int reason = 0;
    Ending::change([&ended, &reason](Ending::Record& record) {
        int status = 0;
        const pid_t waited = waitpid(record.child, &status, WNOHANG);
        if (waited == record.child) {
            ended = status;
        }
        if (waited != 0) {
            reason = waited < 0 ? errno : 0;
            record.child = 0; // the number may be another process's by now
        }
    });
    if (reason != 0) {
        throw Failure("the tool's end", reason);
    }
    return ended;
}

void giveUp()
{
    Ending::change([](Ending::Record& record) { Ending::endChild(record, patience); });
}

} // namespace

std::string ToolRun::document(std::chrono::milliseconds time, const std::function<void()>& progress)
{
    const auto deadline = std::chrono::steady_clock::now() + time;
    Pipe output;
    start(m_start, output);
    output.closeWriting();
    std::string document;
    std::optional<int> status;
    bool open = true;
    while (!(status = statusOfChild())) {
        if (std::chrono::steady_clock::now() >= deadline) {
            giveUp();
            throw Failure(m_path + ": gave no document in " +
                          std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) +
                          " seconds");
        }
        pollfd ready = {open ? output.reading() : -1, POLLIN, 0};
        poll(&ready, 1, turn);
        open = open && output.drain(document);
        if (document.size() > largestDocument) {
            giveUp();
            throw Failure(m_path + ": gave more than 16 MiB");
        }
        progress();
    }
    if (WIFSIGNALED(*status)) {
        throw Failure(m_path + ": ended by signal " + std::to_string(WTERMSIG(*status)));
    }
    output.drain(document);
    return document;
}

} // namespace inventory

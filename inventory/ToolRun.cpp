#include "inventory/ToolRun.h"

#include "inventory/Community.h"
#include "inventory/Document.h"
#include "inventory/Ending.h"
#include "inventory/Failure.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

extern char** environ; // POSIX leaves the declaration to the program

namespace inventory {

namespace {

namespace fs = std::filesystem;

constexpr const char* toolName = "SNMPDiscovery";
constexpr int turn = 20;       // milliseconds
constexpr long patience = 500; // milliseconds between SIGTERM and SIGKILL

bool isExecutable(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

std::optional<fs::path> onPath()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes the environment
    const char* const variable = std::getenv("PATH");
    std::istringstream folders(variable == nullptr ? "" : variable);
    std::string folder;
    while (std::getline(folders, folder, ':')) {
        const fs::path candidate = fs::path(folder.empty() ? "." : folder) / toolName;
        if (isExecutable(candidate)) {
            return candidate;
        }
    }
    return {};
}

bool isScript(const fs::path& path)
{
    std::array<char, 2> start = {};
    std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    return start[0] == '#' && start[1] == '!';
}

void writePrivate(const fs::path& path, const std::string& content)
{
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const auto size = static_cast<ssize_t>(content.size());
    const bool good = descriptor >= 0 && write(descriptor, content.data(), content.size()) == size;
    const int reason = errno;
    if (descriptor >= 0) {
        close(descriptor);
    }
    if (!good) {
        throw Failure(path.string(), reason);
    }
}

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

std::string ownFolder()
{
    std::error_code error;
#ifdef __APPLE__
    std::array<char, 4096> buffer = {};
    auto size = static_cast<std::uint32_t>(buffer.size());
    const fs::path self = _NSGetExecutablePath(buffer.data(), &size) == 0
                              ? fs::canonical(buffer.data(), error)
                              : fs::path();
#else
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
#endif
    return self.parent_path().string();
}

ToolRun::ToolRun(const std::optional<std::string>& choice)
{
    const fs::path beside = fs::path(ownFolder()) / toolName;
    if (choice) {
        if (!isExecutable(*choice)) {
            throw Failure(*choice + ": not executable");
        }
        m_path = *choice;
    } else if (isExecutable(beside)) {
        m_path = beside.string();
    } else if (const std::optional<fs::path> found = onPath()) {
        m_path = found->string();
    } else {
        throw Failure(std::string(toolName) + ": found neither beside this program nor on PATH");
    }
    // With a "/", so that POCO does not look for it on PATH.
    m_start = fs::absolute(m_path).string();
}

std::string ToolRun::mibs() const
{
    std::error_code error;
    return (fs::canonical(m_path, error).parent_path() / "mibs").string();
}

void ToolRun::configure(const std::string& community, const PrivateFolder& folder)
{
    if (community == "public") {
        return;
    }
    std::error_code error;
    const fs::path executable = fs::canonical(m_path, error);
    if (error || isScript(executable)) {
        throw Failure(m_path + ": " +
                      (error ? error.message()
                             : "a script, which cannot be given the community in secret; name "
                               "the executable by --tool"));
    }
    const fs::path own = folder.path();
    fs::create_symlink(executable, own / toolName, error);
    std::error_code absent; // a missing folder is one
    if (!error && fs::is_directory(mibs(), absent)) {
        fs::create_directory_symlink(mibs(), own / "mibs", error);
    }
    if (error) {
        throw Failure(own.string() + ": " + error.message());
    }
    // POCO reads a file of each of these types, from the nearest folder at or above the
    // executable's that has one, and above this one is a folder that everybody can write to.
    const std::array<std::pair<const char*, std::string>, 4> files = {
        {{".properties", communityProperties(community)},
         {".ini", "\n"},
         {".json", "{}\n"},
         {".xml", "<config/>\n"}}};
    for (const auto& [type, content] : files) {
        writePrivate(own / (std::string(toolName) + type), content);
    }
    m_start = (own / toolName).string();
}

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

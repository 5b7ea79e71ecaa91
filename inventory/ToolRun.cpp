#include "inventory/ToolRun.h"

#include "inventory/Community.h"
#include "inventory/Failure.h"

#include <fcntl.h>
#include <unistd.h>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace inventory {

namespace {

namespace fs = std::filesystem;

constexpr const char* toolName = "SNMPDiscovery";

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

} // namespace inventory

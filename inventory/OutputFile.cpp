#include "inventory/OutputFile.h"

#include "inventory/Ending.h"
#include "inventory/Failure.h"

#include <sys/stat.h>

#include <fcntl.h>
#include <stdlib.h> // mkstemp is POSIX: <cstdlib> does not promise it
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace inventory {

namespace {

namespace fs = std::filesystem;

constexpr int mostLinks = 40; // as Linux follows

fs::path targetOf(fs::path path)
{
    std::error_code error;
    for (int links = 0; fs::is_symlink(path, error); ++links) {
        if (links == mostLinks) {
            throw Failure(path.string() + ": too many links");
        }
        // An absolute target replaces the whole path.
        path = path.parent_path() / fs::read_symlink(path, error);
        if (error) {
            throw Failure(path.string() + ": " + error.message());
        }
    }
    return path;
}

mode_t creationMask()
{
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

bool writeAll(int descriptor, const std::string& content)
{
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = write(descriptor, content.data() + written, content.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

/// Makes the new name last. A file system that cannot do that for a folder is no failure: the file
/// is there.
void syncFolder(const fs::path& folder)
{
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

} // namespace

OutputFile::OutputFile(const std::string& path)
{
    const fs::path target = targetOf(path);
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (status.type() != fs::file_type::not_found && !fs::is_regular_file(status)) {
        throw Failure(path + ": " + (error ? error.message() : "no regular file"));
    }
    m_target = target.string();
}

void OutputFile::replace(const std::string& content) const
{
    const fs::path target = m_target;
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string temporary = (folder / ".snmp-inventory-XXXXXX").string();
    int descriptor = -1;
    int reason = 0;
    Ending::change([&](Ending::Record& record) {
        descriptor = mkstemp(temporary.data());
        reason = errno;
        record.file = descriptor < 0 ? "" : temporary;
    });
    if (descriptor < 0) {
        throw Failure(m_target, reason);
    }
    bool good = writeAll(descriptor, content) && fchmod(descriptor, 0644 & ~creationMask()) == 0 &&
                fsync(descriptor) == 0;
    reason = errno;
    if (close(descriptor) != 0 && good) {
        good = false;
        reason = errno;
    }
    Ending::change([&](Ending::Record& record) {
        if (good && std::rename(temporary.c_str(), m_target.c_str()) != 0) {
            good = false;
            reason = errno;
        }
        if (!good) {
            unlink(temporary.c_str());
        }
        record.file.clear();
    });
    if (!good) {
        throw Failure(m_target, reason);
    }
    syncFolder(folder);
}

} // namespace inventory

#pragma once

#include <string>

namespace inventory {

/// Replaces a file in one step, or not at all.
class OutputFile
{
public:
    /// `path` may be a link: its target is replaced, or made. Throws Failure when something is
    /// there that is no regular file.
    explicit OutputFile(const std::string& path);

    /// Writes `content` into a temporary file beside the target, to the disk, and gives it the
    /// target's name; its mode is 0644 less the umask. Throws Failure; then there is no temporary
    /// file, and the target is as it was.
    void replace(const std::string& content) const;

private:
    std::string m_target;
};

} // namespace inventory

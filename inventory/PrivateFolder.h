#pragma once

#include <string>

namespace inventory {

/// A new folder that only this user may enter (0700), below the system's folder for temporary
/// files. It is removed with all that it holds when the object, or the process by a signal, ends.
class PrivateFolder
{
public:
    /// Throws Failure.
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace inventory

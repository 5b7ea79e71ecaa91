#pragma once

#include "inventory/PrivateFolder.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace inventory {

/// The discovery tool, and how it is started.
class ToolRun
{
public:
    /// `choice` is the user's; without one it is the tool beside this program, or the first on
    /// PATH. Throws Failure when there is none that can be executed.
    explicit ToolRun(const std::optional<std::string>& choice);

    /// Makes the tool use `community` without an argument: it is started through a link in
    /// `folder`, where it finds a properties file, an empty file of each other type of
    /// configuration (so that it looks for none in the folders above), and a link to its MIB
    /// modules. Does nothing for "public". Throws Failure when the tool is a script, such as the
    /// launcher of a package: that would start the executable by another path.
    void configure(const std::string& community, const PrivateFolder& folder);

    /// Starts the tool and gives what it writes to standard output. Its standard error is this
    /// process's. Calls `progress` about every 20 ms on the calling thread.
    ///
    /// Throws Failure when it cannot be started, does not end by itself within `time`, which ends
    /// it, when SIGCHLD is ignored, so that its end is not told, or writes more than a document may
    /// have. Its exit code does not count.
    std::string document(std::chrono::milliseconds time, const std::function<void()>& progress);

    /// The folder of MIB modules beside the executable, whether it is there or not.
    std::string mibs() const;

private:
    std::string m_path;
    std::string m_start; ///< the path that it is started by
};

/// The folder of this program's executable; empty where the system does not tell.
std::string ownFolder();

} // namespace inventory

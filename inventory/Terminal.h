#pragma once

#include <poll.h>
#include <unistd.h>

#include <string>

namespace inventory {

/// Erases the line that the cursor is in (ECMA-48, EL).
constexpr const char* clearLine = "\r\x1b[K";

/// Writes `text` to standard error, unless that takes nothing now, as a terminal that the user
/// stopped (Ctrl-S): writing would wait for the user. False when nothing was written. Any thread.
inline bool writeIfReady(const std::string& text)
{
    pollfd ready = {STDERR_FILENO, POLLOUT, 0};
    return poll(&ready, 1, 0) == 1 && (ready.revents & POLLOUT) != 0 &&
           write(STDERR_FILENO, text.data(), text.size()) > 0;
}

} // namespace inventory

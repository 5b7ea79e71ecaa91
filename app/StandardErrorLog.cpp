#include "app/StandardErrorLog.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

namespace {

#ifdef MSG_NOSIGNAL
constexpr int withoutSignal = MSG_NOSIGNAL;
#else
constexpr int withoutSignal = 0;
#endif

/// A pipe that poll() reports as ready takes this many octets without blocking.
constexpr std::size_t atOnce = PIPE_BUF;

/// Whether the other end is open and there is room.
bool ready(int descriptor)
{
    pollfd question = {descriptor, POLLOUT, 0};
    return poll(&question, 1, 0) == 1 && question.revents == POLLOUT;
}

/// The number of octets written; 0 or less if none.
ssize_t writeSome(int descriptor, const char* text, std::size_t length)
{
    const ssize_t sent = send(descriptor, text, length, MSG_DONTWAIT | withoutSignal);
    if (sent >= 0 || errno != ENOTSOCK) {
        return sent;
    }
    return ready(descriptor) ? ::write(descriptor, text, length) : 0;
}

} // namespace

int StandardErrorLog::withoutWaiting(int descriptor)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return descriptor;
    }
    // Other systems have no such folder, or its entries are duplicates that share the flags
    // (macOS). There the descriptor itself is used.
    const std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    const int own = open(name.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    return own >= 0 ? own : descriptor;
}

void StandardErrorLog::write(int descriptor, const char* text)
{
    const int error = errno;
    std::size_t left = std::strlen(text);
    while (left > 0) {
        const ssize_t written = writeSome(descriptor, text, std::min(left, atOnce));
        if (written <= 0) {
            break;
        }
        text += written;
        left -= static_cast<std::size_t>(written);
    }
    errno = error;
}

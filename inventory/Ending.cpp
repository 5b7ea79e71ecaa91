#include "inventory/Ending.h"

#include "inventory/Failure.h"

#include <sys/wait.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <thread>

namespace inventory {

namespace {

constexpr std::array<int, 2> watched = {SIGTERM, SIGINT};
constexpr long patienceWithChild = 1000; // milliseconds
constexpr int step = 10;                 // milliseconds

std::mutex mutex;
Ending::Record record;
std::array<int, 2> wake = {-1, -1}; // pipe

extern "C" void wakeUp(int signal)
{
    const int saved = errno;
    const auto octet = static_cast<unsigned char>(signal);
    // A full pipe has other signals in it, and one of them ends the process.
    static_cast<void>(!write(wake[1], &octet, 1));
    errno = saved;
}

void removeAll()
{
    Ending::endChild(record, patienceWithChild);
    std::error_code ignored;
    if (!record.file.empty()) {
        std::filesystem::remove(record.file, ignored);
    }
    // Net-SNMP may be writing into the folder meanwhile.
    for (int tries = 0; tries < 3 && !record.folder.empty(); ++tries) {
        std::filesystem::remove_all(record.folder, ignored);
    }
    if (record.progress) {
        static_cast<void>(!write(STDERR_FILENO, "\r\x1b[K", 4));
    }
}

[[noreturn]] void endBySignal(int signal)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, nullptr);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    static_cast<void>(raise(signal));
    _exit(128 + signal);
}

void waitForSignal()
{
    unsigned char signal = 0;
    while (read(wake[0], &signal, 1) != 1) {
        if (errno != EINTR) {
            return;
        }
    }
    // Kept for good: from here on nothing new is made.
    mutex.lock();
    removeAll();
    endBySignal(signal);
}

} // namespace

void Ending::watch()
{
    if (pipe(wake.data()) != 0) {
        throw Failure("no pipe", errno);
    }
    for (const int end : wake) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    fcntl(wake[1], F_SETFL, O_NONBLOCK);
    try {
        std::thread(&waitForSignal).detach();
    } catch (const std::system_error& error) {
        throw Failure(std::string("no thread: ") + error.what());
    }
    for (const int signal : watched) {
        struct sigaction former = {};
        sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) {
            struct sigaction action = {};
            action.sa_handler = &wakeUp;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
        }
    }
}

void Ending::change(const std::function<void(Record&)>& action)
{
    const std::lock_guard<std::mutex> lock(mutex);
    action(record);
}

void Ending::endChild(Record& ending, long patience)
{
    if (ending.child == 0) {
        return;
    }
    kill(ending.child, SIGTERM);
    for (long waited = 0; waitpid(ending.child, nullptr, WNOHANG) == 0; waited += step) {
        if (waited >= patience) {
            kill(ending.child, SIGKILL);
            waitpid(ending.child, nullptr, 0);
            break;
        }
        poll(nullptr, 0, step);
    }
    ending.child = 0;
}

} // namespace inventory

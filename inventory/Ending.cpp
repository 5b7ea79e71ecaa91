#include "inventory/Ending.h"

#include "inventory/Failure.h"
#include "inventory/Terminal.h"

#include <sys/wait.h>

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

constexpr std::array<int, 4> watched = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};
constexpr long patienceWithChild = 1000; // milliseconds
constexpr int step = 10;                 // milliseconds

struct State
{
    std::mutex mutex;
    Ending::Record record;
};

/// Never destroyed: the thread that takes the signals may use it while the process exits.
State& state()
{
    static State* const only = new State;
    return *only;
}

void removeAll()
{
    Ending::Record& record = state().record;
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
        writeIfReady(clearLine);
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

void waitForSignal(sigset_t signals)
{
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
        // Interrupted: some systems report that.
    }
    // Kept for good: from here on nothing new is made.
    state().mutex.lock();
    removeAll();
    endBySignal(signal);
}

} // namespace

void Ending::watch()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : watched) {
        struct sigaction former = {};
        sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) {
            sigaddset(&signals, signal);
        }
    }
    // Every later thread inherits this, so that only sigwait takes the signals.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(&waitForSignal, signals).detach();
    } catch (const std::system_error& error) {
        throw Failure(std::string("no thread: ") + error.what());
    }
}

sigset_t Ending::maskOfChild()
{
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    for (const int signal : watched) {
        sigdelset(&mask, signal);
    }
    return mask;
}

void Ending::change(const std::function<void(Record&)>& action)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    action(state().record);
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

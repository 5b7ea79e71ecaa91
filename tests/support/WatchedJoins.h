#pragma once

#include <pthread.h>

#include <vector>

/// Records which threads this thread joins, for a scope. A program that compiles WatchedJoins.cpp
/// in gets a `pthread_join` of its own in place of the system's. At most one at a time.
class WatchedJoins
{
public:
    WatchedJoins();
    ~WatchedJoins();
    WatchedJoins(const WatchedJoins&) = delete;
    WatchedJoins& operator=(const WatchedJoins&) = delete;

    /// In the order of joining.
    const std::vector<pthread_t>& threads() const noexcept { return m_threads; }
    /// From now on threads are not joined, and a failure is reported.
    void fail() noexcept { m_fails = true; }

    /// False beside ThreadSanitizer, which needs the function for itself, and where a library's
    /// calls do not reach the program's own (macOS): then nothing is recorded and nothing fails,
    /// and a test that depends on it has to skip itself.
    static bool supported() noexcept;

    /// What `pthread_join` does.
    int join(pthread_t thread, void** result);

private:
    std::vector<pthread_t> m_threads;
    bool m_fails = false;
};

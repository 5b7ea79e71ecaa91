#include "inventory/Pool.h"

#include <Poco/Event.h>
#include <Poco/Exception.h>
#include <Poco/Runnable.h>
#include <Poco/Thread.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace inventory {

namespace {

constexpr int stackSize = 512 * 1024; // octets
constexpr long progressEvery = 100;   // milliseconds

/// A thread's work, owned by the caller. (What Poco::Thread::startFunc makes of a function is
/// shared with the thread by a counter inside POCO, where ThreadSanitizer cannot follow it.)
class Serving : public Poco::Runnable
{
public:
    explicit Serving(std::function<void()> work) : m_work(std::move(work)) {}
    void run() override { m_work(); }

private:
    std::function<void()> m_work;
};

/// Threads that are joined when this is destroyed.
class Threads
{
public:
    Threads() = default;
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads()
    {
        for (const std::unique_ptr<Poco::Thread>& thread : m_threads) {
            thread->join();
        }
    }

    std::size_t size() const { return m_threads.size(); }

    /// Throws Poco::SystemException when no thread can be started.
    void start(Poco::Runnable& work)
    {
        auto thread = std::make_unique<Poco::Thread>();
        thread->setStackSize(stackSize);
        m_threads.reserve(m_threads.size() + 1);
        thread->start(work);
        m_threads.push_back(std::move(thread));
    }

private:
    std::vector<std::unique_ptr<Poco::Thread>> m_threads;
};

} // namespace

void workInParallel(std::size_t count, std::size_t parallel,
                    const std::function<void(std::size_t)>& work,
                    const std::function<void(std::size_t)>& progress)
{
    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> done{0};
    Poco::Event allDone;
    Serving serving([&] {
        for (std::size_t number = next++; number < count; number = next++) {
            try {
                work(number);
            } catch (...) {
                // The entry keeps what it had.
            }
            if (++done == count) {
                allDone.set();
            }
        }
    });
    Threads threads;
    while (threads.size() < std::min(count, parallel)) {
        try {
            threads.start(serving);
        } catch (const Poco::Exception&) {
            if (threads.size() == 0) {
                throw;
            }
            break;
        }
    }
    while (threads.size() != 0 && !allDone.tryWait(progressEvery)) {
        progress(done);
    }
}

} // namespace inventory

#include "inventory/Pool.h"

#include <Poco/Event.h>
#include <Poco/Exception.h>
#include <Poco/Thread.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace inventory {

namespace {

constexpr int stackSize = 512 * 1024; // octets
constexpr long progressEvery = 100;   // milliseconds

} // namespace

void workInParallel(std::size_t count, std::size_t parallel,
                    const std::function<void(std::size_t)>& work,
                    const std::function<void(std::size_t)>& progress)
{
    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> done{0};
    Poco::Event allDone;
    const auto serve = [&] {
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
    };
    std::vector<std::unique_ptr<Poco::Thread>> threads;
    while (threads.size() < std::min(count, parallel)) {
        auto thread = std::make_unique<Poco::Thread>();
        thread->setStackSize(stackSize);
        try {
            thread->startFunc(serve);
        } catch (const Poco::Exception&) {
            if (threads.empty()) {
                throw;
            }
            break;
        }
        threads.push_back(std::move(thread));
    }
    while (!threads.empty() && !allDone.tryWait(progressEvery)) {
        progress(done);
    }
    for (const std::unique_ptr<Poco::Thread>& thread : threads) {
        thread->join();
    }
}

} // namespace inventory

// The set of responders, to which the workers add at the same time.

#include "tests/app/TestApp.h"

#include <Poco/AutoPtr.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Responders = std::set<std::string>;

class AddIP : public testing::Test
{
protected:
    Poco::AutoPtr<TestApp> application{new TestApp};
};

TEST_F(AddIP, KeepsOneCopyOfEachAddress)
{
    application->AddIP("192.0.2.9");
    application->AddIP("192.0.2.10");
    application->AddIP("192.0.2.9");
    EXPECT_EQ(application->m_responders, (Responders{"192.0.2.10", "192.0.2.9"}));
}

TEST_F(AddIP, WaitsForTheMutex)
{
    application->m_mutex.lock();
    const auto added = std::async(std::launch::async, [&] { application->AddIP("192.0.2.9"); });
    EXPECT_EQ(added.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_EQ(application->m_responders, Responders{});
    application->m_mutex.unlock();
    added.wait();
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.9"});
}

TEST_F(AddIP, ReleasesTheMutex)
{
    application->AddIP("192.0.2.9");
    bool locked = false;
    std::thread([&] {
        locked = application->m_mutex.tryLock();
        if (locked) {
            application->m_mutex.unlock();
        }
    }).join();
    EXPECT_TRUE(locked);
}

TEST_F(AddIP, TakesAddressesOfManyThreadsAtOnce)
{
    constexpr int threads = 8;
    constexpr int addresses = 200;
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int thread = 0; thread < threads; ++thread) {
        workers.emplace_back([&] {
            for (int each = 0; each < addresses; ++each) {
                application->AddIP("192.0.2." + std::to_string(each));
            }
        });
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    EXPECT_EQ(application->m_responders.size(), static_cast<std::size_t>(addresses));
}

} // namespace

#pragma once

#include <Poco/Exception.h>

#include <string>

/// Makes every POSIX mutex that this thread locks or unlocks report a failure, for a scope. A
/// program that compiles FailingMutex.cpp in gets functions of its own in place of the system's. At
/// most one at a time.
class FailingMutex
{
public:
    enum class Call
    {
        lock,  ///< does not lock
        unlock ///< unlocks all the same
    };

    explicit FailingMutex(Call call) noexcept;
    ~FailingMutex();
    FailingMutex(const FailingMutex&) = delete;
    FailingMutex& operator=(const FailingMutex&) = delete;

    /// False beside ThreadSanitizer, which needs these functions for itself: then nothing fails
    /// here, and a test that depends on it has to skip itself.
    static bool supported() noexcept;
};

/// The message of the Poco::SystemException that `body` throws while no mutex can be locked;
/// "nothing thrown" if it throws none.
template <class Body>
std::string failureToLock(Body body)
{
    try {
        const FailingMutex failing(FailingMutex::Call::lock);
        body();
    } catch (const Poco::SystemException& exception) {
        return exception.message();
    }
    return "nothing thrown";
}

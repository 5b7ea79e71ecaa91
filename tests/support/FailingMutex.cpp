#include "tests/support/FailingMutex.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <optional>

#if defined(__SANITIZE_THREAD__)
#define CANNOT_REPLACE_MUTEXES
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CANNOT_REPLACE_MUTEXES
#endif
#endif

namespace {

thread_local std::optional<FailingMutex::Call> failing;

} // namespace

FailingMutex::FailingMutex(Call call) noexcept
{
    failing = call;
}

FailingMutex::~FailingMutex()
{
    failing.reset();
}

#ifdef CANNOT_REPLACE_MUTEXES

bool FailingMutex::supported() noexcept
{
    return false;
}

#else

bool FailingMutex::supported() noexcept
{
    return true;
}

namespace {

using Function = int (*)(pthread_mutex_t*);

int callReal(Function& real, const char* name, pthread_mutex_t* mutex)
{
    if (real == nullptr) { // not a static of the function, which might lock a mutex itself
        real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
    }
    return real(mutex);
}

Function realLock = nullptr;
Function realUnlock = nullptr;

} // namespace

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    return failing == FailingMutex::Call::lock ? EINVAL
                                               : callReal(realLock, "pthread_mutex_lock", mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    const int result = callReal(realUnlock, "pthread_mutex_unlock", mutex);
    return failing == FailingMutex::Call::unlock ? EPERM : result;
}

} // extern "C"

#endif

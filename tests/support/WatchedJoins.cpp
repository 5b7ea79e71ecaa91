#include "tests/support/WatchedJoins.h"

#include <dlfcn.h>

#include <cerrno>
#include <stdexcept>

#if defined(__SANITIZE_THREAD__) || defined(__APPLE__)
#define CANNOT_REPLACE_JOIN
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CANNOT_REPLACE_JOIN
#endif
#endif

namespace {

thread_local WatchedJoins* watching = nullptr;

int realJoin(pthread_t thread, void** result)
{
    using Function = int (*)(pthread_t, void**);
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_join"))(thread, result);
}

} // namespace

WatchedJoins::WatchedJoins()
{
    if (watching != nullptr) {
        throw std::logic_error("one watch at a time");
    }
    watching = this;
    m_threads.reserve(64); // a join may happen where nothing can be thrown
}

WatchedJoins::~WatchedJoins()
{
    watching = nullptr;
}

int WatchedJoins::join(pthread_t thread, void** result)
{
    m_threads.push_back(thread);
    return m_fails ? EINVAL : realJoin(thread, result);
}

#ifdef CANNOT_REPLACE_JOIN

bool WatchedJoins::supported() noexcept
{
    return false;
}

#else

bool WatchedJoins::supported() noexcept
{
    return true;
}

extern "C" int pthread_join(pthread_t thread, void** result)
{
    return watching == nullptr ? realJoin(thread, result) : watching->join(thread, result);
}

#endif

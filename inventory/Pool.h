#pragma once

#include <cstddef>
#include <functional>

namespace inventory {

/// Calls `work` with each number from 0 to `count` - 1 once, on up to `parallel` threads of its
/// own, and meanwhile `progress` about ten times a second on the calling thread with how many are
/// done. Returns when all are. What `work` throws is lost, with that number alone.
///
/// Throws Poco::SystemException if not one thread can be started; fewer threads than wanted only
/// make it slower.
void workInParallel(std::size_t count, std::size_t parallel,
                    const std::function<void(std::size_t)>& work,
                    const std::function<void(std::size_t)>& progress);

} // namespace inventory

#pragma once

#include <string>

/// Failures on purpose. The test program's linker puts wrappers before each allocation of the
/// library's own and each call into Net-SNMP that can fail (see tests/snmp/CMakeLists.txt). A
/// wrapper passes its call on, but for the one call that is due to fail.
///
/// Threads: only the calls of the thread that made the object count.
class FaultPoints
{
public:
    /// The call of this number fails while the object lives, the first one being 1. 0: none does.
    explicit FaultPoints(int due);
    ~FaultPoints();
    FaultPoints(const FaultPoints&) = delete;
    FaultPoints& operator=(const FaultPoints&) = delete;

    /// No further call counts.
    static void stopCounting();

    /// The function that failed; empty if there were fewer calls.
    static std::string failed();

    /// Whether two threads have ever been in snmp_sess_open at the same time.
    static bool sessionsWereOpenedAtOnce();

    /// Whether the call that is being made is the one. For the wrappers.
    static bool isDue(const char* function);
};

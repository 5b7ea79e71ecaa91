#pragma once

#include <string>

/// Injected failures. The linker wraps each allocation in the library's code and each call to
/// Net-SNMP that can fail (see tests/snmp/CMakeLists.txt). A wrapper calls the real function,
/// except for the one call that is due to fail.
///
/// Threads: only the calls of the thread that made the object count.
class FaultPoints
{
public:
    /// While the object lives, the call with this number fails, counted from 1; 0: none.
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

    /// For the wrappers: counts a call, and returns whether it is the one.
    static bool isDue(const char* function);
};

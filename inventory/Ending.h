#pragma once

#include <sys/types.h>

#include <csignal>
#include <functional>
#include <mutex>
#include <string>

namespace inventory {

/// What must not outlive the process: the child, the private folder, a temporary file. After
/// SIGTERM, SIGINT, SIGHUP or SIGQUIT, in whatever phase, a thread of its own ends and removes
/// them, and then the process by the same signal. A signal that was ignored when the process
/// started stays ignored, as nohup(1) has it.
///
/// Whoever makes such a thing makes it inside `change`, and so does whoever removes it, so that the
/// record is right at every moment. Any thread.
class Ending
{
public:
    struct Record
    {
        pid_t child = 0;       ///< 0 for none; not yet waited for
        std::string folder;    ///< empty for none
        std::string file;      ///< empty for none
        bool progress = false; ///< a line of progress stands on standard error
    };

    /// Begins to take the signals. Once, before any other thread is started. Throws Failure.
    static void watch();

    /// The signal mask for a program that is started: this thread's, without the signals that
    /// `watch` blocks.
    static sigset_t maskOfChild();

    /// Calls `action` with the record while nobody else has it. It must be brief.
    static void change(const std::function<void(Record&)>& action);

    /// Sends SIGTERM to the record's child, SIGKILL after `patience` milliseconds, and waits for
    /// its end. Inside `change` only.
    static void endChild(Record& record, long patience);
};

} // namespace inventory

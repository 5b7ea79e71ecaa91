#pragma once

#include "inventory/CommandLine.h"

namespace inventory {

/// One run: finds the agents, asks them, writes the report. The result is the exit code: 0 for a
/// report, 3 for a comparison that found differences. Throws Failure when there is no report; then
/// nothing was written. On the main thread, once a process. SIGPIPE must be ignored, so that a
/// reader that has gone is a failed write, and SIGCHLD must not be.
int run(const Settings& settings);

} // namespace inventory

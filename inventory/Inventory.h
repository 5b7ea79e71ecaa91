#pragma once

#include "inventory/CommandLine.h"

namespace inventory {

/// One run: finds the agents, asks them, writes the report. The result is the exit code: 0 for a
/// report, 3 for a comparison that found differences. Throws Failure when there is no report; then
/// nothing was written. On the main thread, once a process.
int run(const Settings& settings);

} // namespace inventory

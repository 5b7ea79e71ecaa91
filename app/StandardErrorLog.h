#pragma once

/// Net-SNMP's messages on standard error, written without ever waiting for whoever reads there: a
/// hostile agent can make Net-SNMP complain thousands of times, and a parent that does not read
/// its child's standard error would otherwise stop the run. What finds no room is dropped.
///
/// The descriptor itself is left as it is. It is shared with the parent and others, and so would be
/// the flag that keeps it from blocking. A pipe is opened once more instead, where the system can
/// do that (Linux); a socket is told with every message; for the rest, and for pipes elsewhere, the
/// message is written if the descriptor is ready. (There, several threads that find the last room
/// in a pipe at the same moment could still wait for its reader.)
class StandardErrorLog
{
public:
    /// Has Net-SNMP hand its messages over from now until it is shut down, unless its configuration
    /// names another place for them (logOption, see snmp.conf(5)); logTimestamp has no effect.
    /// On the main thread, before Net-SNMP is set up. Without memory nothing changes.
    static void install();

    /// A descriptor for `write` that leads to where `descriptor` does: one of its own, which is
    /// never closed, or `descriptor` itself.
    static int withoutWaiting(int descriptor);

    /// Writes `text`, or as much of it as `descriptor` takes at once. Leaves errno as it was. Any
    /// thread.
    static void write(int descriptor, const char* text);
};

#pragma once

/// Messages on standard error, written without ever waiting for whoever reads there. A hostile
/// agent can cause thousands of them, and a parent that does not read its child's standard error
/// would otherwise stop the run. What finds no room is dropped.
///
/// The descriptor itself is left as it is. It is shared with the parent and others, and so would be
/// the flag that keeps it from blocking. Instead:
/// - A pipe is opened once more where the system can do that (Linux).
/// - A socket is asked not to wait with every message.
/// - On anything else, and on pipes of other systems, a message is written if the descriptor is
///   ready. Several threads that find the last room in a pipe at the same moment could still wait
///   for its reader there.
class StandardErrorLog
{
public:
    /// A descriptor for `write` that leads to where `descriptor` does: one of its own, which is
    /// never closed, or `descriptor` itself.
    static int withoutWaiting(int descriptor);

    /// Writes `text`, or as much of it as `descriptor` takes at once. Leaves errno as it was. Any
    /// thread.
    static void write(int descriptor, const char* text);
};

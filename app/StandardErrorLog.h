#pragma once

/// Writes messages to standard error without blocking. A hostile agent can cause thousands of
/// messages; without this, a parent that does not read its child's standard error would stop the
/// run. Text for which there is no room is dropped.
///
/// The descriptor keeps its flags: the parent and others share it, and would share O_NONBLOCK too.
/// Instead:
/// - A pipe is opened a second time, with flags of its own, where the system can do that (Linux).
/// - To a socket, each piece is sent with MSG_DONTWAIT.
/// - To anything else, and to pipes on other systems, a piece is written if poll() says that the
///   descriptor is ready. If several threads write to a pipe that is nearly full, one of them can
///   still block there.
class StandardErrorLog
{
public:
    /// A descriptor for `write` that refers to the same file as `descriptor`: a new one, which
    /// stays open until the process ends, or `descriptor` itself.
    static int withoutWaiting(int descriptor);

    /// Writes `text`, or as much of it as fits without blocking; reports nothing. Keeps errno. Any
    /// thread.
    static void write(int descriptor, const char* text);
};

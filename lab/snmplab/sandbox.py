"""Fresh namespaces around a whole lab.

The calling process unshares and forks. Its child is the first process of the new
process namespace and does all the work. When the caller ends, even by kill -9, the kernel
kills the child; and when the first process of a namespace ends, it kills every other
process there. With the last process the network namespaces, the mounts and the scratch
folder are gone.
"""

from __future__ import annotations

import errno
import os
import select
import signal
import sys
import traceback
from typing import Callable

from . import LabError, guard, kernel

# Exit codes of the lab itself, out of the way of the command's (as in docker and env).
EXIT_LAB_FAILED = 125
EXIT_NOT_EXECUTABLE = 126
EXIT_NOT_FOUND = 127
EXIT_SIGNAL_BASE = 128

# The lab mounts an empty file system here, so that what the machine keeps there
# (sockets, process ids) is hidden.
SCRATCH = "/run"

_IMPOSSIBLE = "lab: namespaces are impossible here"
_KINDS = kernel.CLONE_NEWNET | kernel.CLONE_NEWNS | kernel.CLONE_NEWPID
_ENDING_SIGNALS = (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM)


def run_isolated(
    body: Callable[[], int],
    user_namespace: bool = False,
    impossible: int = EXIT_LAB_FAILED,
) -> int:
    """Runs `body` as the first process of fresh network, mount and process namespaces
    and returns the exit code that it returned.

    An ordinary user gets a user namespace around them, root only when
    `user_namespace` asks for it or plain namespaces are denied. The calling process
    is left inside the new network namespace and must do nothing but end. A LabError
    from `body` is printed and becomes EXIT_LAB_FAILED. If the system denies the
    namespaces, the result is `impossible`. A signal that ends the caller ends the lab."""
    if sys.platform != "linux":
        print(f"{_IMPOSSIBLE}: this is not Linux", file=sys.stderr)
        return impossible
    outside = guard.outside_identities()
    try:
        _unshare(user_namespace or os.geteuid() != 0)
    except OSError as error:
        print(f"{_IMPOSSIBLE}: {error}", file=sys.stderr)
        return impossible
    alive, keep_open = os.pipe()
    sys.stdout.flush()
    sys.stderr.flush()
    child = os.fork()
    if child == 0:
        os.close(keep_open)
        _be_first_process(body, outside, alive, impossible)
    os.close(alive)
    return _supervise(child)


def _unshare(user_namespace: bool) -> None:
    user, group = os.geteuid(), os.getegid()
    if not user_namespace:
        try:
            kernel.unshare(_KINDS)
            return
        except OSError as error:
            if error.errno != errno.EPERM:
                raise
    kernel.unshare(_KINDS | kernel.CLONE_NEWUSER)
    # Without it the kernel refuses the group map to an ordinary user
    # (user_namespaces(7)).
    _write("/proc/self/setgroups", "deny")
    _write("/proc/self/uid_map", f"0 {user} 1")
    _write("/proc/self/gid_map", f"0 {group} 1")


def _write(path: str, text: str) -> None:
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def _be_first_process(
    body: Callable[[], int], outside, alive: int, impossible: int
) -> None:
    """Never returns."""
    status = EXIT_LAB_FAILED
    try:
        kernel.die_with_parent()
        if select.select([alive], [], [], 0)[0]:
            os._exit(status)  # the parent ended before the line above
        # Handlers, not SIG_IGN: an ignored signal would stay ignored in the lab's commands.
        for number in _ENDING_SIGNALS:
            signal.signal(number, lambda *_: None)
        guard.require_fresh(outside)
        if _mount():
            status = body()
        else:
            status = impossible
    except LabError as error:
        print(f"lab: {error}", file=sys.stderr)
    except BaseException:  # a fork must not return
        traceback.print_exc()
    finally:
        sys.stdout.flush()
        sys.stderr.flush()
        os._exit(status)


def _mount() -> bool:
    """False, with the reason printed, where a container denies a mount that the
    namespaces would allow."""
    try:
        kernel.keep_mounts_private()
        kernel.mount_proc()
        kernel.mount_scratch(SCRATCH)
        return True
    except OSError as error:
        print(f"{_IMPOSSIBLE}: {error}", file=sys.stderr)
        return False


def _supervise(child: int) -> int:
    ended_by = []

    def end(number, _frame):
        ended_by.append(number)
        os.kill(child, signal.SIGKILL)

    for number in _ENDING_SIGNALS:
        signal.signal(number, end)
    _, status = os.waitpid(child, 0)
    if ended_by:
        return EXIT_SIGNAL_BASE + ended_by[0]
    if os.WIFSIGNALED(status):
        return EXIT_SIGNAL_BASE + os.WTERMSIG(status)
    return os.WEXITSTATUS(status)

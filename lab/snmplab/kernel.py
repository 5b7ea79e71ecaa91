"""The few Linux system calls that Python's library lacks before 3.12.

Every function raises OSError with the call's errno and name.
"""

from __future__ import annotations

import ctypes
import os
import signal

CLONE_NEWNS = 0x00020000
CLONE_NEWUSER = 0x10000000
CLONE_NEWPID = 0x20000000
CLONE_NEWNET = 0x40000000

_MS_NOSUID = 0x2
_MS_NODEV = 0x4
_MS_NOEXEC = 0x8
_MS_REC = 0x4000
_MS_PRIVATE = 0x40000

_PR_SET_PDEATHSIG = 1

_libc = ctypes.CDLL(None, use_errno=True)
_libc.mount.argtypes = (
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.c_ulong,
    ctypes.c_char_p,
)


def _check(result: int, what: str) -> None:
    if result != 0:
        code = ctypes.get_errno()
        raise OSError(code, f"{what}: {os.strerror(code)}")


def unshare(flags: int) -> None:
    """Moves the calling process into fresh namespaces of the kinds in `flags`."""
    _check(_libc.unshare(ctypes.c_int(flags)), "unshare")


def set_network_namespace(descriptor: int) -> None:
    """Moves the calling thread into the network namespace behind `descriptor`."""
    _check(_libc.setns(ctypes.c_int(descriptor), ctypes.c_int(CLONE_NEWNET)), "setns")


def die_with_parent() -> None:
    """Makes the kernel kill the calling process when its parent ends, however it ends."""
    _check(
        _libc.prctl(_PR_SET_PDEATHSIG, ctypes.c_ulong(signal.SIGKILL), 0, 0, 0), "prctl"
    )


def keep_mounts_private() -> None:
    """Stops the mount namespace from passing its mounts on to the one it came from."""
    _check(_libc.mount(None, b"/", None, _MS_REC | _MS_PRIVATE, None), "mount /")


def mount_proc() -> None:
    """Mounts the proc file system of the caller's process namespace on /proc."""
    flags = _MS_NOSUID | _MS_NODEV | _MS_NOEXEC
    _check(_libc.mount(b"proc", b"/proc", b"proc", flags, None), "mount /proc")


def mount_scratch(folder: str) -> None:
    """Mounts an empty file system in memory on `folder`; it ends with the namespace."""
    flags = _MS_NOSUID | _MS_NODEV
    path = os.fsencode(folder)
    _check(_libc.mount(b"lab", path, b"tmpfs", flags, b"mode=755"), f"mount {folder}")

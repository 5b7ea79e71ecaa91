"""One network namespace for every node of the lab.

A namespace lives as long as a descriptor refers to it, so a node is an open
descriptor: nothing is registered anywhere, and nothing needs to be taken down.
"""

from __future__ import annotations

import contextlib
import os
import subprocess
import time
from typing import Iterator, List

from . import LabError, guard, kernel

_OPERATION_SECONDS = 60  # far more than any takes, also on a busy machine


class Namespace:
    """A network namespace. All methods belong to the one thread of the lab's first
    process, which is the only one that changes namespaces."""

    def __init__(self, name: str, descriptor: int):
        self.name = name
        self.descriptor = descriptor
        status = os.fstat(descriptor)
        self.identity = (status.st_dev, status.st_ino)

    @classmethod
    def current(cls, name: str) -> "Namespace":
        """The namespace that the caller is in."""
        return cls(name, os.open("/proc/self/ns/net", os.O_RDONLY | os.O_CLOEXEC))

    @classmethod
    def create(cls, name: str) -> "Namespace":
        """A new namespace, checked by guard.require_fresh. Its loopback device is up, it
        forwards nothing, and it accepts packets from any source (no reverse-path filter).
        The caller stays in its own namespace."""
        before = cls.current("before")
        kernel.unshare(kernel.CLONE_NEWNET)
        try:
            guard.require_fresh(frozenset([before.identity]))
            made = cls.current(name)
            # A new namespace may inherit these from the machine.
            _set("ipv4/ip_forward", "0")
            _set("ipv4/conf/all/rp_filter", "0")
            _set("ipv4/conf/default/rp_filter", "0")
            with contextlib.suppress(FileNotFoundError):  # a kernel without IPv6
                # Link-local addresses are usable at once.
                _set("ipv6/conf/default/accept_dad", "0")
            ip_batch(["link set lo up"])
        finally:
            kernel.set_network_namespace(before.descriptor)
            os.close(before.descriptor)
        return made

    @contextlib.contextmanager
    def entered(self) -> Iterator[None]:
        """A context in which the caller, its new sockets and its new processes are in this
        namespace. Raises LabError when the kernel did not switch."""
        before = Namespace.current("before")
        try:
            self._enter()
            yield
        finally:
            kernel.set_network_namespace(before.descriptor)
            os.close(before.descriptor)

    def start(self, command: List[str], **settings) -> subprocess.Popen:
        """Starts `command` in this namespace with the `settings` of subprocess.Popen.
        The lab's first process stays in the hub meanwhile, so the command is in another
        namespace than the first process: `guard` checks that. Raises LabError, without
        running the command, when the kernel did not move it here."""
        try:
            return subprocess.Popen(command, preexec_fn=self._enter, **settings)
        except subprocess.SubprocessError as error:
            raise LabError(f"refused: not in the namespace of {self.name}") from error

    def _enter(self) -> None:
        kernel.set_network_namespace(self.descriptor)
        if guard.identity() != self.identity:
            raise LabError(f"refused: not in the namespace of {self.name}")

    @property
    def path(self) -> str:
        """A path that `ip` takes for the name of this namespace."""
        return f"/proc/{os.getpid()}/fd/{self.descriptor}"


def ip_batch(lines: List[str]) -> None:
    """Runs `ip` commands, one a line, in the caller's namespace; raises LabError with
    the command's own words at the first that fails."""
    run(["ip", "-batch", "-"], "\n".join(lines) + "\n")


def run(command: List[str], text: str = "") -> str:
    """Runs `command` with `text` as its input and returns its output; raises LabError
    when it cannot be started or fails."""
    try:
        result = subprocess.run(
            command,
            input=text,
            text=True,
            capture_output=True,
            check=False,
            timeout=_OPERATION_SECONDS,
        )
    except FileNotFoundError as error:
        raise LabError(f"{command[0]} is not installed") from error
    except subprocess.TimeoutExpired as error:
        raise LabError(f"{command[0]} did not end") from error
    if result.returncode != 0:
        words = result.stderr.strip()
        raise LabError(f"{' '.join(command)} failed: {words}\n{text}".rstrip())
    return result.stdout


def wait_until(condition, what: str, seconds: float = _OPERATION_SECONDS) -> None:
    """Polls `condition` until it is true. Raises LabError naming `what` after
    `seconds`."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            raise LabError(f"{what}: not within {seconds} s")
        time.sleep(0.01)


def _set(name: str, value: str) -> None:
    with open(f"/proc/sys/net/{name}", "w", encoding="ascii") as file:
        file.write(value)

"""Measures a command: its time, memory and processor time, and how many datagrams its
network namespace received and lost meanwhile.

As a program it takes a time limit in seconds and the command. It prints the JSON object
that `observe` returns, which includes the command's standard output and error.
"""

from __future__ import annotations

import contextlib
import json
import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
from typing import List

_TURN = 0.02


def observe(command: List[str], seconds: float) -> dict:
    """Runs `command` and kills it after `seconds`. Returns "stopped" (whether it was
    killed), "code", "seconds", "memory" (peak resident set, kB), "processor" (seconds),
    "switches" (voluntary context switches of all threads), "waited" (seconds for which
    its first thread was ready to run but had no processor), "received" and "lost" (UDP
    datagrams; the lost ones found the receive buffer full), "out" and "err"."""
    before = _udp()
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        started = time.monotonic()
        child = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=out, stderr=err
        )
        watch = _Watch(child.pid, seconds)
        _, status, used = os.wait4(child.pid, 0)
        elapsed = time.monotonic() - started
        watch.end()
        child.returncode = os.waitstatus_to_exitcode(status)
        after = _udp()
        texts = []
        for file in (out, err):
            file.seek(0)
            texts.append(file.read().decode("utf-8", "replace"))
    return {
        "code": child.returncode,
        "seconds": round(elapsed, 4),
        "stopped": watch.stopped,
        "memory": _memory(watch.memory, used.ru_maxrss),
        "processor": round(used.ru_utime + used.ru_stime, 4),
        "switches": used.ru_nvcsw,
        "waited": round(watch.waited, 4),
        "received": after["InDatagrams"] - before["InDatagrams"],
        "lost": after["RcvbufErrors"] - before["RcvbufErrors"],
        "out": texts[0],
        "err": texts[1],
    }


class _Watch(threading.Thread):
    """Samples a process every 20 ms and kills it at its time limit."""

    def __init__(self, pid: int, seconds: float):
        super().__init__(daemon=True)
        self.memory, self.waited, self.stopped = 0, 0.0, False
        self._pid = pid
        # Not "_handle": from Python 3.13 on that is an attribute of Thread's own.
        self._descriptor = os.pidfd_open(pid)
        self._last = time.monotonic() + seconds
        self._ended = threading.Event()
        self.start()

    def run(self) -> None:
        while True:
            self.memory = max(self.memory, _peak(self._pid))
            self.waited = max(self.waited, _waited(self._pid))
            if self._ended.wait(_TURN):
                return
            if time.monotonic() > self._last and not self.stopped:
                self.stopped = True
                with contextlib.suppress(ProcessLookupError):
                    # By descriptor: the number may be reused once the process is reaped.
                    signal.pidfd_send_signal(self._descriptor, signal.SIGKILL)

    def end(self) -> None:
        """To be called once the process has been reaped."""
        self._ended.set()
        self.join()
        os.close(self._descriptor)


def _memory(seen: int, told: int) -> int:
    """The peak of the child in kB. The figure of wait4 is exact, but a child starts with
    this program's own peak, so it is used only if it is larger than that."""
    return told if told > _peak(os.getpid()) else seen


def _peak(pid: int) -> int:
    try:
        with open(f"/proc/{pid}/status", encoding="ascii") as file:
            for line in file:
                if line.startswith("VmHWM:"):
                    return int(line.split()[1])
    except OSError:
        pass
    return 0


def _waited(pid: int) -> float:
    """Zero where the kernel does not report it."""
    try:
        with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
            return int(file.read().split()[1]) / 1e9
    except (OSError, IndexError):
        return 0.0


def _udp() -> dict:
    with open("/proc/net/snmp", encoding="ascii") as file:
        lines = [line.split()[1:] for line in file if line.startswith("Udp:")]
    return dict(zip(lines[0], map(int, lines[1])))


def main(arguments) -> int:
    """The program."""
    json.dump(observe(arguments[2:], float(arguments[1])), sys.stdout)
    return 0

"""What a command costs: runs one and tells its time, memory and processor time, and the
datagrams that the namespace received and lost meanwhile.

Run as a program with the most seconds that the command may take and the command; prints
one JSON object (see `observe`), standard output and error of the command in it.
"""

from __future__ import annotations

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
from typing import List

_TURN = 0.002


def observe(command: List[str], seconds: float) -> dict:
    """Runs `command`, killed after so many seconds ("stopped"), and returns "code",
    "seconds", "memory" (kB of resident memory at the most), "processor" (seconds),
    "switches" (voluntary, of all threads), "waited" (seconds that its first thread was
    ready to run and had no processor), "received" and "lost" (UDP datagrams, lost to
    full receive buffers), "out" and "err"."""
    before = _udp()
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        started = time.monotonic()
        child = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=out, stderr=err
        )
        memory, waited, stopped = 0, 0.0, False
        while True:
            # Asked for while it runs: what wait4 tells counts this program's too.
            memory = max(memory, _peak(child.pid))
            waited = max(waited, _waited(child.pid))
            pid, status, used = os.wait4(child.pid, os.WNOHANG)
            elapsed = time.monotonic() - started
            if pid:
                break
            if elapsed > seconds and not stopped:
                os.kill(child.pid, signal.SIGKILL)
                stopped = True
            time.sleep(_TURN)
        child.returncode = os.waitstatus_to_exitcode(status)
        after = _udp()
        texts = []
        for file in (out, err):
            file.seek(0)
            texts.append(file.read().decode("utf-8", "replace"))
    return {
        "code": child.returncode,
        "seconds": round(elapsed, 4),
        "stopped": stopped,
        "memory": memory,
        "processor": round(used.ru_utime + used.ru_stime, 4),
        "switches": used.ru_nvcsw,
        "waited": round(waited, 4),
        "received": after["InDatagrams"] - before["InDatagrams"],
        "lost": after["RcvbufErrors"] - before["RcvbufErrors"],
        "out": texts[0],
        "err": texts[1],
    }


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
    """Zero where the kernel does not tell."""
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

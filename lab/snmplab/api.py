"""A lab in one call, for tests: each call is a process with namespaces of its own, so
calls run side by side."""

from __future__ import annotations

import dataclasses
import json
import pathlib
import subprocess
import sys
import tempfile
from typing import List, Mapping, Optional, Sequence, Tuple, Union

from . import LabError
from . import capture as capturing
from .agents import python_program

LAB = pathlib.Path(__file__).resolve().parent.parent / "lab"


@dataclasses.dataclass(frozen=True)
class Outcome:
    """The result of a command that ran in a lab."""

    code: int
    out: bytes
    err: bytes
    seconds: float  # of the command, without the lab's own; 0 when the lab failed
    datagrams: Tuple[capturing.Datagram, ...]  # empty without a capture


def run_in_lab(
    topology: Union[str, Mapping],
    command: Sequence[str],
    *,
    capture: bool = False,
    options: Sequence[str] = (),
    env: Optional[Mapping[str, str]] = None,
    timeout: float = 60,
) -> Outcome:
    """Runs `command` on the host of `topology` (as `lab --topology` takes it, or the
    JSON as data) and returns what became of it; nothing is read from standard input.
    Raises subprocess.TimeoutExpired after `timeout` seconds, the lab ended."""
    source = topology if isinstance(topology, str) else json.dumps(topology)
    line: List[str] = [sys.executable, str(LAB), "--topology", source, *options]
    with tempfile.TemporaryDirectory(prefix="snmplab-") as folder:
        packets = pathlib.Path(folder) / "packets"
        report = pathlib.Path(folder) / "report"
        line += ["--report", str(report)]
        if capture:
            line += ["--capture", str(packets)]
        done = subprocess.run(
            [*line, "--", *command],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            check=False,
            env=env,
            timeout=timeout,
        )
        seconds = 0.0
        if report.exists():
            seconds = json.loads(report.read_text("ascii"))["seconds"]
        found = capturing.load(packets) if packets.exists() else []
    return Outcome(done.returncode, done.stdout, done.stderr, seconds, tuple(found))


def observe_in_lab(
    topology: Union[str, Mapping],
    command: Sequence[str],
    *,
    seconds: float = 60,
    env: Optional[Mapping[str, str]] = None,
) -> dict:
    """Runs `command` on the host of `topology`, `seconds` at most, and returns what it
    cost: see observer.observe. Raises LabError when the lab fails."""
    line = python_program("observer", str(seconds), *command)
    outcome = run_in_lab(topology, line, env=env, timeout=seconds + 120)
    if outcome.code != 0:
        raise LabError(outcome.err.decode("utf-8", "replace"))
    return json.loads(outcome.out)

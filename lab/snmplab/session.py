"""One lab from the first bridge to the command's exit code."""

from __future__ import annotations

import json
import os
import pathlib
import select
import subprocess
import sys
import time
from typing import List, Optional

from . import LabError, guard, sandbox
from .agents import Agents, python_program
from .namespaces import Namespace
from .network import Network
from .topology import Topology

_CAPTURE_SECONDS = 20


class Session:
    """Builds a lab and runs one command in it. Belongs to the first process of a fresh
    sandbox, which is the only place where it works."""

    def __init__(
        self,
        topology: Topology,
        capture: str = "",
        report: str = "",
        verbose: bool = False,
    ):
        """`capture` and `report` are files to write, if not empty."""
        self._topology = topology
        self._capture = capture
        self._report = report
        self._verbose = verbose
        self._started = time.monotonic()
        self._scratch = pathlib.Path(sandbox.SCRATCH)

    def run(self, command: List[str]) -> int:
        """Runs `command` on the host with the caller's input, output and directory and
        returns its exit code (128 and the signal's number when a signal ended it).
        Raises LabError when the lab does not come up or an agent ended in between."""
        network = Network(self._topology)
        self._say(f"{len(self._topology.subnets)} subnets are up")
        agents = Agents(self._topology, network, self._scratch / "agents")
        self._say(f"{len(self._topology.agents)} agents answer")
        temporary = self._scratch / "tmp"
        temporary.mkdir()
        environment = dict(os.environ, TMPDIR=str(temporary))
        environment[guard.NAME_VARIABLE] = self._topology.name
        environment[guard.NAMESPACE_VARIABLE] = guard.format_identity(
            network.host.identity
        )
        sniffer = self._start_capture(network.host)
        self._say(f"runs {' '.join(command)}")
        started = time.monotonic()
        status = _run(network.host, command, environment)
        seconds = time.monotonic() - started
        self._say(f"the command ended with {status}")
        if sniffer is not None:
            sniffer.terminate()
            if sniffer.wait(_CAPTURE_SECONDS) != 0:
                raise LabError("the capture failed")
        agents.require_alive()
        if self._report:
            _write(self._report, {"code": status, "seconds": seconds})
        return status

    def _start_capture(self, host: Namespace) -> Optional[subprocess.Popen]:
        if not self._capture:
            return None
        sniffer = host.start(
            python_program("capture", self._capture),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
        )
        readable = select.select([sniffer.stdout], [], [], _CAPTURE_SECONDS)[0]
        if not readable or sniffer.stdout.readline() != b"ready\n":
            raise LabError("the capture did not start")
        return sniffer

    def _say(self, text: str) -> None:
        if self._verbose:
            elapsed = time.monotonic() - self._started
            print(f"lab: {elapsed:.2f} s: {text}", file=sys.stderr, flush=True)


def _write(path: str, report: dict) -> None:
    try:
        pathlib.Path(path).write_text(json.dumps(report) + "\n", encoding="ascii")
    except OSError as error:
        raise LabError(f"report {path}: {error.strerror}") from error


def _run(host: Namespace, command: List[str], environment: dict) -> int:
    try:
        process = host.start(command, env=environment)
    except (FileNotFoundError, NotADirectoryError):
        print(f"lab: {command[0]}: not found", file=sys.stderr)
        return sandbox.EXIT_NOT_FOUND
    except OSError as error:
        print(f"lab: {command[0]}: {error.strerror}", file=sys.stderr)
        return sandbox.EXIT_NOT_EXECUTABLE
    status = process.wait()
    return status if status >= 0 else sandbox.EXIT_SIGNAL_BASE - status

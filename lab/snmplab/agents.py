"""Starts agents and waits until they answer."""

from __future__ import annotations

import dataclasses
import json
import os
import pathlib
import select
import socket
import subprocess
import sys
import time
from typing import List, Tuple

from . import LabError, ber, guard, message, snmpd
from .namespaces import Namespace
from .network import Network
from .topology import Agent, Topology

_READY_SECONDS = 30
_PACKAGE_PARENT = str(pathlib.Path(__file__).resolve().parent.parent)


def python_program(module: str, *arguments: str) -> List[str]:
    """The command that runs a module of this package. Python's own environment variables
    do not affect it."""
    code = f"import sys; sys.path.insert(0, {_PACKAGE_PARENT!r}); "
    code += f"from snmplab import {module}; sys.exit({module}.main(sys.argv))"
    return [sys.executable, "-I", "-B", "-c", code, *arguments]


class Agents:
    """The running agents of a lab. They end with the lab's first process."""

    def __init__(self, topology: Topology, network: Network, folder: pathlib.Path):
        """Starts all agents, then waits for each; raises LabError with the log of the
        first that does not come up."""
        self._folder = folder
        self._running: List[Tuple[Agent, subprocess.Popen]] = []
        for agent in topology.agents:
            own = folder / agent.name
            own.mkdir(parents=True)
            namespace = network.agents[agent.name]
            if agent.kind == "snmpd":
                process = snmpd.start(agent, namespace, own, topology.interfaces)
            elif agent.kind == "program":
                process = _start_program(agent, namespace, own, topology.name)
            else:
                process = _start_responder(agent, namespace, own)
            self._running.append((agent, process))
        for agent, process in self._running:
            if agent.kind == "snmpd":
                self._await_answer(agent, process, network.agents[agent.name])
            else:
                self._await_line(agent, process)

    def require_alive(self) -> None:
        """Raises LabError, with the log, if an agent has ended before the lab."""
        for agent, process in self._running:
            if process.poll() is not None:
                self._give_up(agent, f"ended with {process.returncode}")

    def _await_answer(self, agent: Agent, process, namespace: Namespace) -> None:
        """Asks over the namespace's own loopback, which no capture on the host sees."""
        with namespace.entered():
            asker = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        request_id = 0
        deadline = time.monotonic() + _READY_SECONDS
        with asker:
            asker.settimeout(0.05)
            while time.monotonic() < deadline:
                if process.poll() is not None:
                    self._give_up(agent, f"ended with {process.returncode}")
                request_id += 1
                try:
                    asker.sendto(
                        message.get(agent.community, request_id), ("127.0.0.1", 161)
                    )
                    answer = message.decode(asker.recv(65535))
                    if answer.pdu_type == message.RESPONSE:
                        return
                except (OSError, ber.BerError):
                    # No answer in time: the agent does not listen yet, or expects another
                    # community. An ICMP refusal comes at once and must not make the loop spin.
                    select.select([], [], [], 0.01)
        self._give_up(agent, f"no answer within {_READY_SECONDS} s")

    def _await_line(self, agent: Agent, process) -> None:
        """Waits for the line that the responder prints when it listens. A request would not
        do: the responder may be configured not to answer."""
        if select.select([process.stdout], [], [], _READY_SECONDS)[0]:
            if process.stdout.readline() == b"ready\n":
                return
        self._give_up(agent, "did not say that it is ready")

    def _give_up(self, agent: Agent, why: str) -> None:
        try:
            log = (self._folder / agent.name / "log").read_text("utf-8", "replace")
        except OSError as error:
            log = str(error)
        raise LabError(f"agent {agent.name}: {why}; its log:\n{log.rstrip()}")


def _start_program(agent: Agent, namespace: Namespace, folder: pathlib.Path, lab: str):
    """Starts a program of the topology. Its environment names its own namespace, so that
    lab/inside's checks pass there."""
    environment = dict(os.environ)
    environment[guard.NAME_VARIABLE] = lab
    environment[guard.NAMESPACE_VARIABLE] = guard.format_identity(namespace.identity)
    try:
        return _start_with_log(list(agent.command), namespace, folder, env=environment)
    except OSError as error:
        raise LabError(f"agent {agent.name}: {agent.command[0]}: {error.strerror}") from error


def _start_responder(agent: Agent, namespace: Namespace, folder: pathlib.Path):
    settings = dict(dataclasses.asdict(agent.behaviour), community=agent.community)
    command = python_program("responder", json.dumps(settings))
    return _start_with_log(command, namespace, folder)


def _start_with_log(
    command: List[str], namespace: Namespace, folder: pathlib.Path, **settings
) -> subprocess.Popen:
    log = os.open(folder / "log", os.O_WRONLY | os.O_CREAT, 0o644)
    try:
        return namespace.start(
            command,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=log,
            **settings,
        )
    finally:
        os.close(log)

"""Net-SNMP's agent as Debian packages it, one in each namespace.

Each agent has its own folder for configuration and persistent data. SNMPCONFPATH and
SNMP_PERSISTENT_DIR name that folder, so the agent reads and writes nothing of the
machine's. SNMPCONFPATH replaces the whole search path. It therefore lists the persistent
folder too, because snmpd reads its SNMPv3 users from there. (Option -C would skip it.)

snmpd 5.9.3 uses the destination of a request as the source of its answer. For a broadcast
that is the broadcast address, which recent kernels refuse with ENETUNREACH, so the agent
stays silent. (5.9.4 is correct.) Therefore one nftables rule in the agent's namespace turns
broadcast requests into unicast ones before routing: it sets the destination to the
agent's own address and the packet type to "host". On the wire nothing changes: the
request is a broadcast, and the answer comes from the agent's own address, like a
printer's.
"""

from __future__ import annotations

import os
import pathlib
import subprocess
from typing import Sequence

from . import LabError
from .namespaces import Namespace, run
from .topology import Agent, Interface, User


def start(
    agent: Agent,
    namespace: Namespace,
    folder: pathlib.Path,
    host_interfaces: Sequence[Interface],
) -> subprocess.Popen:
    """Starts snmpd for `agent`, its files in the new `folder`, its log in the file
    "log" there; returns the process, which may not be listening yet."""
    persistent = folder / "persistent"
    persistent.mkdir(parents=True)
    (folder / "snmpd.conf").write_text(_configuration(agent), encoding="utf-8")
    (persistent / "snmpd.conf").write_text(_users(agent), encoding="utf-8")
    environment = dict(
        os.environ,
        MIBS="",
        SNMPCONFPATH=f"{folder}:{persistent}",
        SNMP_PERSISTENT_DIR=str(persistent),
    )
    with namespace.entered():
        run(["nft", "-f", "-"], _rules(agent.interfaces or host_interfaces))
    try:
        return namespace.start(
            ["snmpd", "-f", "-r", "-Lf", str(folder / "log")],
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
    except FileNotFoundError as error:
        raise LabError("snmpd is not installed") from error


def _configuration(agent: Agent) -> str:
    lines = [
        "agentAddress udp:0.0.0.0:161",
        f'rocommunity "{agent.community}"',
        f"sysName {agent.name}",
    ]
    lines += [f'override .{o.name} {o.kind} "{o.value}"' for o in agent.objects]
    lines += [f"rouser {user.name} {_level(user)}" for user in agent.users]
    return "\n".join(lines) + "\n"


def _level(user: User) -> str:
    return "priv" if user.priv else "auth" if user.auth else "noauth"


def _users(agent: Agent) -> str:
    lines = []
    for user in agent.users:
        line = f"createUser {user.name}"
        if user.auth:
            line += f" {user.auth} {_secret(user, user.auth_pass)}"
        if user.priv:
            line += f" {user.priv} {_secret(user, user.priv_pass)}"
        lines.append(line + "\n")
    return "".join(lines)


def _secret(user: User, pass_phrase: str) -> str:
    return f"-m 0x{user.master_key}" if user.master_key else f'"{pass_phrase}"'


def _rules(interfaces: Sequence[Interface]) -> str:
    rules = "".join(
        f'iifname "{each.name}" ip daddr {address.network.broadcast_address} '
        f"udp dport 161 ip daddr set {address.ip} meta pkttype set host\n"
        for each in interfaces
        for address in each.addresses
        if address.version == 4 and address.network.prefixlen < 31
    )
    chain = f"type filter hook prerouting priority -300;\n{rules}"
    return f"table ip lab {{\nchain requests {{\n{chain}}}\n}}\n"

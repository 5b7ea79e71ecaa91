"""The wires of a lab: one bridge for each subnet in the hub's namespace, and a veth
pair from it to every interface of every node. The hub's bridges carry no addresses, so
the nodes of one subnet share a wire and nothing joins two subnets."""

from __future__ import annotations

import json
from functools import partial
from typing import Dict, List, Tuple

from .namespaces import Namespace, ip_batch, run, wait_until
from .topology import Interface, Topology


class Network:
    """The namespaces of a topology's nodes, wired up and configured."""

    def __init__(self, topology: Topology):
        """Builds everything; the caller is in the hub's fresh namespace. On return
        every interface that is up can send and receive."""
        self.host = Namespace.create("host")
        self.agents: Dict[str, Namespace] = {}
        nodes: List[Tuple[Namespace, Tuple[Interface, ...]]] = []
        nodes.append((self.host, topology.interfaces))
        for agent in topology.agents:
            if agent.on_host:
                self.agents[agent.name] = self.host
                continue
            self.agents[agent.name] = Namespace.create(agent.name)
            nodes.append((self.agents[agent.name], agent.interfaces))
        _wire(topology, nodes)
        for node, interfaces in nodes:
            with node.entered():
                _configure(interfaces)
        for node, interfaces in nodes:
            with node.entered():
                names = {each.name for each in interfaces if each.up}
                wait_until(partial(_carrying, names), f"interfaces of {node.name}")
        wait_until(_forwarding, "bridges")


def _wire(topology: Topology, nodes) -> None:
    bridges = {name: f"br{index}" for index, name in enumerate(topology.subnets)}
    lines = []
    for bridge in bridges.values():
        # No spanning tree and no forwarding delay: a port works once it is up.
        lines.append(f"link add name {bridge} type bridge stp_state 0 forward_delay 0")
        lines.append(f"link set {bridge} up")
    plug = 0
    for node, interfaces in nodes:
        for each in interfaces:
            lines.append(
                f"link add name p{plug} type veth peer name {each.name} netns {node.path}"
            )
            lines.append(f"link set p{plug} master {bridges[each.subnet]} up")
            plug += 1
    if lines:
        ip_batch(lines)


def _configure(interfaces: Tuple[Interface, ...]) -> None:
    lines = []
    for each in interfaces:
        for address in each.addresses:
            if address.version == 6:
                extra = "nodad"
            else:
                extra = "broadcast +" if address.network.prefixlen < 31 else ""
            lines.append(f"address add {address} {extra} dev {each.name}")
        if each.up:
            lines.append(f"link set {each.name} up")
    if lines:
        ip_batch(lines)


def _links() -> list:
    return json.loads(run(["ip", "-json", "-details", "link", "show"]) or "[]")


def _carrying(names) -> bool:
    """Whether the interfaces have a carrier. Until then the kernel drops what is sent."""
    up = {link["ifname"] for link in _links() if link["operstate"] == "UP"}
    return names <= up


def _forwarding() -> bool:
    """Whether every bridge port whose far end is up passes frames on."""
    ports = [link for link in _links() if link["ifname"].startswith("p")]
    return all(
        link["linkinfo"]["info_slave_data"]["state"] == "forwarding"
        for link in ports
        if link["operstate"] == "UP"
    )

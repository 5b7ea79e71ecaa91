"""A topology as text, for people."""

from __future__ import annotations

from typing import List

from .topology import Agent, Behaviour, Interface, Topology


def draw(topology: Topology) -> str:
    """Each subnet as a wire with the host's interfaces and the agents on it; ends with
    a newline."""
    lines = [f"{topology.name}: {topology.title}"]
    for subnet, network in topology.subnets.items():
        lines.append("")
        head = f"== {subnet} =="
        tail = f"== {network}"
        if network.version == 4:
            tail += f", broadcast {network.broadcast_address}"
        lines.append(f"{head}{'=' * max(2, 24 - len(head))}{tail} ==")
        rows = [
            _row(each, "host " + each.name, "" if each.up else "down")
            for each in topology.interfaces
            if each.subnet == subnet
        ]
        rows += [
            _row(each, agent.name, _about(agent))
            for agent in topology.agents
            for each in agent.interfaces
            if each.subnet == subnet
        ]
        lines += ["  |  (nobody)"] if not rows else rows
    on_host = [agent for agent in topology.agents if agent.on_host]
    lines += [f"\nOn the host itself: {each.name}, {_about(each)}" for each in on_host]
    if not topology.interfaces:
        lines += ["", "The host has no interface but its loopback device."]
    return "\n".join(lines) + "\n"


def _row(interface: Interface, name: str, about: str) -> str:
    addresses: List[str] = [str(each) for each in interface.addresses]
    shown = ", ".join(addresses) or "no address"
    return f"  +-- {shown:<20} {name:<16} {about}".rstrip()


def _about(agent: Agent) -> str:
    words = [f"{agent.kind}, community {agent.community}"]
    if agent.users:
        words.append(f"{len(agent.users)} SNMPv3 users")
    plain, own = Behaviour(), agent.behaviour
    if own.copies != plain.copies:
        words.append(f"answers {own.copies} times")
    if own.delay != plain.delay:
        words.append(f"after {own.delay:g} s")
    if own.ignore != plain.ignore:
        words.append(f"ignores {own.ignore} of each request")
    if own.reply_from != plain.reply_from:
        words.append(f"answers from {own.reply_from}")
    return ", ".join(words)

"""A network as data. `reading` makes it from JSON and has checked it."""

from __future__ import annotations

import dataclasses
import ipaddress
from typing import Any, Dict, Tuple, Union

AnyInterface = Union[ipaddress.IPv4Interface, ipaddress.IPv6Interface]


@dataclasses.dataclass(frozen=True)
class Interface:
    """An interface of a node on the subnet (the wire) named `subnet`."""

    name: str
    subnet: str
    addresses: Tuple[AnyInterface, ...]
    up: bool = True


@dataclasses.dataclass(frozen=True)
class User:
    """An SNMPv3 user; `auth` and `priv` are empty where the user has none. A master key
    (RFC 3414, A.2) in hexadecimal digits stands for both pass phrases."""

    name: str
    auth: str
    auth_pass: str
    priv: str
    priv_pass: str
    master_key: str = ""


@dataclasses.dataclass(frozen=True)
class Object:
    """An object instance that an snmpd serves in addition to its own: the numeric name,
    snmpd's word for the type, and the value as text."""

    name: str
    kind: str
    value: str


@dataclasses.dataclass(frozen=True)
class Behaviour:
    """How the lab's own responder departs from a plain agent."""

    copies: int = 1  # answers to one request
    delay: float = 0.0  # seconds before the first
    ignore: int = 0  # datagrams of one request left unanswered, so 1 waits for a resend
    reply_from: str = ""  # source address of the answers, if another one


@dataclasses.dataclass(frozen=True)
class Agent:
    """An agent in a namespace of its own, or on the host when it has no interfaces."""

    name: str
    kind: str
    interfaces: Tuple[Interface, ...]
    community: str
    users: Tuple[User, ...]
    behaviour: Behaviour
    objects: Tuple[Object, ...] = ()
    command: Tuple[str, ...] = ()  # of the kind "program"

    @property
    def on_host(self) -> bool:
        """Whether it shares the host's namespace."""
        return not self.interfaces


@dataclasses.dataclass(frozen=True)
class Topology:
    """The whole network: wires, the host's interfaces, the agents."""

    name: str
    title: str
    subnets: Dict[str, Any]
    interfaces: Tuple[Interface, ...]
    agents: Tuple[Agent, ...]

"""Topologies from JSON, checked. lab/README.md describes the form."""

from __future__ import annotations

import ipaddress
import json
import pathlib
import re
from typing import Any, Dict, List, Optional, Tuple

from . import LabError, guard
from .fields import Fields, fail
from .topology import Agent, AnyInterface, Behaviour, Interface, Object, Topology, User

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "topologies"

_AUTHENTICATION = ("MD5", "SHA")
_PRIVACY = ("DES", "AES")

# IFNAMSIZ allows 15 characters.
_INTERFACE_NAME = re.compile(r"[a-z][a-z0-9._-]{0,14}")
_NAME = re.compile(r"[a-z][a-z0-9-]{0,30}")
# Characters that snmpd.conf takes literally between quotation marks.
_SECRET = re.compile(r"[!#-\[\]-~]+")
_PASS_PHRASE = re.compile(_SECRET.pattern[:-1] + "{8,}")  # RFC 3414, section 11.2
_MASTER_KEY = re.compile("[0-9a-f]{32}(?:[0-9a-f]{8})?")  # of MD5, of SHA

_OBJECT_TYPES = "integer, uinteger, counter, octet_str, object_id"
_OBJECT = re.compile(
    rf"(1(?:\.[0-9]{{1,10}}){{3,126}}) ({_OBJECT_TYPES.replace(', ', '|')}) ([ !#-\[\]-~]*)"
)


def known() -> List[str]:
    """Names of the topologies that come with the lab."""
    return sorted(path.stem for path in FOLDER.glob("*.json"))


def load(source: str) -> Topology:
    """The topology that `source` means: JSON itself when it starts with a brace, a
    file when it has a slash or ends in .json, else one of `known`. Raises LabError
    that names the place for everything that is not as it must be."""
    if source.lstrip().startswith("{"):
        return parse(source, "inline")
    path = pathlib.Path(source)
    if "/" not in source and path.suffix != ".json":
        if source not in known():
            raise LabError(f"no topology {source}; there are {', '.join(known())}")
        path = FOLDER / f"{source}.json"
    try:
        text = path.read_text(encoding="utf-8")
    except OSError as error:
        raise LabError(f"topology {path}: {error.strerror}") from error
    return parse(text, path.stem)


def parse(text: str, name: str) -> Topology:
    """The topology that the JSON `text` describes; LabError as in `load`."""
    try:
        data = json.loads(text, object_pairs_hook=_without_repeats)
    except ValueError as error:
        raise LabError(f"topology {name}: {error}") from error
    top = Fields(data, f"topology {name}")
    title = top.text("title", name)
    subnets = _subnets(top.fields("subnets"))
    host = top.fields("host")
    interfaces = tuple(_interface(each, subnets) for each in host.list("interfaces"))
    host.end()
    agents = tuple(_agent(each, subnets) for each in top.list("agents"))
    top.end()
    made = Topology(name, title, subnets, interfaces, agents)
    _check_unique(made)
    return made


def _without_repeats(pairs) -> dict:
    found: dict = {}
    for key, value in pairs:
        if key in found:
            raise ValueError(f"the key {key} is given twice")
        found[key] = value
    return found


def _check_name(name: str, where: str) -> None:
    if not _NAME.fullmatch(name):
        fail(where, "a name is lower-case letters, digits and hyphens")


def _subnets(fields: Fields) -> Dict[str, Any]:
    found: Dict[str, Any] = {}
    for name in fields.names():
        where = fields.at(name)
        _check_name(name, where)
        try:
            network = ipaddress.ip_network(fields.text(name))
        except ValueError as error:
            fail(where, str(error))
        if not guard.in_documentation_ranges(network):
            fail(where, f"{network} is outside the documentation ranges")
        found[name] = network
    return found


def _interface(fields: Fields, subnets: Dict[str, Any]) -> Interface:
    name = fields.text("name")
    if not _INTERFACE_NAME.fullmatch(name) or name == "lo":
        fail(fields.at("name"), f"{name} cannot name an interface")
    subnet = fields.choice("subnet", list(subnets))
    addresses = tuple(
        _address(text, subnets[subnet], fields.at("addresses"))
        for text in fields.texts("addresses")
    )
    up = fields.flag("up", True)
    fields.end()
    return Interface(name, subnet, addresses, up)


def _address(text: str, network, where: str) -> AnyInterface:
    """An address with a prefix of its own, or with its subnet's prefix; in the second
    case it must be in that subnet."""
    try:
        own_prefix = "/" in text
        whole = text if own_prefix else f"{text}/{network.prefixlen}"
        found = ipaddress.ip_interface(whole)
    except ValueError as error:
        fail(where, str(error))
    if not guard.in_documentation_ranges(ipaddress.ip_network(found.ip)):
        fail(where, f"{found.ip} is outside the documentation ranges")
    if not own_prefix and found.ip not in network:
        fail(where, f"{found.ip} is not in {network}")
    wide = found.version == 4 and found.network.prefixlen < 31
    if wide and found.ip in (found.network[0], found.network[-1]):
        place = f"the network or broadcast address of {found.network}"
        fail(where, f"{found.ip} is {place}")
    return found


def _agent(fields: Fields, subnets: Dict[str, Any]) -> Agent:
    name = fields.text("name")
    _check_name(name, fields.at("name"))
    kind = fields.choice("kind", ["snmpd", "responder", "program"])
    interfaces: Tuple[Interface, ...] = ()
    if not fields.flag("on_host", False):
        interfaces = _places(fields.fields("addresses"), subnets)
    community = fields.text("community", "public")
    if not _SECRET.fullmatch(community):
        fail(fields.at("community"), "printable ASCII, no space, quote or backslash")
    users = tuple(_user(each) for each in fields.list("users", []))
    behaviour = _behaviour(fields.fields("behaviour", {}))
    if kind != "responder" and behaviour != Behaviour():
        fail(fields.at("behaviour"), f"{kind} has none, only a responder")
    if kind != "snmpd" and users:
        fail(fields.at("users"), f"a {kind} knows none, only snmpd")
    lines = fields.texts("objects") if "objects" in fields.names() else []
    objects = tuple(_object(line, fields.at("objects")) for line in lines)
    if kind != "snmpd" and objects:
        fail(fields.at("objects"), f"a {kind} has none, only snmpd")
    command = tuple(fields.texts("command")) if kind == "program" else ()
    if kind == "program" and not command:
        fail(fields.at("command"), "a program is missing")
    fields.end()
    return Agent(name, kind, interfaces, community, users, behaviour, objects, command)


def _object(line: str, where: str) -> Object:
    found = _OBJECT.fullmatch(line)
    if not found:
        fail(where, f"{line}: a numeric name, a type of {_OBJECT_TYPES} and a value")
    return Object(*found.groups())


def _places(fields: Fields, subnets: Dict[str, Any]) -> Tuple[Interface, ...]:
    found = []
    for subnet in fields.names():
        where = fields.at(subnet)
        if subnet not in subnets:
            fail(where, "no such subnet")
        addresses = tuple(
            _address(text, subnets[subnet], where) for text in fields.texts(subnet)
        )
        if not addresses:
            fail(where, "an address is missing")
        found.append(Interface(f"eth{len(found)}", subnet, addresses))
    if not found:
        fail(fields.where, "an agent needs an address, or on_host")
    return tuple(found)


def _user(fields: Fields) -> User:
    name = fields.text("name")
    _check_name(name, fields.at("name"))
    user = User(
        name,
        fields.choice("auth", _AUTHENTICATION, ""),
        fields.text("auth_pass", ""),
        fields.choice("priv", _PRIVACY, ""),
        fields.text("priv_pass", ""),
        fields.text("master_key", ""),
    )
    if user.master_key and not _MASTER_KEY.fullmatch(user.master_key):
        fail(fields.where, "a master key has 32 (MD5) or 40 (SHA) hexadecimal digits")
    if user.master_key and (user.auth_pass or user.priv_pass):
        fail(fields.where, "a pass phrase besides a master key")
    for protocol, words in ((user.auth, user.auth_pass), (user.priv, user.priv_pass)):
        if protocol and not user.master_key and not _PASS_PHRASE.fullmatch(words):
            fail(fields.where, f"{protocol} needs a pass phrase, 8 printable characters")
        if words and not protocol:
            fail(fields.where, "a pass phrase without a protocol")
    if user.priv and not user.auth:
        fail(fields.where, "privacy needs authentication")
    fields.end()
    return user


def _behaviour(fields: Fields) -> Behaviour:
    plain = Behaviour()
    found = Behaviour(
        int(fields.number("copies", plain.copies, 0, 1000)),
        fields.number("delay", plain.delay, 0, 60),
        int(fields.number("ignore", plain.ignore, 0, 1000)),
        fields.text("reply_from", plain.reply_from),
    )
    fields.end()
    return found


def _check_unique(topology: Topology) -> None:
    nodes = [("host", topology.interfaces)]
    nodes += [(agent.name, agent.interfaces) for agent in topology.agents]
    _once([name for name, _ in nodes], "name of a node", topology)
    _once([each.name for each in topology.interfaces], "interface of the host", topology)
    addresses = [
        str(address.ip)
        for _, interfaces in nodes
        for interface in interfaces
        for address in interface.addresses
    ]
    _once(addresses, "address", topology)
    if sum(agent.on_host for agent in topology.agents) > 1:
        raise LabError(f"topology {topology.name}: the host has one port 161")


def _once(values: List[str], what: str, topology: Topology) -> None:
    repeated: Optional[str] = next((v for v in values if values.count(v) > 1), None)
    if repeated is not None:
        raise LabError(f"topology {topology.name}: {what} given twice: {repeated}")

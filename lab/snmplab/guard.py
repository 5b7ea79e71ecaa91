"""Proofs that a network namespace is the lab's and not the machine's own.

The lab needs a proof twice. A namespace that it has made must be new: its inode is
neither that of the lab's caller nor that of the machine's first process, and it holds
only an unconfigured loopback device (`require_fresh`). Something that broadcasts must
run on the lab's host (`require_inside`). Both check several signs, because one alone can
mislead: a variable can be inherited, and an inode number can be reused.
"""

from __future__ import annotations

import errno
import fcntl
import ipaddress
import json
import os
import socket
import struct
import subprocess
from typing import FrozenSet, Mapping, Optional, Tuple

from . import LabError

# Named in the environment of every command that the lab runs on its host.
NAME_VARIABLE = "SNMP_LAB"
NAMESPACE_VARIABLE = "SNMP_LAB_NAMESPACE"

# RFC 5737, RFC 2544 (section C.2.2, set aside by RFC 6890) and RFC 3849.
DOCUMENTATION_RANGES = tuple(
    ipaddress.ip_network(text)
    for text in (
        "192.0.2.0/24",
        "198.51.100.0/24",
        "203.0.113.0/24",
        "198.18.0.0/15",
        "2001:db8::/32",
    )
)

Identity = Tuple[int, int]

_SIOCGIFFLAGS = 0x8913
_SIOCGIFADDR = 0x8915
_IFF_UP = 0x1


def identity(process: str = "self") -> Identity:
    """Device and inode of the network namespace of `process`. They are unique among the
    namespaces that exist at the same time (namespaces(7)). Raises OSError without
    permission to look."""
    status = os.stat(f"/proc/{process}/ns/net")
    return status.st_dev, status.st_ino


def outside_identities() -> FrozenSet[Identity]:
    """The namespaces that the lab must never be in: the caller's own, and that of the
    machine's first process where the caller may look at it (only root may)."""
    found = {identity()}
    try:
        found.add(identity("1"))
    except OSError:
        pass
    return frozenset(found)


def in_documentation_ranges(network) -> bool:
    """Whether every address of `network` is set aside for documentation or tests."""
    return any(
        network.version == known.version and network.subnet_of(known)
        for known in DOCUMENTATION_RANGES
    )


def require_fresh(outside: FrozenSet[Identity]) -> None:
    """Raises LabError unless the caller's network namespace is none of `outside` and
    holds nothing but a loopback device that is down and has no address."""
    if identity() in outside:
        raise LabError("refused: this is the network namespace that the lab came from")
    names = sorted(name for _, name in socket.if_nameindex())
    if names != ["lo"]:
        raise LabError(f"refused: a fresh namespace holds lo alone, this one {names}")
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        request = struct.pack("16s24x", b"lo")
        answer = fcntl.ioctl(probe, _SIOCGIFFLAGS, request)
        if struct.unpack_from("16xH", answer)[0] & _IFF_UP:
            raise LabError("refused: the loopback device of this namespace is up")
        try:
            fcntl.ioctl(probe, _SIOCGIFADDR, request)
        except OSError as error:
            if error.errno == errno.EADDRNOTAVAIL:
                return
            raise
    raise LabError("refused: the loopback device of this namespace has an address")


def require_inside(environment: Optional[Mapping[str, str]] = None) -> None:
    """Raises LabError unless the caller runs on the host of a lab: the environment
    names this very namespace, the first process lives in another one (the lab's hub;
    on the machine the two are the same, or hidden from an ordinary user), every
    address is a documentation or loopback one, and no route leads out."""
    environment = os.environ if environment is None else environment
    if not environment.get(NAME_VARIABLE):
        raise LabError(f"refused: {NAME_VARIABLE} is not set, so this is not the lab")
    own = identity()
    if environment.get(NAMESPACE_VARIABLE) != format_identity(own):
        raise LabError(f"refused: {NAMESPACE_VARIABLE} names another namespace")
    try:
        first = identity("1")
    except OSError as error:
        raise LabError("refused: the first process here is not the lab's") from error
    if first == own:
        raise LabError("refused: this is the namespace of the machine's first process")
    _require_documentation_addresses()


def format_identity(value: Identity) -> str:
    """The text under which the environment names a namespace."""
    return f"{value[0]}:{value[1]}"


def _require_documentation_addresses() -> None:
    for link in _ask_ip("address", "show"):
        for entry in link.get("addr_info", []):
            address = ipaddress.ip_address(entry["local"])
            if address.is_loopback or (address.version == 6 and address.is_link_local):
                continue
            if not in_documentation_ranges(ipaddress.ip_network(address)):
                raise LabError(f"refused: {address} is no documentation address")
    for family in ("-4", "-6"):
        if _ask_ip(family, "route", "show", "default"):
            raise LabError("refused: a default route leads out of here")


def _ask_ip(*arguments: str) -> list:
    command = ["ip", "-json", *arguments]
    try:
        result = subprocess.run(
            command,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            check=True,
            timeout=10,
        )
        return json.loads(result.stdout or b"[]")
    except (OSError, ValueError, subprocess.SubprocessError) as error:
        raise LabError(f"refused: {' '.join(command)} failed: {error}") from error

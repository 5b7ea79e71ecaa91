"""SNMP messages of the community-based versions (RFC 1157, RFC 1901) as data."""

from __future__ import annotations

import dataclasses
from typing import Tuple

from . import ber

VERSION_1 = 0
VERSION_2C = 1

# RFC 1157, section 4.1 and RFC 3416, section 3: the tags of the PDUs.
GET = 0xA0
GET_NEXT = 0xA1
RESPONSE = 0xA2
SET = 0xA3
GET_BULK = 0xA5
_PDU_TAGS = (GET, GET_NEXT, RESPONSE, SET, GET_BULK)

SYS_UP_TIME = "1.3.6.1.2.1.1.3.0"


@dataclasses.dataclass(frozen=True)
class Binding:
    """One variable binding: name in dotted notation, the value's tag and octets."""

    name: str
    tag: int = ber.NULL
    content: bytes = b""


@dataclasses.dataclass(frozen=True)
class Message:
    """One message; the numbers are those on the wire (version 0 is SNMPv1)."""

    version: int
    community: bytes
    pdu_type: int
    request_id: int
    error_status: int
    error_index: int
    bindings: Tuple[Binding, ...]

    def encode(self) -> bytes:
        """The octets of a datagram."""
        bindings = (
            ber.sequence(
                ber.object_identifier(binding.name),
                ber.element(binding.tag, binding.content),
            )
            for binding in self.bindings
        )
        return ber.sequence(
            ber.integer(self.version),
            ber.octets(self.community),
            ber.sequence(
                ber.integer(self.request_id),
                ber.integer(self.error_status),
                ber.integer(self.error_index),
                ber.sequence(*bindings),
                tag=self.pdu_type,
            ),
        )


def decode(data: bytes) -> Message:
    """The message that `data` holds, to its last octet; raises ber.BerError for
    anything else, SNMPv3 and SNMPv1 traps included."""
    outer = ber.Reader(data)
    body = outer.enter()
    outer.end()
    version = body.integer()
    if version not in (VERSION_1, VERSION_2C):
        raise ber.BerError(f"version {version} has no community")
    community = body.octets()
    pdu_type, content = body.element()
    body.end()
    if pdu_type not in _PDU_TAGS:
        raise ber.BerError(f"PDU type 0x{pdu_type:02x}")
    pdu = ber.Reader(content)
    numbers = pdu.integer(), pdu.integer(), pdu.integer()
    bindings = pdu.enter()
    pdu.end()
    found = []
    while not bindings.at_end:
        binding = bindings.enter()
        name = binding.object_identifier()
        tag, value = binding.element()
        binding.end()
        found.append(Binding(name, tag, value))
    return Message(version, community, pdu_type, *numbers, tuple(found))


def get(community: str, request_id: int, name: str = SYS_UP_TIME) -> bytes:
    """The octets of an SNMPv1 GET of one object."""
    binding = Binding(name)
    request = Message(
        VERSION_1, community.encode(), GET, request_id, 0, 0, (binding,)
    )
    return request.encode()

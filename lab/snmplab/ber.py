"""The transfer syntax of SNMP: the part of the Basic Encoding Rules (X.690) that
RFC 3417, section 8 leaves, definite lengths only."""

from __future__ import annotations

from typing import Optional, Tuple

INTEGER = 0x02
OCTET_STRING = 0x04
NULL = 0x05
OBJECT_IDENTIFIER = 0x06
SEQUENCE = 0x30
TIME_TICKS = 0x43


class BerError(ValueError):
    """The octets do not encode the expected value."""


def element(tag: int, content: bytes) -> bytes:
    """One element: tag, length in as few octets as will do, content."""
    count = len(content)
    if count < 0x80:
        return bytes((tag, count)) + content
    length = count.to_bytes((count.bit_length() + 7) // 8, "big")
    return bytes((tag, 0x80 | len(length))) + length + content


def sequence(*parts: bytes, tag: int = SEQUENCE) -> bytes:
    """A constructed element around encoded `parts`."""
    return element(tag, b"".join(parts))


def integer(value: int, tag: int = INTEGER) -> bytes:
    """Two's complement in as few octets as will do; also for the unsigned types, which
    are encoded the same way."""
    count = (value if value >= 0 else ~value).bit_length() // 8 + 1
    return element(tag, value.to_bytes(count, "big", signed=True))


def octets(value: bytes) -> bytes:
    """An octet string."""
    return element(OCTET_STRING, value)


def null() -> bytes:
    """The empty value of a request's variable binding."""
    return element(NULL, b"")


def object_identifier(text: str) -> bytes:
    """The object identifier that `text` writes in dotted notation, two
    sub-identifiers at least."""
    arcs = [int(part) for part in text.split(".")]
    if len(arcs) < 2 or min(arcs) < 0 or arcs[0] > 2 or (arcs[0] < 2 and arcs[1] > 39):
        raise BerError(f"{text} is no object identifier")
    content = bytearray()
    for arc in [arcs[0] * 40 + arcs[1]] + arcs[2:]:
        groups = [arc & 0x7F]
        while arc > 0x7F:
            arc >>= 7
            groups.append(0x80 | (arc & 0x7F))
        content.extend(reversed(groups))
    return element(OBJECT_IDENTIFIER, bytes(content))


class Reader:
    """Reads the elements of some octets from front to back; every method raises
    BerError at the first octet that does not fit."""

    def __init__(self, data: bytes):
        self._data = data
        self._position = 0

    @property
    def at_end(self) -> bool:
        """Whether all was read."""
        return self._position == len(self._data)

    def element(self, expected: Optional[int] = None) -> Tuple[int, bytes]:
        """Tag and content of the next element, whose tag must be `expected` if given."""
        tag = self._take(1)[0]
        if expected is not None and tag != expected:
            raise BerError(f"tag 0x{tag:02x} where 0x{expected:02x} belongs")
        count = self._take(1)[0]
        if count == 0x80 or count > 0x84:
            raise BerError(f"length octet 0x{count:02x}")
        if count > 0x80:
            count = int.from_bytes(self._take(count - 0x80), "big")
        return tag, self._take(count)

    def enter(self, expected: int = SEQUENCE) -> "Reader":
        """A reader of the next element's content."""
        return Reader(self.element(expected)[1])

    def integer(self, expected: int = INTEGER) -> int:
        """The next element as a signed number."""
        content = self.element(expected)[1]
        if not content:
            raise BerError("an integer without octets")
        return int.from_bytes(content, "big", signed=True)

    def octets(self) -> bytes:
        """The next element as an octet string."""
        return self.element(OCTET_STRING)[1]

    def object_identifier(self) -> str:
        """The next element in dotted notation."""
        content = self.element(OBJECT_IDENTIFIER)[1]
        if not content or content[-1] & 0x80:
            raise BerError("an object identifier that stops in the middle")
        arcs, arc = [], 0
        for octet in content:
            arc = arc << 7 | octet & 0x7F
            if not octet & 0x80:
                arcs.append(arc)
                arc = 0
        first = min(arcs[0] // 40, 2)
        return ".".join(map(str, [first, arcs[0] - 40 * first] + arcs[1:]))

    def end(self) -> None:
        """Nothing may be left."""
        if not self.at_end:
            raise BerError(f"{len(self._data) - self._position} octets too many")

    def _take(self, count: int) -> bytes:
        taken = self._data[self._position : self._position + count]
        if len(taken) != count:
            raise BerError("the octets end inside an element")
        self._position += count
        return taken

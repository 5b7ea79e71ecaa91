"""Captures what passes the host's interfaces: every UDP datagram from or to port 161, one
JSON object per line, in the kernel's order.

As a program it takes the path of the file to write. It prints one line when the capture
has started. On SIGTERM it writes everything that has arrived and ends.
"""

from __future__ import annotations

import dataclasses
import ipaddress
import json
import select
import signal
import socket
import struct
import time
from typing import Iterator, List, Optional

from . import message

_ETH_P_ALL = 0x0003  # the only protocol whose sockets see outgoing frames too
_PACKET_OUTGOING = 4
_SO_TIMESTAMPNS = 35
_SNMP_PORT = 161
_UDP = 17


@dataclasses.dataclass(frozen=True)
class Datagram:
    """One datagram as it passed an interface of the host."""

    time: float  # seconds of the monotonic clock (time.monotonic)
    interface: str
    direction: str  # "sent" by the host, or "received"
    source: str
    source_port: int
    destination: str
    destination_port: int
    payload: bytes

    @property
    def message(self) -> message.Message:
        """The SNMP message in it; raises ber.BerError when it holds none."""
        return message.decode(self.payload)


def load(path) -> List[Datagram]:
    """The datagrams of a capture file."""
    found = []
    with open(path, encoding="ascii") as file:
        for line in file:
            record = json.loads(line)
            record["payload"] = bytes.fromhex(record["payload"])
            found.append(Datagram(**record))
    return found


def datagram_in(
    packet: bytes, when: float, interface: str, direction: str
) -> Optional[Datagram]:
    """The SNMP datagram that an IP packet carries whole, or none."""
    if not packet:
        return None
    if packet[0] >> 4 == 4 and len(packet) >= 20:
        fragment = struct.unpack_from("!H", packet, 6)[0] & 0x3FFF
        start = (packet[0] & 0x0F) * 4
        if packet[9] != _UDP or fragment:
            return None
        source, destination = packet[12:16], packet[16:20]
    elif packet[0] >> 4 == 6 and len(packet) >= 40:
        start = 40
        if packet[6] != _UDP:
            return None
        source, destination = packet[8:24], packet[24:40]
    else:
        return None
    if len(packet) < start + 8:
        return None
    source_port, destination_port, length = struct.unpack_from("!HHH", packet, start)
    if _SNMP_PORT not in (source_port, destination_port):
        return None
    return Datagram(
        when,
        interface,
        direction,
        str(ipaddress.ip_address(source)),
        source_port,
        str(ipaddress.ip_address(destination)),
        destination_port,
        packet[start + 8 : start + length],
    )


def _captured(sniffer: socket.socket, stop: List[int]) -> Iterator[Datagram]:
    """Yields until `stop` has an entry and nothing more is waiting."""
    while True:
        ready = select.select([sniffer], [], [], 0 if stop else 0.1)[0]
        if not ready:
            if stop:
                return
            continue
        packet, ancillary, _, place = sniffer.recvmsg(65535, 64)
        wall = time.time()
        for level, kind, data in ancillary:
            if level == socket.SOL_SOCKET and kind == _SO_TIMESTAMPNS:
                seconds, nanoseconds = struct.unpack("qq", data[:16])
                wall = seconds + nanoseconds / 1e9
        # The kernel stamps with the wall clock. Reading both clocks here gives the offset.
        when = wall - time.time() + time.monotonic()
        direction = "sent" if place[2] == _PACKET_OUTGOING else "received"
        found = datagram_in(packet, when, place[0], direction)
        if found is not None:
            yield found


def main(arguments) -> int:
    """The program."""
    stop: List[int] = []
    signal.signal(signal.SIGTERM, lambda number, _: stop.append(number))
    with open(arguments[1], "w", encoding="ascii") as file:
        kind = socket.SOCK_DGRAM  # without the link layer's header
        with socket.socket(socket.AF_PACKET, kind, socket.htons(_ETH_P_ALL)) as sniffer:
            sniffer.setsockopt(socket.SOL_SOCKET, _SO_TIMESTAMPNS, 1)
            sniffer.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4 << 20)
            print("ready", flush=True)
            for datagram in _captured(sniffer, stop):
                record = dataclasses.asdict(datagram)
                record["payload"] = datagram.payload.hex()
                file.write(json.dumps(record) + "\n")
                file.flush()
    return 0

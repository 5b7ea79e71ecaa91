"""The lab's own agent. It answers every GET and GETNEXT of its community with the time
since it started, whatever object was asked for, and differs from a plain agent as its
behaviour says. It shares no code with Net-SNMP.

Run as a program with one argument, a JSON object of "community" and the members of
topology.Behaviour; prints one line when it listens.
"""

from __future__ import annotations

import collections
import dataclasses
import heapq
import itertools
import json
import selectors
import signal
import socket
import sys
import time
from typing import Iterator, NamedTuple, Optional, Tuple

from . import ber, message
from .topology import Behaviour

PORT = 161
_LARGEST_DATAGRAM = 65535
_RECEIVE_BUFFER = 4 * 1024 * 1024  # octets; the kernel gives less where it must

Address = Tuple[str, int]


class Reply(NamedTuple):
    """A datagram to send `delay` seconds after the request came."""

    delay: float
    payload: bytes


class Script:
    """Decides how each request is answered. Uses no socket and no clock."""

    def __init__(self, community: str, behaviour: Behaviour):
        self._community = community.encode()
        self._behaviour = behaviour
        self._seen: collections.Counter = collections.Counter()

    def replies(self, datagram: bytes, asker: Address, ticks: int) -> Iterator[Reply]:
        """What to send back to `asker`; `ticks` is the time value, in hundredths of a
        second. Anything but a request with the right community gets no answer."""
        try:
            request = message.decode(datagram)
        except ber.BerError:
            return
        if request.pdu_type not in (message.GET, message.GET_NEXT):
            return
        if request.community != self._community:
            return
        self._seen[asker, request.request_id] += 1
        if self._seen[asker, request.request_id] <= self._behaviour.ignore:
            return
        payload = answer(request, ticks).encode()
        for _ in range(self._behaviour.copies):
            yield Reply(self._behaviour.delay, payload)


def answer(request: message.Message, ticks: int) -> message.Message:
    """The plain answer to `request`: the same objects, each with `ticks`."""
    value = ber.Reader(ber.integer(ticks, ber.TIME_TICKS)).element()[1]
    bindings = tuple(
        message.Binding(each.name, ber.TIME_TICKS, value) for each in request.bindings
    )
    return dataclasses.replace(
        request,
        pdu_type=message.RESPONSE,
        error_status=0,
        error_index=0,
        bindings=bindings,
    )


class Responder:
    """The sockets and the clock around a script; one thread."""

    def __init__(self, script: Script, reply_from: str):
        self._script = script
        self._selector = selectors.DefaultSelector()
        # Bound to all addresses, so that broadcasts arrive. The kernel then uses the
        # agent's own address on the asker's subnet as the source of each answer.
        self._out = self._listen("0.0.0.0")
        if reply_from:
            self._out = self._listen(reply_from)
        self._started = time.monotonic()
        self._waiting: list = []
        self._order = itertools.count()

    def serve(self) -> None:
        """Serves until the process is ended."""
        while True:
            for key, _ in self._selector.select(self._next_due()):
                datagram, asker = key.fileobj.recvfrom(_LARGEST_DATAGRAM)
                now = time.monotonic()
                ticks = int((now - self._started) * 100)
                for reply in self._script.replies(datagram, asker, ticks):
                    entry = (now + reply.delay, next(self._order), reply.payload, asker)
                    heapq.heappush(self._waiting, entry)
            self._send_due()

    def _listen(self, address: str) -> socket.socket:
        made = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        made.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        # Room for the requests of a host that asks on all its interfaces at once.
        made.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, _RECEIVE_BUFFER)
        made.bind((address, PORT))
        self._selector.register(made, selectors.EVENT_READ)
        return made

    def _next_due(self) -> Optional[float]:
        if not self._waiting:
            return None
        return max(0.0, self._waiting[0][0] - time.monotonic())

    def _send_due(self) -> None:
        while self._waiting and self._waiting[0][0] <= time.monotonic():
            _, _, payload, asker = heapq.heappop(self._waiting)
            try:
                self._out.sendto(payload, asker)
            except OSError as error:
                print(f"to {asker[0]}: {error}", file=sys.stderr, flush=True)


def main(arguments) -> int:
    """The program."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    settings = json.loads(arguments[1])
    community = settings.pop("community")
    behaviour = Behaviour(**settings)
    responder = Responder(Script(community, behaviour), behaviour.reply_from)
    print("ready", flush=True)
    responder.serve()
    return 0

"""Agents for the tests of snmp-inventory: one program that speaks for many addresses, each
with a behaviour of its own. It shares no code with Net-SNMP.

A program of a topology (see lab/README.md). Its argument is a JSON object: "network", all
of whose addresses are its own; "default", a behaviour; and "agents", the behaviours of
single addresses. Refuses to run anywhere but in a namespace of the lab.
"""

import bisect
import heapq
import ipaddress
import itertools
import json
import socket
import struct
import subprocess
import sys
import time

import harness  # noqa: F401

from snmplab import ber, message

COUNTER, END_OF_VIEW = 0x41, 0x82
GET_NEXT_REFUSED = 2  # noSuchName
IP_PKTINFO = 8  # linux/in.h; the module socket has no name for it

SYSTEM = "1.3.6.1.2.1.1"
PRINTER = "1.3.6.1.2.1.43"
SUPPLIES = f"{PRINTER}.11.1.1"


def text(value):
    """Tag and content of an octet string."""
    return ber.OCTET_STRING, value.encode() if isinstance(value, str) else value


def number(value, tag=ber.INTEGER):
    """Tag and content of an integer."""
    return tag, ber.integer(value, tag)[2:]


def system(name):
    """The objects of any agent."""
    return {
        f"{SYSTEM}.1.0": text("a device"),
        f"{SYSTEM}.2.0": (ber.OBJECT_IDENTIFIER, ber.object_identifier("1.3.6.1.4.1.32473")[2:]),
        f"{SYSTEM}.3.0": number(8640000, ber.TIME_TICKS),
        f"{SYSTEM}.5.0": text(name),
        f"{SYSTEM}.6.0": text("Room 5"),
    }


def supply(row, name, level, kind=3):
    """A row of prtMarkerSuppliesTable, of 100 percent."""
    cells = {4: number(kind), 5: number(3), 6: text(name), 7: number(19), 8: number(100)}
    cells[9] = number(level)
    return {f"{SUPPLIES}.{column}.1.{row}": cell for column, cell in cells.items()}


def printer(name="laser", supplies=None):
    """The objects of a printer."""
    rows = supplies or {1: ("Black Toner", 42), 2: ("Drum", -2)}
    objects = system(name)
    objects["1.3.6.1.2.1.25.3.2.1.3.1"] = text("Laser 3000")
    objects["1.3.6.1.2.1.25.3.5.1.1.1"] = number(3)
    objects[f"{PRINTER}.5.1.1.1.1"] = number(0, COUNTER)
    objects[f"{PRINTER}.5.1.1.17.1"] = text("S-1")
    objects[f"{PRINTER}.10.2.1.4.1.1"] = number(21500, COUNTER)
    for row, cells in rows.items():
        objects.update(supply(row, *cells))
    return objects


HOSTILE = "\x1b[2J\x1b]0;x\x07\u009b2J\x7f<script>alert(1)</script>\r\n=1+1\u202e"


def arcs(name):
    """The sub-identifiers, in whose order agents order their objects."""
    return tuple(map(int, name.split(".")))


class Objects:
    """What a well-behaved agent answers with."""

    def __init__(self, objects):
        self._names = sorted(objects, key=arcs)
        self._keys = [arcs(name) for name in self._names]
        self._objects = objects

    def after(self, name):
        """The binding that follows `name`, or None."""
        at = bisect.bisect_right(self._keys, arcs(name))
        if at == len(self._names):
            return None
        return message.Binding(self._names[at], *self._objects[self._names[at]])


TABLES = {
    "printer": Objects(printer()),
    "switch": Objects(system("switch")),
    "hostile-texts": Objects(printer(HOSTILE, {1: (HOSTILE, 5)})),
    "long-texts": Objects(printer("n" * 20000)),
    "invalid-texts": Objects(printer(b"\xff" * 2000)),
    "endless": Objects(printer("endless", {row: ("Toner", 1) for row in range(1, 400)})),
}
for same in "stops slow elsewhere-too loop genErr too-big many junk-too wrong-id twice".split():
    TABLES[same] = TABLES["printer"]


def respond(request, bindings, status=0, index=0):
    """The response with the request's identifier."""
    return message.Message(
        request.version,
        request.community,
        message.RESPONSE,
        request.request_id,
        status,
        index,
        tuple(bindings),
    )


def answer(request, objects):
    """What a well-behaved agent sends back to a GETNEXT or GET."""
    found = []
    for position, asked in enumerate(request.bindings, 1):
        binding = objects.after(asked.name)
        if binding is None and request.version == message.VERSION_1:
            return respond(request, request.bindings, GET_NEXT_REFUSED, position)
        found.append(binding or message.Binding(asked.name, END_OF_VIEW))
    return respond(request, found)


class Cache:
    """Remembers what follows the request's identifier in an answer. Most requests differ in
    the identifier alone, and the program must answer thousands on a busy machine."""

    def __init__(self):
        self._known = {}

    def replies(self, behaviour, octets, seen):
        """As below, for the octets of a request; raises ber.BerError."""
        body = ber.Reader(octets).enter()
        start = body.integer(), body.octets()
        pdu_type, content = body.element()
        pdu = ber.Reader(content)
        identifier = ber.integer(pdu.integer())
        key = (behaviour, start, pdu_type, content[len(identifier) :])
        if behaviour not in ("printer", "switch") or content[: len(identifier)] != identifier:
            return list(replies(behaviour, message.decode(octets), seen))
        if key not in self._known:
            made = answer(message.decode(octets), TABLES[behaviour]).encode()
            whole = ber.Reader(made).enter()
            whole.integer(), whole.octets()
            self._known[key] = whole.element()[1][len(identifier) :]
        pdu = ber.element(message.RESPONSE, identifier + self._known[key])
        octets = ber.sequence(ber.integer(start[0]), ber.octets(start[1]), pdu)
        return [(0, octets, False)]


def replies(behaviour, request, seen):
    """(delay, octets, from elsewhere) of each datagram to send; `seen` requests came before."""
    if behaviour == "silent" or (behaviour == "stops" and seen):
        return
    if behaviour == "elsewhere":
        yield 0, answer(request, TABLES["printer"]).encode(), True
        return
    made = answer(request, TABLES[behaviour])
    if behaviour == "loop" and len(request.bindings) == 6:
        made = respond(request, request.bindings)
    if behaviour == "genErr":
        made = respond(request, request.bindings, 5, 1)
    if behaviour == "too-big" and len(request.bindings) > 1:
        made = respond(request, (), 1)
    if behaviour == "many":
        made = respond(request, list(made.bindings) * 400)
    if behaviour == "wrong-id":
        made = message.dataclasses.replace(made, request_id=made.request_id ^ 1)
    if behaviour == "elsewhere-too":
        yield 0, answer(request, TABLES["switch"]).encode(), True
    if behaviour == "junk-too":
        for size in (0, 1, 20, 1000):
            yield 0, b"\x30" * size, False
    for _ in range(2 if behaviour == "twice" else 1):
        yield (2.5 if behaviour == "slow" else 0), made.encode(), False


class Server:
    """One socket for all addresses. An answer leaves from the address that was asked."""

    def __init__(self, settings):
        network = ipaddress.ip_network(settings["network"])
        subprocess.run(["ip", "route", "add", "local", str(network), "dev", "lo"], check=True)
        self._elsewhere = str(network[-2])
        self._default = settings.get("default", "printer")
        self._agents = settings.get("agents", {})
        self._network = network
        self._seen = {}
        self._waiting = []
        self._order = itertools.count()
        self._cache = Cache()
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.setsockopt(socket.IPPROTO_IP, IP_PKTINFO, 1)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4 << 20)
        self._socket.bind(("0.0.0.0", 161))

    def serve(self, until):
        """Serves until the monotonic time given."""
        print("ready", flush=True)
        while time.monotonic() < until:
            self._socket.settimeout(self._pause())
            try:
                octets, extra, _, asker = self._socket.recvmsg(65535, 256)
            except (socket.timeout, BlockingIOError):
                octets = None
            if octets is not None:
                self._take(octets, extra, asker)
            while self._waiting and self._waiting[0][0] <= time.monotonic():
                _, _, *datagram = heapq.heappop(self._waiting)
                self._send(*datagram)

    def _pause(self):
        if not self._waiting:
            return 1.0
        return max(0.0005, self._waiting[0][0] - time.monotonic())

    def _take(self, octets, extra, asker):
        information = next(data for level, kind, data in extra if kind == IP_PKTINFO)
        asked = ipaddress.ip_address(struct.unpack("=I4s4s", information)[2])
        if asked in self._network:
            self._answer(octets, asker, str(asked))

    def _answer(self, octets, asker, asked):
        behaviour = self._agents.get(asked, self._default)
        seen = self._seen.get(asked, 0)
        self._seen[asked] = seen + 1
        try:
            made = self._cache.replies(behaviour, octets, seen)
        except ber.BerError:
            return
        for delay, datagram, elsewhere in made:
            source = self._elsewhere if elsewhere else asked
            if delay == 0:
                self._send(datagram, asker, source)
            else:
                entry = (time.monotonic() + delay, next(self._order), datagram, asker, source)
                heapq.heappush(self._waiting, entry)

    def _send(self, octets, asker, source):
        information = struct.pack("=I4s4s", 0, socket.inet_aton(source), bytes(4))
        self._socket.sendmsg([octets], [(socket.IPPROTO_IP, IP_PKTINFO, information)], 0, asker)


def main(argument):
    """The program."""
    if subprocess.run([str(harness.LAB / "inside")], check=False).returncode != 0:
        sys.exit("not inside a lab")
    Server(json.loads(argument)).serve(time.monotonic() + 300)


if __name__ == "__main__":
    main(sys.argv[1])

"""What the tests of this folder share: the lab's package on the path, and skips that are
printed."""

import functools
import pathlib
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True

ROOT = pathlib.Path(__file__).resolve().parents[2]
LAB = ROOT / "lab"
sys.path.insert(0, str(LAB))


def skip(reason):
    """Ends the test as skipped, and prints the reason to standard error too."""
    print(f"SKIPPED: {reason}", file=sys.stderr, flush=True)
    raise unittest.SkipTest(reason)


def run_outside(command, environment=None):
    """Runs a program that sends nothing in the machine's own namespace."""
    return subprocess.run(
        command,
        env=environment,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        check=False,
        timeout=60,
    )


@functools.lru_cache(maxsize=None)
def _check():
    return run_outside([sys.executable, str(LAB / "lab"), "--check"])


def require_namespaces():
    """Skips the test on a machine that allows no namespaces. Any other fault of the lab
    fails the test."""
    result = _check()
    if result.returncode == 77:
        skip(result.stderr.strip())
    if result.returncode != 0:
        raise AssertionError(f"lab --check: {result.returncode}: {result.stderr}")


# A host without interfaces.
ALONE = {"subnets": {}, "host": {"interfaces": []}, "agents": []}

# A stand-in for the tool: sends one GET to each address given, and prints the senders of the
# answers within the seconds given, sorted.
ASK = """
import socket, sys, time
sys.path.insert(0, {path!r})
from snmplab import message
asker = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
asker.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
seconds, community, copies = float(sys.argv[1]), sys.argv[2], int(sys.argv[3])
for _ in range(copies):
    for address in sys.argv[4:]:
        asker.sendto(message.get(community, 5), (address, 161))
end, found = time.monotonic() + seconds, []
while end > time.monotonic():
    asker.settimeout(max(0.001, end - time.monotonic()))
    try:
        octets, sender = asker.recvfrom(65535)
    except socket.timeout:
        break
    answer = message.decode(octets)
    assert (answer.pdu_type, answer.request_id) == (message.RESPONSE, 5), answer
    found.append(sender[0])
print(*sorted(found))
""".format(path=str(LAB))


def ask(*addresses, seconds=1.0, community="public", copies=1):
    """The command that asks `addresses`."""
    numbers = [str(seconds), community, str(copies)]
    return [sys.executable, "-B", "-c", ASK, *numbers, *addresses]


def office(*agents):
    """A host at 192.0.2.1 and agents on its subnet, responders unless they name another kind."""
    interface = {"name": "eth0", "subnet": "office", "addresses": "192.0.2.1"}
    return {
        "subnets": {"office": "192.0.2.0/24"},
        "host": {"interfaces": [interface]},
        "agents": [dict({"kind": "responder"}, **agent) for agent in agents],
    }

"""Runs of the real executable in the lab. SNMPDISCOVERY_EXECUTABLE names it."""

import os
import pathlib
import unittest

import harness

from snmplab import api

# Of every run, whatever it found: the document shows whether a run succeeded.
EXIT_CODE = 64

# Two passes of two seconds without a subnet; with one, the workers of the second pass
# gather answers for five seconds. The room above is for a busy machine.
SECONDS_ALONE = (4.0, 6.5)
SECONDS_PROBING = (7.0, 10.0)


def executable():
    """The tool under test. A missing one is a failure and no skip."""
    path = os.environ.get("SNMPDISCOVERY_EXECUTABLE", "")
    if not os.access(path, os.X_OK):
        raise AssertionError(f"SNMPDISCOVERY_EXECUTABLE names no executable: '{path}'")
    return pathlib.Path(path).resolve()


def simulator():
    """The simulator of agents. A missing one is a failure and no skip."""
    path = os.environ.get("SNMPDISCOVERY_LAB_SIMULATOR", "")
    if not os.access(path, os.X_OK):
        raise AssertionError(f"SNMPDISCOVERY_LAB_SIMULATOR names no program: '{path}'")
    return str(pathlib.Path(path).resolve())


def simulated(name, number, *options):
    """An agent of a topology that is the simulator with `options`; `number` ends the
    address of its own, on the subnet 192.0.2.0/24 called office."""
    return {
        "name": name,
        "kind": "program",
        "addresses": {"office": f"192.0.2.{number}"},
        "command": [simulator(), *options],
    }


def document(*addresses):
    """The octets of the document with `addresses` in this order."""
    return ("[" + ",".join(f'{{"hostname":"{a}"}}' for a in addresses) + "]").encode()


class ToolTest(unittest.TestCase):
    """A test of the tool; `discover` checks what every run has in common."""

    def setUp(self):
        harness.require_namespaces()
        self.tool = executable()

    def discover(self, topology, *arguments, seconds=SECONDS_PROBING, **settings):
        """Runs the tool with `arguments` on the host of `topology`; `settings` as in
        snmplab.api.run_in_lab. The exit code and the time taken are checked."""
        outcome = api.run_in_lab(topology, [str(self.tool), *arguments], **settings)
        self.assertEqual(outcome.code, EXIT_CODE, outcome.err)
        least, most = seconds
        self.assertGreaterEqual(outcome.seconds, least)
        self.assertLess(outcome.seconds, most)
        return outcome

    def assert_found(self, outcome, *addresses):
        """Standard output is the document of `addresses` to the octet."""
        self.assertEqual(outcome.out, document(*addresses), outcome.err)


def sent(outcome):
    """The datagrams that the host sent to agents, as the kernel saw them."""
    return [
        each
        for each in outcome.datagrams
        if each.direction == "sent" and each.destination_port == 161
    ]

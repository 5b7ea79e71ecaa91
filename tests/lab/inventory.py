"""Runs of the real snmp-inventory in the lab. SNMPDISCOVERY_INVENTORY names it."""

import json
import os
import pathlib
import sys
import tempfile
import unittest

import harness

from snmplab import api

NETWORK = "198.18.16.0/20"  # of the agents of inventory_agents.py
FIRST = "198.18.16"


def executable():
    """The program under test. A missing one is a failure and no skip."""
    path = os.environ.get("SNMPDISCOVERY_INVENTORY", "")
    if not os.access(path, os.X_OK):
        raise AssertionError(f"SNMPDISCOVERY_INVENTORY names no executable: '{path}'")
    return pathlib.Path(path).resolve()


def campus(default="printer", **agents):
    """A host, and agents at FIRST.NUMBER, each with a behaviour of inventory_agents.py."""
    behaviours = {f"{FIRST}.{number[1:]}": behaviour for number, behaviour in agents.items()}
    settings = {"network": NETWORK, "default": default, "agents": behaviours}
    program = str(harness.ROOT / "tests/lab/inventory_agents.py")
    interface = {"name": "eth0", "subnet": "campus", "addresses": "198.18.0.1"}
    return {
        "subnets": {"campus": "198.18.0.0/17"},
        "host": {"interfaces": [interface]},
        "agents": [
            {
                "name": "agents",
                "kind": "program",
                "addresses": {"campus": "198.18.0.2"},
                "command": [sys.executable, "-B", program, json.dumps(settings)],
            }
        ],
    }


class InventoryTest(unittest.TestCase):
    """A test of the program, with a folder of its own."""

    def setUp(self):
        harness.require_namespaces()
        self.program = executable()
        holder = tempfile.TemporaryDirectory(prefix="inventory-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def file(self, content, name="file"):
        """The path of a new file."""
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return str(path)

    def listing(self, *addresses):
        """The path of a document of `addresses`."""
        entries = [{"hostname": address} for address in addresses]
        return self.file(json.dumps(entries), "document.json")

    def run_program(self, topology, *arguments, code=0, env=None, **settings):
        """The outcome of the program on the host of `topology`."""
        environment = dict(os.environ, **env) if env else None
        command = [str(self.program), *map(str, arguments)]
        outcome = api.run_in_lab(topology, command, env=environment, **settings)
        self.assertEqual(outcome.code, code, outcome.err + outcome.out[-1000:])
        if code in (1, 2):
            self.assertEqual(outcome.out, b"")
        return outcome

    def report(self, topology, *arguments, **settings):
        """The JSON report as a dictionary by address."""
        outcome = self.run_program(topology, *arguments, "--format", "json", **settings)
        entries = json.loads(outcome.out)
        found = {entry["hostname"]: entry for entry in entries}
        self.assertEqual(len(found), len(entries))
        return found

    def ask(self, topology, addresses, *arguments, **settings):
        """The report of these agents, without a run of the tool."""
        return self.report(topology, "--from", self.listing(*addresses), *arguments, **settings)

    def shell(self, topology, script, *arguments, code=0, **settings):
        """The outcome of a shell script, in which $0 is the program."""
        command = ["sh", "-c", script, str(self.program), *map(str, arguments)]
        outcome = api.run_in_lab(topology, command, **settings)
        self.assertEqual(outcome.code, code, outcome.err + outcome.out[-1000:])
        return outcome

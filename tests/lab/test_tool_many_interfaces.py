"""Hosts with very many interfaces: two workers for each, so up to 2,000 sockets, of which a
plain fd_set holds 1,024."""

import json
import os
import pathlib
import shutil
import tempfile
import unittest

import harness
from tool import EXIT_CODE, ToolTest, document

from snmplab import api

# Interfaces that share a wire, on which every broadcast reaches them all.
ON_A_WIRE = 40

# POCO's, of a run that failed.
EXIT_SOFTWARE = 70

# Seconds that a run may take beyond those of a host with one interface. A machine with few
# cores needs them to start the threads and to give each of them its turns. Sanitizers
# multiply them.
SECONDS = (7.0, 40.0)


def network(number):
    """A host with `number` interfaces, each with a subnet of its own, and an agent on the
    host itself, which answers every broadcast from the host's address in that subnet.
    (Agents elsewhere would each need an entry in the kernel's table of neighbours. All
    namespaces share that table, which has room for 1,024.)"""
    subnets, interfaces = {}, []
    for index, address in enumerate(addresses(number)):
        wire = f"w{index // ON_A_WIRE}"
        subnets[wire] = "198.18.0.0/15"
        place = {"subnet": wire, "addresses": f"{address}/30"}
        interfaces.append({"name": f"e{index}", **place})
    agent = {"name": "everywhere", "kind": "responder", "on_host": True}
    return {"subnets": subnets, "host": {"interfaces": interfaces}, "agents": [agent]}


def addresses(number):
    """Those of the host, in the document's order."""
    return sorted(f"198.18.{i // 64}.{i % 64 * 4 + 1}" for i in range(number))


class ManyInterfaces(ToolTest):
    def run_tool(self, number, limit, least=SECONDS[0]):
        """Runs the tool on a host with `number` interfaces and a limit of descriptors."""
        outcome = api.run_in_lab(
            network(number),
            ["sh", "-c", f'ulimit -n {limit} && exec "$@"', "sh", str(self.tool)],
            timeout=140,
        )
        self.assertEqual(outcome.code, EXIT_CODE, outcome.err[-2000:])
        self.assertGreaterEqual(outcome.seconds, least)
        self.assertLess(outcome.seconds, SECONDS[1])
        return outcome

    def assert_all_are_found(self, number, limit=10_000):
        outcome = self.run_tool(number, limit)
        self.assertEqual(outcome.out, document(*addresses(number)), outcome.err[-2000:])

    def test_50(self):
        self.assert_all_are_found(50)

    def test_300(self):
        self.assert_all_are_found(300)

    def test_600_beyond_an_ordinary_set(self):
        self.assert_all_are_found(600)

    def test_600_with_too_low_a_limit(self):
        # Every worker of the first pass gets a socket, not every one of the second.
        self.assert_all_are_found(600, limit=1024)

    def test_300_with_much_too_low_a_limit(self):
        # The subnets that sockets could be opened for are probed all the same. The workers
        # of the second pass find none left and end at once.
        if b"__ubsan_handle" in self.tool.read_bytes():
            # It asks through a pipe whether an object lies in memory, and takes one for
            # broken when no descriptor is left.
            harness.skip("UndefinedBehaviorSanitizer needs descriptors of its own")
        outcome = self.run_tool(300, limit=100, least=5.0)
        found = set(outcome.out.decode().split('"')[3::4])
        self.assertLessEqual(found, set(addresses(300)))
        self.assertGreater(len(found), 80)
        self.assertLess(len(found), 100)
        self.assertEqual(outcome.out, document(*sorted(found)))

    def test_a_thread_that_cannot_be_started_ends_the_run_without_a_document(self):
        if os.geteuid() != 0:
            harness.skip("the limit of threads holds for ordinary users; root can be one")
        folder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-")
        self.addCleanup(folder.cleanup)
        beside = pathlib.Path(folder.name)
        beside.chmod(0o755)
        shutil.copytree(self.tool.parent / "mibs", beside / "mibs")
        tool = shutil.copy2(self.tool, beside / "SNMPDiscovery")
        # A user of the test's own: the limit counts all that a user runs.
        user = str(100_000 + os.getpid() % 1_000_000)
        options = ["--reuid", user, "--regid", user, "--clear-groups"]
        command = ["prlimit", "--nproc=20", "setpriv", *options, "env", "TMPDIR=/nowhere"]
        outcome = api.run_in_lab(network(30), [*command, str(tool)])
        self.assertEqual(outcome.code, EXIT_SOFTWARE, outcome.err)
        self.assertEqual(outcome.out, b"")
        # The run waits for the workers that were started: they listen for five seconds.
        self.assertGreaterEqual(outcome.seconds, 5.0)
        self.assertLess(outcome.seconds, 8.0)

    def test_1000_though_two_cores_cannot_serve_them_all(self):
        # 2,000 workers and the agent want more than two cores can give, so how many answers come in
        # time depends on the machine. What was found is right all the same.
        if os.environ.get("SNMPDISCOVERY_TEST_ALL", "") != "1":
            harness.skip("takes long; scripts/test --all runs it")
        outcome = self.run_tool(1000, 10_000)
        found = [agent["hostname"] for agent in json.loads(outcome.out)]
        self.assertEqual(outcome.out, document(*found))
        self.assertEqual(found, [each for each in addresses(1000) if each in set(found)])
        self.assertGreater(len(found), 300)


if __name__ == "__main__":
    unittest.main()

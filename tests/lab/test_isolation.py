"""A lab never runs in the caller's namespaces, and leaves nothing behind."""

import os
import pathlib
import pwd
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import uuid

import harness
from harness import ALONE

from snmplab import LabError, api, guard, namespaces

LAB = str(harness.LAB / "lab")
INSIDE = str(harness.LAB / "inside")


class Outside(unittest.TestCase):
    """These commands start in the machine's own namespace. Each must be refused before it
    sends anything."""

    def test_the_namespace_it_came_from_is_refused(self):
        with self.assertRaisesRegex(LabError, "that the lab came from"):
            guard.require_fresh(guard.outside_identities())

    def test_a_namespace_in_use_is_refused_though_it_is_another(self):
        with self.assertRaisesRegex(LabError, "refused: "):
            guard.require_fresh(frozenset())

    def test_a_node_that_turns_out_to_be_another_namespace_is_refused(self):
        node = namespaces.Namespace.current("here")
        self.addCleanup(os.close, node.descriptor)
        node.identity = (0, 0)
        code = "raise SystemExit('it ran')"
        with self.assertRaisesRegex(LabError, "refused: not in the namespace of here"):
            node.start([sys.executable, "-c", code]).wait()

    def test_inside_refuses_a_plain_environment(self):
        result = harness.run_outside([sys.executable, INSIDE], {"PATH": os.environ["PATH"]})
        self.assertEqual(result.returncode, 1)
        self.assertIn("SNMP_LAB is not set", result.stderr)

    def test_inside_refuses_what_a_lab_left_in_the_environment(self):
        environment = dict(os.environ, SNMP_LAB="demo", SNMP_LAB_NAMESPACE="4:1")
        result = harness.run_outside([sys.executable, INSIDE], environment)
        self.assertEqual(result.returncode, 1)
        self.assertIn("names another namespace", result.stderr)

    def test_inside_refuses_an_environment_that_names_this_namespace(self):
        own = guard.format_identity(guard.identity())
        environment = dict(os.environ, SNMP_LAB="demo", SNMP_LAB_NAMESPACE=own)
        result = harness.run_outside([sys.executable, INSIDE], environment)
        self.assertEqual(result.returncode, 1)
        self.assertIn("first process", result.stderr)


class Inside(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def test_inside_agrees(self):
        outcome = api.run_in_lab("demo", [sys.executable, INSIDE])
        self.assertEqual((outcome.code, outcome.err), (0, b""))

    def test_inside_refuses_a_namespace_within_that_nobody_vouched_for(self):
        command = ["unshare", "--net", sys.executable, INSIDE]
        outcome = api.run_in_lab(ALONE, command)
        self.assertEqual(outcome.code, 1)
        self.assertIn(b"names another namespace", outcome.err)

    def test_inside_refuses_a_route_that_leads_out(self):
        script = f"ip route add default via 192.0.2.9 && exec {sys.executable} {INSIDE}"
        outcome = api.run_in_lab("demo", ["sh", "-c", script])
        self.assertEqual(outcome.code, 1)
        self.assertIn(b"a default route", outcome.err)

    def test_inside_refuses_an_address_of_no_documentation_range(self):
        script = f"ip address add 192.0.3.1/24 dev eth0; exec {sys.executable} {INSIDE}"
        outcome = api.run_in_lab("demo", ["sh", "-c", script])
        self.assertEqual(outcome.code, 1)
        self.assertIn(b"192.0.3.1 is no documentation address", outcome.err)

    def test_the_command_is_in_another_namespace_than_its_caller(self):
        command = ["readlink", "/proc/self/ns/net"]
        outcome = api.run_in_lab(ALONE, command)
        self.assertRegex(outcome.out, rb"net:\[\d+\]")
        self.assertNotEqual(outcome.out.decode().strip(), os.readlink(command[1]))

    def test_the_host_has_its_topology_and_no_way_out(self):
        outcome = api.run_in_lab("demo", ["ip", "-4", "-oneline", "address"])
        shown = [line.split()[1:4:2] for line in outcome.out.decode().splitlines()]
        self.assertEqual(
            shown,
            [
                ["lo", "127.0.0.1/8"],
                ["eth0", "192.0.2.1/24"],
                ["eth1", "198.51.100.1/25"],
                ["eth2", "203.0.113.65/26"],
            ],
        )
        outcome = api.run_in_lab("demo", ["ip", "-6", "route", "show", "default"])
        self.assertEqual((outcome.code, outcome.out), (0, b""))


class Afterwards(unittest.TestCase):
    """Every process of a lab inherits a mark in its environment, so that the machine
    can be searched for what is left."""

    def setUp(self):
        harness.require_namespaces()
        self.mark = f"SNMP_LAB_TEST={uuid.uuid4()}"

    def marked(self):
        """Process ids of the machine with the mark in their environment."""
        found = []
        for folder in pathlib.Path("/proc").iterdir():
            if not folder.name.isdigit():
                continue
            try:
                if self.mark.encode() in (folder / "environ").read_bytes().split(b"\0"):
                    found.append(int(folder.name))
            except OSError:
                continue  # ended in between, or somebody else's
        return found

    def wait_until_gone(self):
        deadline = time.monotonic() + 20
        while self.marked():
            self.assertLess(time.monotonic(), deadline, f"left: {self.marked()}")
            time.sleep(0.05)

    def start(self):
        """A lab of the demo whose command has said that it runs."""
        name, value = self.mark.split("=")
        process = subprocess.Popen(
            [sys.executable, LAB, "--", "sh", "-c", "echo up; exec sleep 300"],
            env=dict(os.environ, **{name: value}),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdout.close)
        self.assertEqual(process.stdout.readline(), b"up\n")
        # Caller, first process, five agents, command.
        self.assertEqual(len(self.marked()), 8)
        return process

    def test_nothing_is_left_when_the_command_has_ended(self):
        name, value = self.mark.split("=")
        before = (os.listdir("/run"), pathlib.Path("/proc/mounts").read_text("utf-8"))
        script = "(sleep 300 &) >/dev/null 2>&1; echo done"
        environment = dict(os.environ, **{name: value})
        outcome = api.run_in_lab("demo", ["sh", "-c", script], env=environment)
        self.assertEqual((outcome.code, outcome.out), (0, b"done\n"))
        self.wait_until_gone()
        after = (os.listdir("/run"), pathlib.Path("/proc/mounts").read_text("utf-8"))
        self.assertEqual(before, after)

    def test_nothing_is_left_when_the_lab_was_killed(self):
        process = self.start()
        process.kill()
        self.assertEqual(process.wait(20), -signal.SIGKILL)
        self.wait_until_gone()

    def test_a_signal_ends_the_lab_and_its_code_tells_which(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                process = self.start()
                process.send_signal(number)
                self.assertEqual(process.wait(20), 128 + number)
                self.wait_until_gone()


class OrdinaryUser(unittest.TestCase):
    """As root these become "nobody"; else they are who they are. The lab is copied to
    where everybody may read it, and found by the path of Debian's own python3."""

    def setUp(self):
        harness.require_namespaces()
        folder = tempfile.TemporaryDirectory(prefix="snmplab-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.folder.chmod(0o777)
        ignore = shutil.ignore_patterns("__pycache__")
        shutil.copytree(harness.LAB, self.folder / "lab", ignore=ignore)

    def run_as_nobody(self, *arguments):
        """Runs the copy of lab/lab with `arguments`."""
        become = []
        if os.geteuid() == 0:
            account = pwd.getpwnam("nobody")
            become = ["setpriv", f"--reuid={account.pw_uid}", f"--regid={account.pw_gid}"]
            become += ["--clear-groups"]
        return subprocess.run(
            [*become, str(self.folder / "lab" / "lab"), *arguments],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            check=False,
            timeout=60,
            cwd="/",
            env={"PATH": "/usr/bin:/bin"},
        )

    def test_the_demo_runs_and_inside_agrees(self):
        result = self.run_as_nobody("--", str(self.folder / "lab" / "inside"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_capture_can_be_written(self):
        path = self.folder / "packets"
        result = self.run_as_nobody("--capture", str(path), "--", "true")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(path.read_bytes(), b"")

    def test_a_user_namespace_for_root_too(self):
        command = [sys.executable, LAB, "--user", "--", "cat", "/proc/self/uid_map"]
        result = subprocess.run(
            command, capture_output=True, text=True, check=True, timeout=60
        )
        self.assertEqual(result.stdout.split(), ["0", str(os.geteuid()), "1"])


if __name__ == "__main__":
    unittest.main()

"""The units of deploy/systemd: what systemd's own tools say of them, the command that the
service runs, and that the tool makes no system call that the service denies."""

import pathlib
import re
import shlex
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

FOLDER = ROOT / "deploy/systemd"
SERVICE = FOLDER / "snmpdiscovery.service"
TIMER = FOLDER / "snmpdiscovery.timer"

# Of 10, where 10 is no protection at all. What remains is the network, which it is for.
MOST_EXPOSURE = 15  # in tenths


class Units(unittest.TestCase):
    def setUp(self):
        shipping.require("systemd-analyze")

    def test_both_are_valid(self):
        for unit in (SERVICE, TIMER):
            said = run("systemd-analyze", "verify", "--man=no", unit)
            self.assertEqual(said, "", unit.name)

    def test_a_mistake_would_be_found(self):
        folder = shipping.work_folder("units")
        wrong = folder / "snmpdiscovery.service"
        wrong.write_text(SERVICE.read_text("utf-8").replace("Type=oneshot", "Type=once"))
        said = run("systemd-analyze", "verify", "--man=no", wrong)
        self.assertIn("Failed to parse service type", said)

    def test_the_service_is_hardened(self):
        options = ["--offline=true", "--no-pager", f"--threshold={MOST_EXPOSURE}"]
        run("systemd-analyze", "security", *options, SERVICE)

    def test_the_service_s_memory_has_a_limit(self):
        self.assertEqual(settings("MemoryMax"), ["256M"])

    def test_the_timer_runs_every_hour(self):
        text = TIMER.read_text("utf-8")
        when = re.search(r"^OnCalendar=(.*)$", text, re.MULTILINE).group(1)
        said = run("systemd-analyze", "calendar", when)
        self.assertIn("Normalized form: *-*-* *:00:00", said)


def settings(name):
    """The values of a setting of the service, in their order."""
    text = SERVICE.read_text("utf-8")
    return re.findall(rf"^{name}=(.*)$", text, re.MULTILINE)


def calls(group):
    """The system calls of a group of systemd's, those of its subgroups too."""
    found = set()
    for line in run("systemd-analyze", "syscall-filter", "--no-pager", group).splitlines()[1:]:
        word = line.strip()
        if word.startswith("@"):
            found |= calls(word)
        elif word and not word.startswith("#"):
            found.add(word)
    return found


class Service(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("systemd-analyze", "strace")
        self.tool = shipping.build_folder() / "SNMPDiscovery"
        self.folder = shipping.work_folder("service")
        for name in ("state", "cache"):
            (self.folder / name).mkdir()

    def start(self, tool, code):
        """Runs the service's command as systemd would, `tool` first on the path."""
        binaries = shipping.work_folder("service-bin")
        (binaries / "SNMPDiscovery").write_text(f'#!/bin/sh\nexec {tool} "$@"\n', "utf-8")
        (binaries / "SNMPDiscovery").chmod(0o755)
        (command,) = settings("ExecStart")
        folders = [f"{n.upper()}_DIRECTORY={self.folder / n}" for n in ("state", "cache")]
        path = f"PATH={binaries}:/usr/bin:/bin"
        return self.in_lab("demo", "env", path, *folders, *shlex.split(command), code=code)

    def document(self):
        path = self.folder / "state/agents.json"
        return path.read_bytes() if path.exists() else None

    def test_a_good_run_succeeds_and_keeps_its_document(self):
        self.start(shlex.quote(str(self.tool)), 0)
        self.assertEqual(self.document(), shipping.DEMO_DOCUMENT)
        self.assertTrue(any((self.folder / "cache").iterdir()))

    def test_a_run_without_a_document_fails_and_keeps_the_last_one(self):
        (self.folder / "state/agents.json").write_text("[]")
        self.start("true", 1)
        self.assertEqual(self.document(), b"[]")

    def test_the_tool_makes_no_call_that_is_denied(self):
        trace = self.folder / "trace"
        command = ["strace", "-f", "-qq", "-o", trace, self.tool]
        self.in_lab("demo", *command, code=64)
        text = trace.read_text("utf-8", "replace")
        made = set(re.findall(r"^[0-9]+ +([a-z0-9_]+)\(", text, re.MULTILINE))
        self.assertIn("sendto" if "sendto" in made else "sendmsg", made)
        allowed = set()
        for value in settings("SystemCallFilter"):
            for group in value.lstrip("~").split():
                if value.startswith("~"):
                    allowed -= calls(group)
                else:
                    allowed |= calls(group) | calls("@default")
        self.assertEqual(made - allowed, set())
        families = settings("RestrictAddressFamilies")[0].split()
        self.assertLessEqual(set(re.findall(r"socket\((AF_\w+)", text)), set(families))


if __name__ == "__main__":
    unittest.main()

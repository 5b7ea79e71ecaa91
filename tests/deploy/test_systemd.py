"""The units of deploy/systemd: what systemd's own tools say of them, the command that the
service runs, and that it makes no system call that the service denies."""

import json
import pathlib
import re
import shlex
import shutil
import stat
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

FOLDER = ROOT / "deploy/systemd"
SERVICE = FOLDER / "snmpdiscovery.service"
TIMER = FOLDER / "snmpdiscovery.timer"
USERS = FOLDER / "sysusers.conf"

# Of 10, where 10 is no protection at all. What remains is the network, which it is for.
MOST_EXPOSURE = 15  # in tenths


class Units(unittest.TestCase):
    def setUp(self):
        shipping.require("systemd-analyze")

    def verify(self, unit, *replaced):
        """What systemd says of a unit, whose program is that of the build."""
        copy = shipping.work_folder("units") / unit.name
        program = shipping.build_folder() / "snmp-inventory"
        text = unit.read_text("utf-8").replace("ExecStart=snmp-inventory", f"ExecStart={program}")
        for old, new in replaced:
            self.assertIn(old, text)
            text = text.replace(old, new)
        copy.write_text(text, "utf-8")
        return run("systemd-analyze", "verify", "--man=no", copy)

    def test_both_are_valid(self):
        for unit in (SERVICE, TIMER):
            self.assertEqual(self.verify(unit), "", unit.name)

    def test_a_mistake_would_be_found(self):
        said = self.verify(SERVICE, ("Type=oneshot", "Type=once"))
        self.assertIn("Failed to parse service type", said)

    def test_the_service_is_hardened(self):
        options = ["--offline=true", "--no-pager", f"--threshold={MOST_EXPOSURE}"]
        run("systemd-analyze", "security", *options, SERVICE)

    def test_the_service_s_memory_has_a_limit(self):
        self.assertEqual(settings("MemoryMax"), ["256M"])

    def test_its_user_and_group_are_made_by_systemd_sysusers(self):
        shipping.require("systemd-sysusers")
        root = shipping.work_folder("sysusers")
        (root / "etc").mkdir()
        (root / "usr/lib/sysusers.d").mkdir(parents=True)
        shutil.copy(USERS, root / "usr/lib/sysusers.d/snmpdiscovery.conf")
        run("systemd-sysusers", f"--root={root}", "snmpdiscovery.conf")
        (user,) = settings("User")
        (group,) = settings("Group")
        users = (root / "etc/passwd").read_text("utf-8")
        self.assertRegex(users, rf"(?m)^{user}:.*:/usr/sbin/nologin$")
        self.assertRegex((root / "etc/group").read_text("utf-8"), rf"(?m)^{group}:")

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
        build = shipping.build_folder()
        self.folder = shipping.work_folder("service")
        self.report = self.folder / "state/snmpdiscovery/agents.json"
        self.report.parent.mkdir(parents=True)
        # Where every package has them: side by side.
        self.binaries = self.folder / "bin"
        self.binaries.mkdir()
        for name in ("SNMPDiscovery", "snmp-inventory"):
            shutil.copy2(build / name, self.binaries)
        shutil.copytree(build / "mibs", self.binaries / "mibs")
        # systemd's file for the service, with the default that stands in the unit.
        (credential,) = settings("SetCredential")
        name, _, default = credential.partition(":")
        self.credential = self.folder / "credentials" / name
        self.credential.parent.mkdir()
        self.credential.write_text(default)

    def command(self):
        """The service's command as systemd would start it."""
        (text,) = settings("ExecStart")
        text = text.replace("%S", str(self.folder / "state"))
        program, *words = shlex.split(text.replace("%d", str(self.credential.parent)))
        self.assertEqual(program, "snmp-inventory")
        return [str(self.binaries / program), *words]

    def start(self, code, *before):
        umask = f"umask {settings('UMask')[0]}; " + 'exec "$@"'
        return self.in_lab("demo", "sh", "-c", umask, "sh", *before, *self.command(), code=code)

    def replace_tool(self, script):
        (self.binaries / "SNMPDiscovery").write_text(f"#!/bin/sh\n{script}\n", "utf-8")

    def found(self):
        return [each["hostname"] for each in json.loads(self.report.read_text("utf-8"))]

    def test_a_good_run_writes_the_report_for_the_group(self):
        self.start(0)
        addresses = ["192.0.2.9", "192.0.2.10", "198.51.100.20", "203.0.113.70"]
        self.assertEqual(self.found(), addresses)
        self.assertEqual(stat.S_IMODE(self.report.stat().st_mode), 0o640)
        self.assertEqual(settings("StateDirectoryMode"), ["0750"])
        self.assertEqual([each.name for each in self.report.parent.iterdir()], ["agents.json"])

    def test_rubbish_never_replaces_a_good_report(self):
        self.report.write_text("[]")
        for script in ("echo usage", "printf '[{\"hostname\":\"192.0'", "exit 64", "kill -KILL $$"):
            with self.subTest(script):
                self.replace_tool(script)
                self.assertEqual(self.start(1).out, b"")
                self.assertEqual(self.report.read_text(), "[]")

    def test_a_full_disk_leaves_the_last_report(self):
        script = """exec 2>&1
        mount -t tmpfs -o size=16k none "$1" && cd "$1" && shift || exit 9
        printf "[]" >agents.json
        head -c 100000 /dev/zero >fill
        "$@"; echo "ended: $?"
        cat agents.json"""
        command = ["sh", "-c", script, "sh", self.report.parent, *self.command()]
        said = self.in_lab("demo", *command).out.decode()
        self.assertIn("No space left on device", said)
        self.assertTrue(said.endswith("ended: 1\n[]"), said)

    def test_the_community_comes_from_a_file_that_only_root_may_read(self):
        # systemd hands it to the service in a file of its own.
        (loaded,) = settings("LoadCredential")
        self.assertEqual(loaded, f"{self.credential.name}:/etc/snmpdiscovery/community")
        self.credential.write_text("secret\n")
        self.start(0)
        self.assertEqual(self.found(), ["198.51.100.21"])

    def test_no_call_is_made_that_is_denied(self):
        trace = self.folder / "trace"
        self.credential.write_text("secret")
        self.start(0, "strace", "-f", "-qq", "-o", trace)
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

"""What the tool does when a folder or a file that it needs is missing or damaged, and
what it never prints."""

import os
import pathlib
import random
import shutil
import tempfile
import unittest

import harness
from harness import office
from tool import EXIT_CODE, ToolTest

from snmplab import api

LASER = {"name": "laser", "addresses": {"office": "192.0.2.9"}}

# POCO's, when the framework cannot set the application up.
EXIT_CONFIG = 78

SYS_UP_TIME = "1.3.6.1.2.1.1.3.0"
# What Net-SNMP makes of an object identifier without sub-identifiers.
NOTHING = "0.0.0"


class FaultTest(ToolTest):
    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-")
        self.addCleanup(folder.cleanup)
        self.beside = pathlib.Path(folder.name)
        self.beside.chmod(0o755)
        self.mibs = self.beside / "mibs"
        shutil.copytree(self.tool.parent / "mibs", self.mibs)
        self.tool = pathlib.Path(shutil.copy2(self.tool, self.beside / "SNMPDiscovery"))

    def assert_asked_for(self, outcome, *names):
        asked = {
            binding.name
            for each in outcome.datagrams
            if each.direction == "sent"
            for binding in each.message.bindings
        }
        self.assertEqual(asked, set(names))


class Modules(FaultTest):
    """Without its modules the tool cannot resolve sysUpTime.0, and asks for an object that
    does not exist. An agent that answers with an error status is found all the same."""

    def test_folder_is_missing(self):
        shutil.rmtree(self.mibs)
        outcome = self.discover(office(LASER), capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assert_asked_for(outcome, NOTHING)

    def test_folder_is_empty(self):
        shutil.rmtree(self.mibs)
        self.mibs.mkdir()
        snmpd = dict(LASER, kind="snmpd")
        self.assert_found(self.discover(office(snmpd)), "192.0.2.9")

    def test_folder_is_full_of_rubbish(self):
        shutil.rmtree(self.mibs)
        self.mibs.mkdir()
        source = random.Random(1)
        for name in ("Printer-MIB", "SNMPv2-MIB", "SNMPv2-SMI", "more.txt", "other.my"):
            (self.mibs / name).write_bytes(source.randbytes(100_000))
        (self.mibs / "begin.txt").write_text(
            "Printer-MIB DEFINITIONS ::= BEGIN IMPORTS {{{ ;\n" * 1000, encoding="ascii"
        )
        outcome = self.discover(office(LASER), capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assert_asked_for(outcome, NOTHING)

    def test_folder_cannot_be_read(self):
        if os.geteuid() != 0:
            harness.skip("only root can become a user that may not read the folder")
        self.mibs.chmod(0)
        user = ["--reuid", "65534", "--regid", "65534", "--clear-groups"]
        outcome = api.run_in_lab(office(LASER), ["setpriv", *user, str(self.tool)])
        self.assertEqual(outcome.code, EXIT_CODE, outcome.err)
        self.assert_found(outcome, "192.0.2.9")

    def test_all_is_well_otherwise(self):
        outcome = self.discover(office(LASER), capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assert_asked_for(outcome, SYS_UP_TIME)


class Persistence(FaultTest):
    def test_folder_cannot_be_made(self):
        for where in ("/proc/nowhere/state", "/dev/null/state"):
            with self.subTest(where=where):
                outcome = self.discover(office(LASER), f"--SNMPPersistPath={where}")
                self.assert_found(outcome, "192.0.2.9")


class Configuration(FaultTest):
    def assert_run_fails(self, name, text):
        (self.beside / name).write_text(text, encoding="ascii")
        outcome = api.run_in_lab(office(LASER), [str(self.tool)], capture=True)
        self.assertEqual(outcome.code, EXIT_CONFIG, outcome.err)
        self.assertEqual(outcome.out, b"")
        self.assertEqual(outcome.datagrams, ())
        return outcome

    def test_xml_that_cannot_be_parsed(self):
        self.assert_run_fails("SNMPDiscovery.xml", "<config><Community>x</config>")

    def test_json_that_cannot_be_parsed(self):
        self.assert_run_fails("SNMPDiscovery.json", '{"Community": ')


class Secrets(FaultTest):
    """The community goes to agents and nowhere else."""

    SECRET = "opensesame"

    def assert_secret(self, outcome):
        for said in (outcome.out, outcome.err):
            self.assertNotIn(self.SECRET.encode(), said)

    def test_community_is_not_in_the_output_of_a_run(self):
        agent = dict(LASER, community=self.SECRET)
        outcome = self.discover(office(agent), "-c", self.SECRET)
        self.assert_found(outcome, "192.0.2.9")
        self.assert_secret(outcome)

    def test_community_is_not_in_the_help_for_a_bad_command_line(self):
        line = [str(self.tool), "-c", self.SECRET, f"--Communty={self.SECRET}"]
        outcome = api.run_in_lab(office(LASER), line)
        self.assertEqual(outcome.code, EXIT_CODE)
        self.assertIn(b"usage:", outcome.out)
        self.assert_secret(outcome)

    def test_community_is_not_in_what_a_failed_run_says(self):
        name = self.beside / "SNMPDiscovery.json"
        name.write_text(f'{{"Community": "{self.SECRET}", ', encoding="ascii")
        outcome = api.run_in_lab(office(LASER), [str(self.tool), "-c", self.SECRET])
        self.assertEqual(outcome.code, EXIT_CONFIG, outcome.err)
        self.assert_secret(outcome)

    def test_community_is_not_in_what_net_snmp_says(self):
        # It has much to say when its folders are not there.
        shutil.rmtree(self.mibs)
        outcome = self.discover(
            office(LASER), "-c", self.SECRET, "--SNMPPersistPath=/dev/null/state"
        )
        self.assertNotEqual(outcome.err, b"")
        self.assert_secret(outcome)


if __name__ == "__main__":
    unittest.main()

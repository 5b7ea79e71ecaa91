"""The tool's command line and configuration."""

import pathlib
import shutil
import tempfile
import unittest

from harness import office
from tool import ToolTest, sent

AGENTS = (
    {"name": "laser", "addresses": {"office": "192.0.2.9"}},
    {
        "name": "private",
        "kind": "snmpd",
        "community": "secret",
        "addresses": {"office": "192.0.2.20"},
    },
    {"name": "hidden", "community": "hidden", "addresses": {"office": "192.0.2.30"}},
)


class Community(ToolTest):
    def copy_of_the_tool(self, configuration):
        """Puts the tool into a folder of its own, where its configuration file is
        looked for; tool and MIB modules belong side by side."""
        folder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-")
        self.addCleanup(folder.cleanup)
        beside = pathlib.Path(folder.name)
        shutil.copytree(self.tool.parent / "mibs", beside / "mibs")
        self.tool = pathlib.Path(shutil.copy2(self.tool, beside / "SNMPDiscovery"))
        file = beside / "SNMPDiscovery.properties"
        file.write_text(configuration, encoding="ascii")

    def assert_asked(self, outcome, community):
        self.assertEqual({each.message.community for each in sent(outcome)}, {community})

    def test_by_short_option(self):
        outcome = self.discover(office(*AGENTS), "-c", "secret", capture=True)
        self.assert_found(outcome, "192.0.2.20")
        self.assert_asked(outcome, b"secret")

    def test_by_long_option(self):
        outcome = self.discover(office(*AGENTS), "--Community=secret")
        self.assert_found(outcome, "192.0.2.20")

    def test_by_configuration_file(self):
        self.copy_of_the_tool("Community = secret\n")
        outcome = self.discover(office(*AGENTS), capture=True)
        self.assert_found(outcome, "192.0.2.20")
        self.assert_asked(outcome, b"secret")

    def test_by_option_though_the_configuration_file_names_another(self):
        self.copy_of_the_tool("Community = secret\n")
        outcome = self.discover(office(*AGENTS), "-c", "hidden")
        self.assert_found(outcome, "192.0.2.30")

    def test_that_nobody_has_gives_an_empty_array(self):
        outcome = self.discover(office(*AGENTS), "-c", "wrong", capture=True)
        self.assert_found(outcome)
        self.assert_asked(outcome, b"wrong")


class PersistentFolder(ToolTest):
    def test_is_made_where_the_option_says_without_a_trailing_separator(self):
        with tempfile.TemporaryDirectory(prefix="snmpdiscovery-") as folder:
            wanted = pathlib.Path(folder, "new", "persistent")
            option = f"--SNMPPersistPath={wanted}"
            outcome = self.discover(office(*AGENTS), option)
            self.assert_found(outcome, "192.0.2.9")
            self.assertTrue(wanted.is_dir())
            self.assertEqual(list(wanted.parent.iterdir()), [wanted])


class Help(ToolTest):
    WORDS = (
        b"usage: SNMPDiscovery OPTIONS",
        b"An UVAR SNMP Printer Discovery Tool.",
        b"-h, --help",
        b"name, --Community=name",  # POCO writes "-cname" until 1.13, "-c name" in 1.14
        b"--SNMPPersistPath=path",
    )

    def assert_help(self, *arguments):
        """The tool prints its help and nothing more, and sends nothing."""
        outcome = self.discover(
            office(*AGENTS), *arguments, seconds=(0, 3.5), capture=True
        )
        for words in self.WORDS:
            self.assertIn(words, outcome.out)
        self.assertNotIn(b"hostname", outcome.out)
        self.assertNotIn(b"[]", outcome.out)
        self.assertEqual(outcome.err, b"")
        self.assertEqual(outcome.datagrams, ())
        return outcome.out

    def test_for_h(self):
        self.assert_help("-h")

    def test_for_help(self):
        self.assert_help("--help")

    def test_for_an_unknown_option(self):
        self.assert_help("--colour")

    def test_for_c_without_its_argument(self):
        self.assert_help("-c")

    def test_for_persist_path_without_its_argument(self):
        self.assert_help("--SNMPPersistPath")

    def test_once_though_a_fault_follows(self):
        printed = self.assert_help("--help", "--colour")
        self.assertEqual(printed.count(b"usage:"), 1)


if __name__ == "__main__":
    unittest.main()

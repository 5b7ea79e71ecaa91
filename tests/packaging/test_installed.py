"""The component "runtime" as `cmake --install` lays it out: found through the launcher,
from anywhere."""

import os
import shutil
import tempfile
import pathlib
import re
import unittest

import links
import shipping
import terminal
from shipping import ROOT, run


class Installed(shipping.LabTest):
    def setUp(self):
        super().setUp()
        holder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-installed-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.prefix = self.folder / "a prefix"
        shipping.install(self.prefix, "runtime")
        self.launcher = self.prefix / "bin/SNMPDiscovery"

    def test_the_tree_is_what_a_system_expects(self):
        private = "libexec/SNMPDiscovery"
        modules = sorted(path.name for path in (ROOT / "mibs").glob("*.txt"))
        found = sorted(p.name for p in (self.prefix / private / "mibs").iterdir())
        self.assertEqual(found, modules)
        for path in (
            f"{private}/SNMPDiscovery",
            f"{private}/snmp-inventory",
            "bin/SNMPDiscovery",
            "bin/snmp-inventory",
            "share/man/man1/SNMPDiscovery.1",
            "share/man/man1/snmp-inventory.1",
            "share/bash-completion/completions/SNMPDiscovery",
            "share/bash-completion/completions/snmp-inventory",
            "share/doc/snmpdiscovery/docs/inventory.md",
            "share/doc/snmpdiscovery/docs/inventory.schema.json",
            "share/doc/snmpdiscovery/LICENSE",
            "share/doc/snmpdiscovery/README.md",
        ):
            self.assertTrue((self.prefix / path).is_file(), path)

    def test_links_between_the_documents_hold(self):
        self.assertEqual(links.broken(self.prefix / "share/doc/snmpdiscovery"), [])

    def test_the_launcher_finds_the_agents(self):
        self.assert_discovers_demo(self.prefix / "bin/SNMPDiscovery")

    def test_the_launcher_through_the_path_after_the_tree_was_moved(self):
        moved = self.folder / "moved"
        shutil.move(self.prefix, moved)
        path = f"{moved / 'bin'}:{os.environ['PATH']}"
        self.assert_discovers_demo("env", f"PATH={path}", "SNMPDiscovery")

    def test_a_colon_in_the_path_does_not_lose_the_modules(self):
        moved = self.folder / "one:two"
        shutil.move(self.prefix, moved)
        self.assert_discovers_demo(moved / "bin/SNMPDiscovery")

    def test_a_folder_in_place_of_the_settings_ends_the_run_at_once(self):
        private = self.prefix / "libexec/SNMPDiscovery"
        for extension in ("properties", "ini"):
            with self.subTest(extension):
                wrong = private / f"SNMPDiscovery.{extension}"
                wrong.mkdir()
                outcome = self.in_lab("demo", "timeout", "5", self.launcher, code=78)
                self.assertEqual(outcome.out, b"")
                self.assertIn(f"not a file: {wrong}".encode(), outcome.err)
                wrong.rmdir()

    IN_A_DELETED_FOLDER = 'mkdir "$TMPDIR/gone"; cd "$TMPDIR/gone"; rmdir "$TMPDIR/gone"; exec "$@"'

    def test_a_current_folder_that_was_deleted_does_no_harm(self):
        command = ("sh", "-c", self.IN_A_DELETED_FOLDER, "sh", self.launcher)
        for persistent in ((), (f"--SNMPPersistPath={self.folder}/persistent",)):
            self.assert_discovers_demo(*command, *persistent)

    def test_nothing_is_relative_to_a_current_folder_that_was_deleted(self):
        command = ("sh", "-c", self.IN_A_DELETED_FOLDER, "sh", self.launcher)
        for words in (("--SNMPPersistPath=here",), ("--snmp", f"{self.folder}/here")):
            with self.subTest(words):
                outcome = self.in_lab("demo", *command, *words, code=78)
                self.assertEqual(outcome.out, b"")
                self.assertIn(b"the current folder was deleted", outcome.err)

    def test_snmp_inventory_finds_the_tool_and_the_modules(self):
        self.assert_takes_stock(self.prefix / "bin/snmp-inventory")

    def test_snmp_inventory_through_a_link_after_the_tree_was_moved(self):
        moved = self.folder / "one:two"
        shutil.move(self.prefix, moved)
        (self.folder / "link").symlink_to(moved / "bin/snmp-inventory")
        self.assert_takes_stock(self.folder / "link")

    def test_links_to_the_launcher_are_followed(self):
        (self.folder / "first").symlink_to("a prefix/bin/SNMPDiscovery")
        (self.folder / "second").symlink_to(self.folder / "first")
        self.assert_discovers_demo(self.folder / "second")

    def test_a_link_to_the_executable_itself_lacks_the_modules(self):
        # Why there is a launcher: the modules are looked for beside the link.
        link = self.folder / "link"
        link.symlink_to(self.prefix / "libexec/SNMPDiscovery/SNMPDiscovery")
        outcome = self.in_lab("demo", link, code=64, capture=True)
        self.assertIn(b"Cannot find module (Printer-MIB)", outcome.err)
        self.assertFalse(shipping.asks_for_up_time(outcome))

    def test_the_launcher_hands_on_every_argument_and_the_exit_code(self):
        launcher = self.launcher
        outcome = self.in_lab("demo", launcher, "-c", "secret", code=64)
        self.assertEqual(outcome.out, b'[{"hostname":"198.51.100.21"}]')
        said = run("sh", launcher.name, "--help", code=64, cwd=launcher.parent)
        self.assertIn("usage: SNMPDiscovery OPTIONS", said)
        persistent = self.folder / "with space"
        self.in_lab("demo", launcher, f"--SNMPPersistPath={persistent}", code=64)
        self.assertTrue(persistent.is_dir())


class Completion(unittest.TestCase):
    """What the tab key makes of a line, in a real terminal."""

    program = "SNMPDiscovery"
    source = "completion.bash"
    CASES = {
        "--SN\t": "--SNMPPersistPath=",
        "--SN\tus\t": "--SNMPPersistPath=usr/",
        "--SNMPPersistPath=us\tlo\t": "--SNMPPersistPath=usr/local/",
        "--SNMPPersistPath=with\t": "--SNMPPersistPath=with\\ blank/",
        "--SNMPPersistPath=with\tin\t": "--SNMPPersistPath=with\\ blank/inside/",
        "--C\t": "--Community=",
        "--Community=us\t": "--Community=us",
        "--h\t": "--help ",
        "--\t": "--",
        "-c \t": "-c ",
        "-c us\t": "-c us",
    }

    def completed(self, settings):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            for name in ("usr/local", "with blank/inside"):
                (folder / name).mkdir(parents=True)
            (folder / "usage").touch()
            source = ROOT / "packaging" / self.source
            with terminal.Bash(folder, source, settings=settings) as bash:
                for keys, expected in self.CASES.items():
                    with self.subTest(keys):
                        line = bash.line_after(f"{self.program} {keys}")
                        self.assertEqual(line, f"{self.program} {expected}")

    def test_with_words_broken_at_an_equals_sign(self):
        self.completed("")

    def test_with_words_that_hold_equals_signs(self):
        self.completed("COMP_WORDBREAKS=${COMP_WORDBREAKS//=}")


class CompletionOfInventory(Completion):
    program = "snmp-inventory"
    source = "inventory-completion.bash"
    CASES = {
        "--no\t": "--no-ask ",
        "--com\t": "--com",
        "--form\tz\t": "--format zabbix ",
        "--format=pro\t": "--format=prometheus ",
        "--output us\t": "--output us",
        "--output usr\tlo\t": "--output usr/local/",
        "--output=usr/lo\t": "--output=usr/local/",
        "--from=with\t": "--from=with\\ blank/",
        "--mibs us\t": "--mibs usr/",
        "--seconds us\t": "--seconds us",
        "--quiet --pr\t": "--quiet --printers ",
    }

    def test_every_option_is_known(self):
        text = (ROOT / "packaging" / self.source).read_text("utf-8")
        options = run(shipping.build_folder() / "snmp-inventory", "--help")
        told = re.findall(r"^ +(?:-h, *)?(--[a-z-]+)", options, re.MULTILINE)
        self.assertGreater(len(told), 14)
        for option in told:
            self.assertRegex(text, rf"[' ]{option}[ ']")


if __name__ == "__main__":
    unittest.main()

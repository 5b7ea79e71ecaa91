"""The tool under a parent that treats it badly. parent.py, which runs on the lab's host, is
that parent."""

import base64
import json
import os
import pathlib
import shutil
import signal
import sys
import tempfile
import unittest

from harness import ALONE, office, skip
from tool import EXIT_CODE, SECONDS_PROBING, ToolTest, document

from snmplab import api

PARENT = str(pathlib.Path(__file__).with_name("parent.py"))
LASER = {"name": "laser", "addresses": {"office": "192.0.2.9"}}
# The parent's own start, and a busy machine.
SECONDS_MORE = 2.0


class ParentTest(ToolTest):
    def under(self, mode, *, topology=None, env=None, settings=(), **more):
        """What the parent reports about the tool."""
        outcome = api.run_in_lab(
            topology or office(LASER),
            [sys.executable, "-B", PARENT, mode, *settings, str(self.tool)],
            env=dict(os.environ, **(env or {})),
            timeout=120,
            **more,
        )
        lines = outcome.err.decode(errors="replace").splitlines()
        self.assertTrue(lines and lines[-1].startswith("{"), outcome.err[-2000:])
        told = json.loads(lines[-1])
        self.assertNotIn("hung", told)
        told["output"] = base64.b64decode(told["output"])
        told["datagrams"] = outcome.datagrams
        return told

    def folder(self):
        name = tempfile.mkdtemp(prefix="snmpdiscovery-")
        self.addCleanup(shutil.rmtree, name)
        return pathlib.Path(name)

    def assert_in_time(self, told):
        self.assertGreaterEqual(told["seconds"], SECONDS_PROBING[0])
        self.assertLess(told["seconds"], SECONDS_PROBING[1] + SECONDS_MORE)

    def assert_found_in_time(self, told):
        self.assertEqual(told["code"], EXIT_CODE)
        self.assertEqual(told["output"], document("192.0.2.9"))
        self.assert_in_time(told)


class Streams(ParentTest):
    def test_standard_error_is_a_full_pipe_that_nobody_reads(self):
        # Net-SNMP complains of each line of its configuration: over a megabyte.
        folder = self.folder()
        rubbish = "".join(f"noSuchToken{number} value\n" for number in range(20_000))
        (folder / "snmp.conf").write_text(rubbish, encoding="ascii")
        told = self.under("full-error", env={"SNMPCONFPATH": str(folder)})
        self.assert_found_in_time(told)

    def test_standard_output_takes_nothing(self):
        told = self.under("full-output")
        self.assertEqual(told["code"], EXIT_CODE)
        self.assert_in_time(told)

    def test_standard_output_is_a_pipe_without_a_reader(self):
        # No signal ends the run: POCO's network library has SIGPIPE ignored.
        told = self.under("broken-output")
        self.assertEqual(told["code"], EXIT_CODE)
        self.assert_in_time(told)

    def test_started_without_some_or_all_of_the_standard_descriptors(self):
        for numbers in ("0", "1", "2", "0,1,2"):
            with self.subTest(numbers=numbers):
                told = self.under(f"closed:{numbers}", capture=True)
                self.assertEqual(told["code"], EXIT_CODE)
                for number in numbers.split(","):
                    self.assertEqual(told["descriptors"][int(number)], "/dev/null")
                sent = [d for d in told["datagrams"] if d.direction == "sent"]
                self.assertTrue(sent)
                for datagram in sent:
                    self.assertEqual(datagram.message.community, b"public")


class Descriptors(ParentTest):
    def test_1024_that_are_open_already(self):
        told = self.under("open:1024")
        self.assertGreaterEqual(told["highest"], 1024)
        self.assert_found_in_time(told)

    def test_a_limit_of_a_million(self):
        told = self.under("limit:1048576")
        self.assert_found_in_time(told)
        if told["limit"] < 1048576:
            skip(f"passed, but nobody here may raise the limit beyond {told['limit']}")


class Signals(ParentTest):
    """A signal has its default action: the process ends at once. The state on disk is whole,
    and a later run continues from it."""

    def assert_ends_at_once(self, name, seconds, topology=None):
        folder = self.folder()
        state = folder / "state"
        option = f"--SNMPPersistPath={state}"
        script = ["sh", "-c", f'exec "$@" {option}', "sh"]
        told = self.under(f"kill:{name}:{seconds}", settings=script, topology=topology)
        self.assertEqual(told["code"], -signal.Signals[name])
        self.assertLess(told["seconds"], seconds + SECONDS_MORE)
        self.assertEqual(told["output"], b"")
        self.assertEqual(list(pathlib.Path.cwd().glob("core*")), [])
        # Only whole files of the state, if any.
        for file in state.glob("*.conf"):
            text = file.read_text("ascii")
            self.assertIn("engineBoots", text)
            self.assertTrue(text.endswith("\n"), file)
        return option

    def test_sigterm_while_it_is_set_up(self):
        for seconds in (0.005, 0.02, 0.05):
            with self.subTest(seconds=seconds):
                self.assert_ends_at_once("SIGTERM", seconds)

    def test_sigterm_between_the_passes(self):
        self.assert_ends_at_once("SIGTERM", 1.0)

    def test_sigint_while_the_workers_of_both_passes_listen(self):
        self.assert_ends_at_once("SIGINT", 3.0)

    def test_sigterm_while_the_last_worker_is_waited_for(self):
        self.assert_ends_at_once("SIGTERM", 6.0)

    def test_a_run_after_one_that_was_ended(self):
        option = self.assert_ends_at_once("SIGINT", 0.5, topology=ALONE)
        outcome = self.discover(office(LASER), option)
        self.assert_found(outcome, "192.0.2.9")
        state = pathlib.Path(option.partition("=")[2]) / "SNMPDiscovery.conf"
        self.assertIn("engineBoots 1\n", state.read_text("ascii"))


if __name__ == "__main__":
    unittest.main()

"""The lab's command line: what it takes, passes through and fails with."""

import subprocess
import sys
import unittest

import harness
from harness import ALONE, office

from snmplab import api

LAB = str(harness.LAB / "lab")


class CommandLine(unittest.TestCase):
    """What needs no namespace."""

    CASES = {
        "no command": ([], "a command is missing"),
        "nothing after the dashes": (["--"], "a command is missing"),
        "unknown option": (["--colour", "--", "true"], "unrecognized arguments"),
        "unknown topology": (["--topology", "x", "--", "true"], "no topology x"),
        "a word too many": (["true", "--", "true"], "unrecognized arguments: true"),
    }

    def run_lab(self, *arguments):
        return subprocess.run(
            [sys.executable, LAB, *arguments],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            check=False,
            timeout=30,
        )

    def test_faults_end_with_125(self):
        for name, (arguments, words) in self.CASES.items():
            with self.subTest(name):
                result = self.run_lab(*arguments)
                self.assertEqual((result.returncode, result.stdout), (125, ""))
                self.assertIn(words, result.stderr)

    def test_help_list_and_describe_print_and_end_with_0(self):
        for option, words in (
            ("--help", "COMMAND"),
            ("--list", "demo\n"),
            ("--describe", "198.51.100.127"),
        ):
            with self.subTest(option):
                result = self.run_lab(option)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assertIn(words, result.stdout)


class PassingThrough(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def test_exit_codes(self):
        for script, code in (
            ("exit 0", 0),
            ("exit 64", 64),
            ("exit 255", 255),
            ("kill -TERM $$", 128 + 15),
            ("kill -KILL $$", 128 + 9),
        ):
            with self.subTest(script):
                self.assertEqual(api.run_in_lab(ALONE, ["sh", "-c", script]).code, code)

    def test_commands_that_cannot_run(self):
        for command, code in (("/nonexistent/tool", 127), ("/etc/passwd", 126)):
            with self.subTest(command):
                outcome = api.run_in_lab(ALONE, [command])
                self.assertEqual((outcome.code, outcome.out), (code, b""))
                self.assertIn(command.encode(), outcome.err)

    def test_output_is_the_command_s_to_the_octet(self):
        script = r"printf '[]\000\377'; printf 'no newline' >&2"
        outcome = api.run_in_lab("demo", ["sh", "-c", script])
        self.assertEqual((outcome.out, outcome.err), (b"[]\0\xff", b"no newline"))

    def test_input_and_folder_are_the_caller_s(self):
        result = subprocess.run(
            [sys.executable, LAB, "--topology", "demo", "--", "sh", "-c", "pwd; cat"],
            input=b"given\n",
            capture_output=True,
            check=True,
            cwd="/usr",
            timeout=60,
        )
        self.assertEqual(result.stdout, b"/usr\ngiven\n")

    def test_arguments_that_look_like_options_reach_the_command(self):
        outcome = api.run_in_lab(ALONE, ["printf", "%s,", "--", "--help", "-c"])
        self.assertEqual(outcome.out, b"--,--help,-c,")

    def test_the_report_tells_the_command_s_own_time(self):
        outcome = api.run_in_lab("demo", ["sh", "-c", "sleep 0.5; exit 3"])
        self.assertEqual(outcome.code, 3)
        self.assertGreaterEqual(outcome.seconds, 0.5)
        self.assertLess(outcome.seconds, 5)

    def test_progress_is_told_on_request_and_on_standard_error(self):
        outcome = api.run_in_lab("demo", ["true"], options=["--verbose"])
        self.assertEqual(outcome.out, b"")
        self.assertIn(b"5 agents answer", outcome.err)


class Failures(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def test_an_agent_that_does_not_start_shows_its_log(self):
        agent = {
            "name": "odd",
            "addresses": {"office": "192.0.2.9"},
            "behaviour": {"reply_from": "192.0.2.77"},
        }
        outcome = api.run_in_lab(office(agent), ["echo", "ran"])
        self.assertEqual((outcome.code, outcome.out), (125, b""))
        self.assertIn(b"agent odd: ", outcome.err)
        self.assertIn(b"Cannot assign requested address", outcome.err)

    def test_an_agent_that_ends_early_fails_the_lab(self):
        agent = {"name": "odd", "kind": "snmpd", "addresses": {"office": "192.0.2.9"}}
        script = r"""
for folder in /proc/[0-9]*; do
    if [ "$(cat "$folder/comm")" = snmpd ]; then kill -KILL "${folder#/proc/}"; fi
done
while snmpd_left=$(grep -lx snmpd /proc/[0-9]*/comm 2>/dev/null) &&
      grep -q 'State:.*[RS] ' "${snmpd_left%comm}status"; do :; done
exit 0
"""
        outcome = api.run_in_lab(office(agent), ["sh", "-c", script])
        self.assertEqual(outcome.code, 125, outcome.err)
        self.assertIn(b"agent odd: ended with -9", outcome.err)

    def test_a_capture_that_cannot_be_written_fails_the_lab(self):
        options = ["--capture", "/dev/null/packets"]
        outcome = api.run_in_lab(ALONE, ["echo"], options=options)
        self.assertEqual((outcome.code, outcome.out), (125, b""))


if __name__ == "__main__":
    unittest.main()

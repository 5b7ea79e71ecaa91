"""The runner itself: it must fail when a case fails."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import harness

CASES = '''
import time
import unittest


class Case(unittest.TestCase):
    def test_good(self):
        pass

    def test_bad(self):
        self.fail("on purpose")

    def test_skipped(self):
        raise unittest.SkipTest("for a reason")

    def test_endless(self):
        time.sleep(60)
'''


class Runner(unittest.TestCase):
    def run_cases(self, *arguments):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "test_sample.py").write_text(CASES, encoding="ascii")
            runner = harness.ROOT / "tests" / "lab" / "run.py"
            command = [sys.executable, str(runner), "--folder", folder, *arguments]
            result = subprocess.run(
                command, capture_output=True, text=True, check=False, timeout=60
            )
        lines = result.stdout.splitlines()
        return result.returncode, lines[-1] if lines else "", result.stdout

    def test_a_failure_fails(self):
        code, last, output = self.run_cases("good", "bad", "skipped")
        self.assertEqual((code, last), (1, "1 passed, 1 failed, 1 skipped"))
        self.assertIn("on purpose", output)
        self.assertIn("for a reason", output)

    def test_success(self):
        code, last, _ = self.run_cases("good")
        self.assertEqual((code, last), (0, "1 passed, 0 failed, 0 skipped"))

    def test_a_case_without_end_is_stopped_and_fails(self):
        code, last, output = self.run_cases("--seconds", "1", "endless")
        self.assertEqual((code, last), (1, "0 passed, 1 failed, 0 skipped"))
        self.assertIn("stopped after 1.0 s", output)

    def test_nothing_to_run_fails(self):
        code, last, _ = self.run_cases("no-such-case")
        self.assertEqual((code, last), (1, "0 passed, 0 failed, 0 skipped"))

    def test_list(self):
        code, _, output = self.run_cases("--list")
        self.assertEqual(code, 0)
        self.assertEqual(
            sorted(output.split()),
            [f"test_sample.Case.test_{n}" for n in ("bad", "endless", "good", "skipped")],
        )


if __name__ == "__main__":
    unittest.main()

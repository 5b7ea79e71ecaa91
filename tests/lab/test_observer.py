"""The lab's observer: the figures that it reports for a command."""

import sys
import unittest

import harness  # noqa: F401
from harness import ALONE, ask, office

from snmplab import api, observer


def python(code):
    return [sys.executable, "-c", code]


class Observer(unittest.TestCase):
    def test_output_and_exit_code(self):
        code = "import sys; print('out'); print('err', file=sys.stderr); sys.exit(3)"
        found = observer.observe(python(code), 30)
        self.assertEqual((found["code"], found["stopped"]), (3, False))
        self.assertEqual((found["out"], found["err"]), ("out\n", "err\n"))

    def test_a_signal_is_a_negative_code(self):
        found = observer.observe(python("import os; os.kill(os.getpid(), 15)"), 30)
        self.assertEqual(found["code"], -15)

    def test_what_takes_too_long_is_stopped(self):
        found = observer.observe(["sleep", "60"], 0.5)
        self.assertEqual((found["code"], found["stopped"]), (-9, True))
        self.assertGreaterEqual(found["seconds"], 0.5)
        self.assertLess(found["seconds"], 30)

    def test_memory_is_the_commands_own(self):
        wait = "import time; time.sleep(0.5)"
        little = observer.observe(["sleep", "0.5"], 30)["memory"]
        much = observer.observe(python(f"text = b'x' * 64_000_000; {wait}"), 30)
        self.assertGreater(little, 0)
        self.assertLess(little, 8_000)  # less than this program has
        self.assertGreater(much["memory"], 64_000)

    def test_processor_and_switches(self):
        idle = observer.observe(["sleep", "0.2"], 30)
        code = "import time\nend = time.process_time() + 0.5\n"
        code += "while time.process_time() < end: pass\nfor i in range(50): time.sleep(0.001)"
        busy = observer.observe(python(code), 60)
        self.assertLess(idle["processor"], 0.3)
        self.assertGreater(busy["processor"], 0.5)
        self.assertGreaterEqual(busy["switches"], 50)

    def test_time_that_it_waited_for_a_processor(self):
        code = "import time\nend = time.process_time() + 0.5\n"
        code += "while time.process_time() < end: pass"
        found = observer.observe(python(code), 60)
        lasted = found["seconds"] - found["processor"]
        self.assertGreaterEqual(found["waited"], 0)
        self.assertLess(found["waited"], lasted + 0.2)  # it waited whenever it did not run

    def test_datagrams_of_the_namespace(self):
        harness.require_namespaces()
        agents = [
            {"name": f"agent-{n}", "addresses": {"office": f"192.0.2.{n}"}}
            for n in (7, 8)
        ]
        found = api.observe_in_lab(office(*agents), ask("192.0.2.255", seconds=3.0))
        self.assertEqual(found["out"], "192.0.2.7 192.0.2.8\n")
        self.assertEqual((found["received"], found["lost"]), (2, 0))

    def test_a_lab_that_fails_is_an_error(self):
        harness.require_namespaces()
        broken = dict(ALONE, agents=[{"name": "nobody", "kind": "magic"}])
        with self.assertRaisesRegex(Exception, "magic is none of"):
            api.observe_in_lab(broken, ["true"])


if __name__ == "__main__":
    unittest.main()

"""The simulator of agents: where it refuses to run, and what reaches the host."""

import unittest

import harness
from harness import ask, office

from snmplab import api, guard, sandbox
from tool import simulated, simulator


class Outside(unittest.TestCase):
    def refused(self, environment, words):
        command = [simulator(), "--first", "192.0.2.9", "--seconds", "1"]
        result = harness.run_outside(command, environment)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("refused: ", result.stderr)
        self.assertIn(words, result.stderr)

    def test_a_plain_environment(self):
        self.refused({}, "SNMP_LAB is not set")

    def test_what_a_lab_left_in_the_environment(self):
        left = {"SNMP_LAB": "demo", "SNMP_LAB_NAMESPACE": "4:1"}
        self.refused(left, "names another namespace")

    def test_an_environment_that_names_this_namespace(self):
        own = guard.format_identity(guard.identity())
        self.refused({"SNMP_LAB": "demo", "SNMP_LAB_NAMESPACE": own}, "first process")


class InTheLab(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def asked(self, *options, seconds=3.0):
        topology = office(simulated("storm", 2, "--first", "192.0.2.10", *options))
        outcome = api.run_in_lab(topology, ask("192.0.2.255", seconds=seconds))
        self.assertEqual(outcome.code, 0, outcome.err)
        return outcome.out.decode().split()

    def test_every_agent_answers_once_from_its_own_address(self):
        found = self.asked("--agents", "200")
        self.assertEqual(sorted(found), sorted(f"192.0.2.{n}" for n in range(10, 210)))

    def test_copies(self):
        found = self.asked("--agents", "2", "--copies", "3")
        self.assertEqual(found, ["192.0.2.10"] * 3 + ["192.0.2.11"] * 3)

    def test_spread_and_delay(self):
        late = ("--delay", "1000", "--spread", "16000", "--agents", "9")
        found = self.asked(*late, seconds=4.0)  # after 1 s, 3 s and not 5 s
        self.assertEqual(len(found), 2, found)

    def test_another_community_stays_silent(self):
        self.assertEqual(self.asked("--community", "secret"), [])

    def test_it_ends_by_itself_and_the_lab_says_so(self):
        topology = office(
            simulated("storm", 2, "--first", "192.0.2.10", "--seconds", "1")
        )
        outcome = api.run_in_lab(topology, ["sleep", "3"])
        self.assertEqual(outcome.code, sandbox.EXIT_LAB_FAILED)
        self.assertIn(b"agent storm: ended with -14", outcome.err)

    def test_a_wrong_option_fails_the_lab_with_its_words(self):
        topology = office(simulated("storm", 2, "--first", "127.0.0.1"))
        outcome = api.run_in_lab(topology, ["true"])
        self.assertEqual(outcome.code, sandbox.EXIT_LAB_FAILED)
        self.assertIn(b"must be documentation addresses", outcome.err)

    def test_a_missing_program_fails_the_lab(self):
        agent = simulated("storm", 2)
        agent["command"] = ["/nonexistent/program"]
        outcome = api.run_in_lab(office(agent), ["true"])
        self.assertEqual(outcome.code, sandbox.EXIT_LAB_FAILED)
        self.assertIn(b"/nonexistent/program: No such file", outcome.err)


if __name__ == "__main__":
    unittest.main()

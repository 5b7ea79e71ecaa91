"""The agents of the lab and the capture of what they say."""

import unittest

import harness
from harness import ask, office

from snmplab import api, ber, message, reading


class AgentsThatAnswer(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def test_both_kinds_answer_broadcasts_with_their_own_address(self):
        demo = reading.load("demo")
        targets = [str(each.broadcast_address) for each in demo.subnets.values()]
        outcome = api.run_in_lab("demo", ask(*targets))
        self.assertEqual(
            outcome.out, b"192.0.2.10 192.0.2.9 198.51.100.20 203.0.113.70\n", outcome.err
        )

    def test_the_silent_one_of_the_demo_answers_its_own_community(self):
        outcome = api.run_in_lab("demo", ask("198.51.100.127", community="secret"))
        self.assertEqual(outcome.out, b"198.51.100.21\n")

    def test_no_subnet_reaches_another(self):
        command = ask("192.0.2.255", "198.51.100.127")
        outcome = api.run_in_lab(
            "demo", ["sh", "-c", 'ip link set eth1 down; exec "$@"', "sh", *command]
        )
        self.assertIn(b"Network is unreachable", outcome.err)
        outcome = api.run_in_lab(
            "demo", ["sh", "-c", 'ip link set eth1 down; exec "$@"', "sh", *command[:-1]]
        )
        self.assertEqual(outcome.out, b"192.0.2.10 192.0.2.9\n")

    def test_an_agent_on_two_subnets_answers_each_with_the_address_there(self):
        for kind in ("snmpd", "responder"):
            with self.subTest(kind):
                topology = office(
                    {
                        "name": "both",
                        "kind": kind,
                        "addresses": {"office": "192.0.2.9", "attic": "198.51.100.9"},
                    }
                )
                topology["subnets"]["attic"] = "198.51.100.0/24"
                topology["host"]["interfaces"].append(
                    {"name": "eth1", "subnet": "attic", "addresses": "198.51.100.1"}
                )
                command = ask("192.0.2.255", "198.51.100.255")
                outcome = api.run_in_lab(topology, command)
                self.assertEqual(outcome.out, b"192.0.2.9 198.51.100.9\n", outcome.err)

    def test_an_agent_on_the_host(self):
        for kind in ("snmpd", "responder"):
            with self.subTest(kind):
                topology = office({"name": "self", "kind": kind, "on_host": True})
                outcome = api.run_in_lab(topology, ask("192.0.2.1"))
                self.assertEqual(outcome.out, b"192.0.2.1\n", outcome.err)

    def test_an_interface_that_is_down_is_down(self):
        topology = office({"name": "laser", "addresses": {"office": "192.0.2.9"}})
        topology["host"]["interfaces"][0]["up"] = False
        outcome = api.run_in_lab(topology, ["ip", "-brief", "address", "show", "eth0"])
        self.assertIn(b"DOWN", outcome.out)
        self.assertIn(b"192.0.2.1/24", outcome.out)


class ResponderBehaviours(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def answers(self, behaviour, *addresses, **asking):
        agent = {
            "name": "odd",
            "addresses": {"office": list(addresses) or ["192.0.2.9"]},
            "behaviour": behaviour,
        }
        return api.run_in_lab(office(agent), ask("192.0.2.255", **asking)).out

    def test_copies(self):
        self.assertEqual(self.answers({"copies": 2}), b"192.0.2.9 192.0.2.9\n")

    def test_silence(self):
        self.assertEqual(self.answers({"copies": 0}), b"\n")

    def test_delay(self):
        self.assertEqual(self.answers({"delay": 0.5}, seconds=0.3), b"\n")
        self.assertEqual(self.answers({"delay": 0.1}), b"192.0.2.9\n")

    def test_ignored_until_asked_again(self):
        self.assertEqual(self.answers({"ignore": 1}), b"\n")
        self.assertEqual(self.answers({"ignore": 1}, copies=2), b"192.0.2.9\n")

    def test_another_address_of_its_own(self):
        found = self.answers({"reply_from": "192.0.2.8"}, "192.0.2.9", "192.0.2.8")
        self.assertEqual(found, b"192.0.2.8\n")


class Capturing(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()

    def test_requests_and_answers_with_their_times(self):
        agent = {
            "name": "slow",
            "addresses": {"office": "192.0.2.9"},
            "behaviour": {"delay": 0.4},
        }
        outcome = api.run_in_lab(office(agent), ask("192.0.2.255"), capture=True)
        request, answer = outcome.datagrams
        self.assertEqual(
            (request.interface, request.direction, request.source, request.destination),
            ("eth0", "sent", "192.0.2.1", "192.0.2.255"),
        )
        self.assertEqual(request.payload, message.get("public", 5))
        self.assertEqual(
            (answer.interface, answer.direction, answer.source, answer.destination),
            ("eth0", "received", "192.0.2.9", "192.0.2.1"),
        )
        self.assertEqual(answer.destination_port, request.source_port)
        self.assertEqual((request.destination_port, answer.source_port), (161, 161))
        self.assertEqual(answer.message.bindings[0].tag, ber.TIME_TICKS)
        self.assertGreaterEqual(answer.time - request.time, 0.4)
        self.assertLess(answer.time - request.time, 5)

    def test_readiness_leaves_no_trace(self):
        outcome = api.run_in_lab("demo", ["true"], capture=True)
        self.assertEqual(outcome.datagrams, ())



class Users(unittest.TestCase):
    """SNMPv3, asked with Net-SNMP's own command where it is installed."""

    PHRASES = ("-A", "authentic-phrase", "-X", "private-phrase")
    CASES = {
        "plain": ("noAuthNoPriv",),
        "md5": ("authNoPriv", "-a", "MD5"),
        "sha": ("authNoPriv", "-a", "SHA"),
        "sha-des": ("authPriv", "-a", "SHA", "-x", "DES"),
        "sha-aes": ("authPriv", "-a", "SHA", "-x", "AES"),
    }

    def setUp(self):
        harness.require_namespaces()

    def test_each_is_known_to_the_agent(self):
        script = 'export SNMP_PERSISTENT_DIR="$TMPDIR/p"; exec "$@"'
        for user, (level, *protocols) in self.CASES.items():
            with self.subTest(user):
                command = ["snmpget", "-v3", "-u", user, "-l", level, *protocols]
                command += [*self.PHRASES, "-On", "192.0.2.30", message.SYS_UP_TIME]
                outcome = api.run_in_lab("snmpv3", ["sh", "-c", script, "sh", *command])
                if outcome.code == 127:
                    harness.skip("snmpget is not installed")
                self.assertEqual(outcome.code, 0, outcome.err)
                self.assertIn(b".1.3.6.1.2.1.1.3.0 = Timeticks", outcome.out)


if __name__ == "__main__":
    unittest.main()

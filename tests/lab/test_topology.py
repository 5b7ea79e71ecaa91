"""Topologies: what is read from JSON, and what is refused with which words."""

import copy
import json
import unittest

import harness  # noqa: F401

from snmplab import LabError, reading
from snmplab.topology import Behaviour, Object, User


def plain():
    """A topology without a fault."""
    return {
        "subnets": {"office": "192.0.2.0/24"},
        "host": {
            "interfaces": [{"name": "eth0", "subnet": "office", "addresses": "192.0.2.1"}]
        },
        "agents": [
            {"name": "laser", "kind": "snmpd", "addresses": {"office": "192.0.2.9"}},
            {
                "name": "plotter",
                "kind": "responder",
                "addresses": {"office": "192.0.2.10"},
            },
        ],
    }


def parse(data):
    return reading.parse(json.dumps(data), "test")


class Reading(unittest.TestCase):
    def test_defaults(self):
        found = parse(plain())
        self.assertEqual(found.name, "test")
        self.assertEqual(str(found.interfaces[0].addresses[0]), "192.0.2.1/24")
        self.assertTrue(found.interfaces[0].up)
        laser = found.agents[0]
        self.assertEqual((laser.community, laser.users), ("public", ()))
        self.assertEqual(laser.behaviour, Behaviour())
        self.assertFalse(laser.on_host)
        self.assertEqual(str(laser.interfaces[0].addresses[0]), "192.0.2.9/24")

    def test_own_prefix_may_leave_the_subnet(self):
        data = plain()
        data["host"]["interfaces"][0]["addresses"] = ["198.51.100.7/32", "2001:db8::1/64"]
        found = parse(data).interfaces[0].addresses
        self.assertEqual([str(a) for a in found], ["198.51.100.7/32", "2001:db8::1/64"])

    def test_a_program(self):
        data = plain()
        data["agents"][0] = PROGRAM
        found = parse(data).agents[0]
        self.assertEqual(found.command, ("storm", "--agents", "9"))
        self.assertEqual(parse(plain()).agents[0].command, ())

    def test_users_behaviour_and_agents_on_the_host(self):
        data = plain()
        user = {
            "name": "sha",
            "auth": "SHA",
            "auth_pass": "authentic",
            "priv": "AES",
            "priv_pass": "privately",
        }
        data["agents"][0]["users"] = [user]
        data["agents"][0]["objects"] = ["1.3.6.1.2.1.43.5.1.1.16.1 octet_str My Printer"]
        behaviour = {"copies": 2, "delay": 0.5, "ignore": 1, "reply_from": "192.0.2.11"}
        data["agents"][1] = {
            "name": "self",
            "kind": "responder",
            "on_host": True,
            "behaviour": behaviour,
        }
        found = parse(data)
        self.assertEqual(
            found.agents[0].users, (User("sha", "SHA", "authentic", "AES", "privately"),)
        )
        named = Object("1.3.6.1.2.1.43.5.1.1.16.1", "octet_str", "My Printer")
        self.assertEqual(found.agents[0].objects, (named,))
        self.assertEqual(found.agents[1].behaviour, Behaviour(2, 0.5, 1, "192.0.2.11"))
        self.assertTrue(found.agents[1].on_host)


def change(*path_and_value):
    """A change of the plain topology: the value at the end of a path of keys."""
    *path, last, value = path_and_value

    def apply(data):
        for key in path:
            data = data[key]
        data[last] = value

    return apply


FIRST = ("host", "interfaces", 0)
LASER = ("agents", 0)
PLOTTER = ("agents", 1)
LONG = "authentic-phrase"
PROGRAM = {
    "name": "storm",
    "kind": "program",
    "addresses": {"office": "192.0.2.9"},
    "command": ["storm", "--agents", "9"],
}


class Refusals(unittest.TestCase):
    CASES = {
        "unknown key": (change("colour", "red"), "unknown: colour"),
        "unknown key of an interface": (change(*FIRST, "mtu", 9), "[0]: unknown: mtu"),
        "unknown key of an agent": (change(*LASER, "oid", ""), "agents[0]: unknown"),
        "unknown behaviour": (
            change(*PLOTTER, "behaviour", {"rude": 1}),
            "behaviour: unknown: rude",
        ),
        "no object": (change("host", []), "host: an object is expected"),
        "no array": (change("agents", {}), "agents: an array is expected"),
        "no text": (change("title", 5), "title: a line of text is expected"),
        "two lines": (change("title", "a\nb"), "title: a line of text is expected"),
        "no flag": (change(*FIRST, "up", 1), "up: true or false is expected"),
        "no CIDR": (change("subnets", {"a": "office"}), "subnets: a: "),
        "host bits": (change("subnets", {"a": "192.0.2.1/24"}), "has host bits set"),
        "public subnet": (
            change("subnets", {"a": "192.0.3.0/24"}),
            "192.0.3.0/24 is outside the documentation ranges",
        ),
        "subnet too wide": (
            change("subnets", {"a": "192.0.0.0/16"}),
            "outside the documentation ranges",
        ),
        "everything": (change("subnets", {"a": "0.0.0.0/0"}), "outside"),
        "IPv6 outside": (change("subnets", {"a": "2001:db9::/64"}), "outside"),
        "public address": (
            change(*FIRST, "addresses", "100.64.0.1/24"),
            "100.64.0.1 is outside the documentation ranges",
        ),
        "address of another subnet": (
            change(*FIRST, "addresses", "198.51.100.1"),
            "198.51.100.1 is not in 192.0.2.0/24",
        ),
        "broadcast address": (
            change(*LASER, "addresses", {"office": "192.0.2.255"}),
            "192.0.2.255 is the network or broadcast address",
        ),
        "network address": (
            change(*FIRST, "addresses", ["192.0.2.0"]),
            "192.0.2.0 is the network or broadcast address",
        ),
        "no address": (change(*FIRST, "addresses", "eth"), "addresses: "),
        "unknown subnet of an interface": (
            change(*FIRST, "subnet", "attic"),
            "subnet: attic is none of office",
        ),
        "unknown subnet of an agent": (
            change(*LASER, "addresses", {"attic": "192.0.2.9"}),
            "addresses: attic: no such subnet",
        ),
        "agent nowhere": (change(*LASER, "addresses", {}), "needs an address"),
        "agent without an address": (
            change(*LASER, "addresses", {"office": []}),
            "an address is missing",
        ),
        "loopback device": (change(*FIRST, "name", "lo"), "cannot name an interface"),
        "option as interface": (change(*FIRST, "name", "-x"), "cannot name an interface"),
        "interface name of 16": (change(*FIRST, "name", "e" * 16), "cannot name"),
        "name of an agent": (change(*LASER, "name", "../x"), "name: a name is"),
        "kind": (change(*LASER, "kind", "magic"), "magic is none of snmpd, responder, program"),
        "community with a quote": (change(*LASER, "community", 'a"b'), "community: "),
        "empty community": (change(*LASER, "community", ""), "community: "),
        "same address": (
            change(*LASER, "addresses", {"office": "192.0.2.10"}),
            "address given twice: 192.0.2.10",
        ),
        "same name": (change(*LASER, "name", "plotter"), "node given twice: plotter"),
        "named host": (change(*LASER, "name", "host"), "node given twice: host"),
        "snmpd that misbehaves": (
            change(*LASER, "behaviour", {"copies": 2}),
            "snmpd has none",
        ),
        "responder with objects": (
            change(*PLOTTER, "objects", ["1.3.6.1 integer 1"]),
            "objects: a responder has none",
        ),
        "object with a quotation mark": (
            change(*LASER, "objects", ['1.3.6.1 octet_str "']),
            "objects: 1.3.6.1 octet_str",
        ),
        "object of an unknown type": (
            change(*LASER, "objects", ["1.3.6.1 real 1"]),
            "a numeric name, a type of integer",
        ),
        "object without a numeric name": (
            change(*LASER, "objects", ["sysName.0 octet_str a"]),
            "sysName.0 octet_str a: a numeric name",
        ),
        "responder with users": (
            change(*PLOTTER, "users", [{"name": "u"}]),
            "a responder knows none",
        ),
        "program without a command": (
            change(*PLOTTER, "kind", "program"),
            "command is missing",
        ),
        "program of no words": (
            change("agents", 0, dict(PROGRAM, command=[])),
            "command: a program is missing",
        ),
        "program that misbehaves": (
            change("agents", 0, dict(PROGRAM, behaviour={"copies": 2})),
            "program has none",
        ),
        "responder with a command": (
            change(*PLOTTER, "command", ["true"]),
            "unknown: command",
        ),
        "half a copy": (change(*PLOTTER, "behaviour", {"copies": 0.5}), "a number is"),
        "long delay": (change(*PLOTTER, "behaviour", {"delay": 61}), "is not within"),
        "short pass phrase": (
            change(*LASER, "users", [{"name": "u", "auth": "SHA", "auth_pass": "short"}]),
            "SHA needs a pass phrase",
        ),
        "short master key": (
            change(*LASER, "users", [{"name": "u", "auth": "SHA", "master_key": "00" * 15}]),
            "a master key has",
        ),
        "master key and pass phrase": (
            change(
                *LASER,
                "users",
                [{"name": "u", "auth": "SHA", "auth_pass": LONG, "master_key": "00" * 20}],
            ),
            "a pass phrase besides",
        ),
        "unknown protocol": (
            change(*LASER, "users", [{"name": "u", "auth": "sha", "auth_pass": LONG}]),
            "sha is none of MD5, SHA",
        ),
        "phrase alone": (
            change(*LASER, "users", [{"name": "u", "auth_pass": LONG}]),
            "without a protocol",
        ),
        "privacy alone": (
            change(*LASER, "users", [{"name": "u", "priv": "DES", "priv_pass": LONG}]),
            "privacy needs authentication",
        ),
    }

    def test_each_fault_is_named(self):
        for name, (fault, words) in self.CASES.items():
            with self.subTest(name):
                data = copy.deepcopy(plain())
                fault(data)
                with self.assertRaises(LabError) as caught:
                    parse(data)
                self.assertIn(words, str(caught.exception))
                self.assertIn("topology test", str(caught.exception))

    def test_each_required_key_is_missed(self):
        for path in (("subnets",), ("host",), ("agents",), (*FIRST, "name")):
            with self.subTest(path=path):
                data = plain()
                place = data
                for key in path[:-1]:
                    place = place[key]
                del place[path[-1]]
                with self.assertRaisesRegex(LabError, f"{path[-1]} is missing"):
                    parse(data)

    def test_two_agents_on_the_host(self):
        data = plain()
        data["agents"] = [
            {"name": name, "kind": "responder", "on_host": True} for name in ("a", "b")
        ]
        with self.assertRaisesRegex(LabError, "the host has one port 161"):
            parse(data)

    def test_text_that_is_no_json_and_a_key_given_twice(self):
        cases = (("{", "topology test: "), ('{"a": 1, "a": 2}', "given twice"))
        for text, words in cases:
            with self.subTest(text), self.assertRaisesRegex(LabError, words):
                reading.parse(text, "test")

    def test_unknown_names_and_files(self):
        with self.assertRaisesRegex(LabError, "there are .*demo"):
            reading.load("atlantis")
        with self.assertRaisesRegex(LabError, "No such file"):
            reading.load("/nonexistent/net.json")


if __name__ == "__main__":
    unittest.main()

"""The topologies that come with the lab, and the addresses that any may use."""

import ipaddress
import unittest

import harness  # noqa: F401

from snmplab import drawing, guard, reading


class Shipped(unittest.TestCase):
    def test_every_one_is_valid_and_can_be_drawn(self):
        self.assertIn("demo", reading.known())
        for name in reading.known():
            with self.subTest(name):
                found = reading.load(name)
                drawn = drawing.draw(found)
                self.assertLessEqual(max(map(len, drawn.splitlines())), 100)
                for node in [*found.agents, *found.subnets]:
                    self.assertIn(getattr(node, "name", node), drawn)

    def test_demo_has_three_subnets_and_five_agents_one_of_another_community(self):
        demo = reading.load("demo")
        self.assertEqual(len(demo.subnets), 3)
        self.assertEqual(len(demo.agents), 5)
        others = [each for each in demo.agents if each.community != "public"]
        self.assertEqual(len(others), 1)
        self.assertEqual({each.kind for each in demo.agents}, {"snmpd", "responder"})


class DocumentationRanges(unittest.TestCase):
    CASES = (
        ("192.0.2.0/24", "192.0.1.255/32", "192.0.3.0/32"),
        ("198.18.0.0/15", "198.17.255.255/32", "198.20.0.0/32"),
        ("198.51.100.0/24", "198.51.99.255/32", "198.51.101.0/32"),
        ("203.0.113.0/24", "203.0.112.255/32", "203.0.114.0/32"),
        ("2001:db8::/32", "2001:db7:ffff::/48", "2001:db9::/48"),
    )

    def test_each_is_known_to_its_last_address_and_no_further(self):
        known = guard.in_documentation_ranges
        for inside, before, behind in self.CASES:
            with self.subTest(inside):
                network = ipaddress.ip_network(inside)
                self.assertTrue(known(network))
                self.assertTrue(known(ipaddress.ip_network(network[0])))
                self.assertTrue(known(ipaddress.ip_network(network[-1])))
                self.assertFalse(known(network.supernet()))
                self.assertFalse(known(ipaddress.ip_network(before)))
                self.assertFalse(known(ipaddress.ip_network(behind)))

    def test_nothing_else_is_known(self):
        for text in ("127.0.0.0/8", "169.254.0.0/16", "224.0.0.0/4", "fe80::/10"):
            with self.subTest(text):
                network = ipaddress.ip_network(text)
                self.assertFalse(guard.in_documentation_ranges(network))


if __name__ == "__main__":
    unittest.main()

"""What the tool prints on networks of many kinds."""

import unittest

from harness import ALONE, office
from tool import SECONDS_ALONE, ToolTest, sent


def laser(address="192.0.2.9", **more):
    """A responder in the office."""
    return dict({"name": "laser", "addresses": {"office": address}}, **more)


def single(subnet, host, *agents):
    """A host with one interface on one subnet, and `agents` on it."""
    interface = {"name": "eth0", "subnet": "wire", "addresses": host}
    return {
        "subnets": {"wire": subnet},
        "host": {"interfaces": [interface]},
        "agents": list(agents),
    }


class Documents(ToolTest):
    def test_three_subnets_with_several_agents(self):
        outcome = self.discover("demo")
        self.assert_found(
            outcome, "192.0.2.10", "192.0.2.9", "198.51.100.20", "203.0.113.70"
        )

    def test_the_same_for_an_ordinary_user(self):
        outcome = self.discover("demo", options=["--user"])
        self.assert_found(
            outcome, "192.0.2.10", "192.0.2.9", "198.51.100.20", "203.0.113.70"
        )

    def test_no_usable_interface_gives_an_empty_array_after_both_pauses(self):
        outcome = self.discover(ALONE, seconds=SECONDS_ALONE)
        self.assert_found(outcome)

    def test_a_subnet_without_agents_gives_an_empty_array(self):
        self.assert_found(self.discover(office()))

    def test_addresses_are_in_byte_wise_order(self):
        hosts = ("2", "9", "10", "100", "20")
        agents = [laser(f"192.0.2.{n}", name=f"agent-{n}") for n in hosts]
        outcome = self.discover(office(*agents))
        ordered = ("10", "100", "2", "20", "9")
        self.assert_found(outcome, *(f"192.0.2.{n}" for n in ordered))

    def test_nothing_else_is_on_standard_output_and_only_net_snmp_speaks_beside_it(self):
        outcome = self.discover(office(laser()))
        self.assertEqual(outcome.out, b'[{"hostname":"192.0.2.9"}]')
        # Net-SNMP reports the persistent folders that it makes. There is no other message.
        for line in outcome.err.splitlines():
            self.assertRegex(line, b"^Created directory: ")


class Agents(ToolTest):
    def test_one_that_answers_twice_is_listed_once(self):
        outcome = self.discover(office(laser(behaviour={"copies": 2})), capture=True)
        self.assert_found(outcome, "192.0.2.9")
        answers = [each for each in outcome.datagrams if each.direction == "received"]
        self.assertEqual(len(answers), 2 * len(sent(outcome)))

    def test_one_that_answers_only_the_resend_is_listed(self):
        outcome = self.discover(office(laser(behaviour={"ignore": 1})))
        self.assert_found(outcome, "192.0.2.9")

    def test_one_that_takes_four_seconds_is_listed_and_one_that_takes_six_is_not(self):
        outcome = self.discover(
            office(
                laser(behaviour={"delay": 4}),
                laser("192.0.2.10", name="slower", behaviour={"delay": 6}),
            )
        )
        self.assert_found(outcome, "192.0.2.9")

    def test_one_that_answers_from_another_address_is_listed_with_that(self):
        agent = laser(
            ["192.0.2.9", "192.0.2.77"], behaviour={"reply_from": "192.0.2.77"}
        )
        self.assert_found(self.discover(office(agent)), "192.0.2.77")

    def test_one_of_another_community_is_not_listed(self):
        agents = laser(), laser("192.0.2.10", name="private", community="secret")
        self.assert_found(self.discover(office(*agents)), "192.0.2.9")


class Interfaces(ToolTest):
    def test_one_that_is_down_is_not_probed(self):
        topology = office(
            laser(), {"name": "far", "addresses": {"attic": "198.51.100.9"}}
        )
        topology["subnets"]["attic"] = "198.51.100.0/24"
        attic = {"name": "eth1", "subnet": "attic", "addresses": "198.51.100.1"}
        topology["host"]["interfaces"].append(dict(attic, up=False))
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assertEqual({each.interface for each in sent(outcome)}, {"eth0"})

    def test_down_alone_is_none(self):
        topology = office(laser())
        topology["host"]["interfaces"][0]["up"] = False
        self.assert_found(self.discover(topology, seconds=SECONDS_ALONE))

    def test_one_without_an_address_is_none(self):
        topology = office(laser())
        topology["host"]["interfaces"][0]["addresses"] = []
        self.assert_found(self.discover(topology, seconds=SECONDS_ALONE))

    def test_one_with_ipv6_only_is_none(self):
        topology = office(laser())
        topology["host"]["interfaces"][0]["addresses"] = "2001:db8::1/64"
        outcome = self.discover(topology, seconds=SECONDS_ALONE, capture=True)
        self.assert_found(outcome)
        self.assertEqual(outcome.datagrams, ())

    def test_two_on_one_subnet_are_both_probed_and_list_an_agent_once(self):
        topology = office(laser())
        second = {"name": "eth1", "subnet": "office", "addresses": "192.0.2.2"}
        topology["host"]["interfaces"].append(second)
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assertEqual({each.destination for each in sent(outcome)}, {"192.0.2.255"})
        self.assertEqual(len({each.source_port for each in sent(outcome)}), 4)

    def test_a_second_address_counts_as_an_interface_of_its_own(self):
        # POCO's list of interfaces has an entry for every address.
        topology = office(
            laser(), {"name": "far", "addresses": {"office": "198.51.100.9/24"}}
        )
        addresses = ["192.0.2.1", "198.51.100.1/24"]
        topology["host"]["interfaces"][0]["addresses"] = addresses
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.9", "198.51.100.9")
        destinations = {each.destination for each in sent(outcome)}
        self.assertEqual(destinations, {"192.0.2.255", "198.51.100.255"})

    def test_one_with_both_families_is_probed_once(self):
        topology = office(laser())
        addresses = ["2001:db8::1/64", "192.0.2.1"]
        topology["host"]["interfaces"][0]["addresses"] = addresses
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.9")
        self.assertEqual({each.destination for each in sent(outcome)}, {"192.0.2.255"})
        self.assertEqual(len({each.source_port for each in sent(outcome)}), 2)


class Netmasks(ToolTest):
    def test_16(self):
        agent = {
            "name": "far",
            "kind": "snmpd",
            "addresses": {"wire": "198.18.200.7"},
        }
        topology = single("198.18.0.0/16", "198.18.0.1", agent)
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "198.18.200.7")
        destinations = {each.destination for each in sent(outcome)}
        self.assertEqual(destinations, {"198.18.255.255"})

    def test_30(self):
        agent = {"name": "peer", "kind": "snmpd", "addresses": {"wire": "192.0.2.6"}}
        topology = single("192.0.2.4/30", "192.0.2.5", agent)
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.6")
        self.assertEqual({each.destination for each in sent(outcome)}, {"192.0.2.7"})

    def test_32_is_its_own_broadcast_address(self):
        agent = {"name": "self", "kind": "responder", "on_host": True}
        topology = single("192.0.2.0/24", "192.0.2.7/32", agent)
        outcome = self.discover(topology, capture=True)
        self.assert_found(outcome, "192.0.2.7")
        self.assertEqual({each.destination for each in sent(outcome)}, {"192.0.2.7"})
        self.assertEqual({each.interface for each in outcome.datagrams}, {"lo"})


if __name__ == "__main__":
    unittest.main()

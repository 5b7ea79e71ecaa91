"""snmp-inventory among agents that mean harm, are slow, or are many."""

import json
import sys
import unittest

import harness
from inventory import FIRST, InventoryTest, campus

from snmplab import api

KILOBYTES = 64 * 1024
SECONDS = 10  # for 1,000 agents


class Hostile(InventoryTest):
    def one(self, behaviour, *arguments, seconds=60):
        """The entry of an agent with this behaviour, asked beside a good one. The default is
        more time than any agent needs that answers, on a busy machine too."""
        topology = campus(n7=behaviour)
        addresses = [f"{FIRST}.7", f"{FIRST}.8"]
        found = self.ask(topology, addresses, "--seconds", seconds, *arguments)
        self.assertEqual(found[f"{FIRST}.8"]["serial"], "S-1")
        return found[f"{FIRST}.7"]

    def test_an_agent_that_never_answers(self):
        self.assertEqual(self.one("silent", seconds=3), {"hostname": f"{FIRST}.7", "answers": False})

    def test_an_agent_that_stops_answering_keeps_what_it_told(self):
        found = self.one("stops", seconds=3)
        self.assertEqual((found["answers"], found["name"]), (True, "laser"))
        self.assertIs(found["printer"], True)
        self.assertNotIn("supplies", found)

    def test_an_agent_that_is_slow_shares_its_time_over_all_requests(self):
        found = self.one("slow", seconds=3)
        self.assertEqual((found["answers"], found["name"]), (True, "laser"))
        self.assertNotIn("supplies", found)

    def test_answers_from_another_address_do_not_count(self):
        self.assertEqual(
            self.one("elsewhere", seconds=3), {"hostname": f"{FIRST}.7", "answers": False}
        )
        self.assertEqual(self.one("elsewhere-too")["serial"], "S-1")

    def test_another_request_identifier_does_not_count(self):
        self.assertIs(self.one("wrong-id", seconds=3)["answers"], False)

    def test_names_that_do_not_ascend(self):
        found = self.one("loop")
        self.assertEqual(found["serial"], "S-1")
        self.assertNotIn("supplies", found)

    def test_a_table_without_end(self):
        self.assertEqual(len(self.one("endless")["supplies"]), 200)

    def test_an_error_status_is_an_answer(self):
        found = self.one("genErr")
        self.assertEqual(found, {"hostname": f"{FIRST}.7", "answers": True, "printer": False})

    def test_an_agent_that_answers_one_name_at_a_time(self):
        found = self.one("too-big")
        self.assertEqual((found["serial"], len(found["supplies"])), ("S-1", 2))

    def test_hundreds_of_bindings_junk_and_copies(self):
        for behaviour in ("many", "junk-too", "twice"):
            with self.subTest(behaviour):
                found = self.one(behaviour)
                self.assertEqual((found["serial"], len(found["supplies"])), ("S-1", 2))

    def test_texts_are_cut_and_mended(self):
        self.assertEqual(self.one("long-texts")["name"], "n" * 1024)
        self.assertEqual(self.one("invalid-texts")["name"], "\ufffd" * 1024)

    def test_texts_are_no_markup_no_formula_and_no_escape_sequence(self):
        topology = campus("hostile-texts")
        listing = self.listing(f"{FIRST}.7")
        for form in ("table", "html", "csv", "prometheus", "zabbix", "json"):
            with self.subTest(form):
                outcome = self.run_program(
                    topology, "--from", listing, "--format", form, "--seconds", 60
                )
                self.assertEqual(outcome.err, b"")
                for control in ("\x00", "\x07", "\x1b", "\x7f", "\u009b"):
                    self.assertNotIn(control, outcome.out.decode())
                if form == "html":
                    self.assertNotIn(b"<script", outcome.out)
                    self.assertIn(b"&lt;script&gt;", outcome.out)

    def test_few_descriptors_cost_time_and_no_agent(self):
        listing = self.listing(*(f"{FIRST}.{number}" for number in range(1, 101)))
        script = 'ulimit -n 32 && exec "$0" "$@"'
        arguments = ("--from", listing, "--format", "json", "--parallel", 64, "--seconds", 60)
        outcome = self.shell(campus(), script, *map(str, arguments))
        report = json.loads(outcome.out)
        self.assertEqual([each.get("serial") for each in report], ["S-1"] * 100)

    def test_one_address_is_asked_once(self):
        listing = self.listing(*[f"{FIRST}.7"] * 50)
        outcome = self.run_program(campus(), "--from", listing, capture=True)
        self.assertEqual(len(json.loads(outcome.out)), 1)
        asked = [each for each in outcome.datagrams if each.direction == "sent"]
        self.assertLess(len(asked), 20)


class Many(InventoryTest):
    def measured(self, count, silent=0, *arguments):
        """Seconds and kilobytes for so many agents, the last `silent` of which are black
        holes; checks the report."""
        addresses = [f"198.18.{16 + n // 250}.{1 + n % 250}" for n in range(count)]
        topology = campus(**{})
        settings = json.loads(topology["agents"][0]["command"][3])
        settings["agents"] = dict.fromkeys(addresses[count - silent :], "silent")
        topology["agents"][0]["command"][3] = json.dumps(settings)
        command = [str(self.program), "--from", self.listing(*addresses), "--format", "json"]
        result = api.observe_in_lab(topology, [*command, *arguments], seconds=100)
        self.assertEqual(result["code"], 0, result["err"])
        report = json.loads(result["out"])
        self.assertEqual(len(report), count)
        whole = [each for each in report if len(each.get("supplies", [])) == 2]
        self.assertEqual(len(whole), count - silent)
        print(
            f"{count} agents, {silent} of them silent: {result['seconds']:.2f} s, "
            f"{result['memory']} kB",
            file=sys.stderr,
        )
        return result

    def sanitized(self):
        octets = self.program.read_bytes()
        return b"__asan_init" in octets or b"__tsan_init" in octets

    def check(self, result, seconds):
        if self.sanitized():
            harness.skip("a sanitizer takes its time and memory")
        self.assertLess(result["memory"], KILOBYTES)
        self.assertLess(result["seconds"], seconds)

    def test_a_thousand_agents(self):
        self.check(self.measured(1000), SECONDS)

    def test_64_black_holes_among_a_thousand_cost_their_own_time(self):
        result = self.measured(1000, 64, "--seconds", "4")
        self.check(result, SECONDS + 4)

    def test_ten_and_250(self):
        self.check(self.measured(10), SECONDS)
        self.check(self.measured(250), SECONDS)


if __name__ == "__main__":
    unittest.main()

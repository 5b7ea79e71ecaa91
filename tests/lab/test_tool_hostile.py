"""Hostile and broken networks. The document lists the well-formed responders and nobody
else, a run takes as long as ever, and memory grows only with the well-formed answers,
which are kept.

A well-formed responder is whoever sends a message that Net-SNMP parses as SNMPv1 and that
has the request's identifier. The PDU's type, its error-status, the community and the
sender's address do not matter, as in SNMPSession::Get.
"""

import concurrent.futures
import ipaddress
import json
import os
import shutil
import sys
import unittest

import harness
from tool import EXIT_CODE, ToolTest, simulator

from snmplab import api

FIRST = ipaddress.ip_address("198.18.16.0")  # of the hostile agents
GOOD = {f"198.18.1.{number}" for number in range(20)}

# Seconds that a hostile network may add to a run, and that a busy machine may add.
MORE = 0.2
MORE_WHEN_BUSY = 10.0
ATTEMPTS = 3

# Kilobytes of resident memory that a network may add: the response PDUs, which are kept.
MORE_MEMORY = 12000
# The same with datagrams of 60 kB full of variable bindings. While one is read, each of two
# workers holds it twice: as Net-SNMP parsed it, and as the copy for the callback.
MORE_MEMORY_FOR_LARGE = 40000
# Octets of each answer that is kept; SECURITY.md has the figure.
MOST_OF_AN_ANSWER = 400


def numbers(*wanted):
    """The addresses of the hostile agents with these numbers."""
    return {str(FIRST + number) for number in wanted}


def network(*options, first=FIRST):
    """A host, twenty plain agents, and hostile ones if there are `options`."""
    plain = ["--first", "198.18.1.0", "--agents", "20"]
    agents = [("plain", "198.18.0.2", plain)]
    if options:
        agents.append(("hostile", "198.18.0.3", ["--first", str(first), *options]))
    interface = {"name": "eth0", "subnet": "campus", "addresses": "198.18.0.1"}
    return {
        "subnets": {"campus": "198.18.0.0/17"},
        "host": {"interfaces": [interface]},
        "agents": [
            {
                "name": name,
                "kind": "program",
                "addresses": {"campus": address},
                "command": [simulator(), *arguments],
            }
            for name, address, arguments in agents
        ],
    }


def listed(result):
    """The addresses in the document, which must be one."""
    return {each["hostname"] for each in json.loads(result["out"])}


def busy(tasks=8):
    """Whether more than `tasks` tasks want each processor; prints a message if so. Eight
    are what the tests of this folder make when they run side by side, and the tool still
    gets its time then."""
    found = os.getloadavg()[0] > tasks * os.cpu_count()
    if found:
        print("a busy machine: not everything is checked", file=sys.stderr)
    return found


# The head of a shell script: a job that does something once the host has received the
# first answers of all 21 agents, and the tool has had a second to read them.
AFTER_ANSWERS = """
(for turn in $(seq 200); do
    received=$(awk '$1 == "Udp:" {n = $2} END {print n}' /proc/net/snmp)
    [ "$received" -ge 21 ] && break
    sleep 0.05
done
sleep 1
"""


class Hostile(ToolTest):
    more_memory = MORE_MEMORY
    octets_of_an_answer = 0  # beyond more_memory, for each datagram received

    def setUp(self):
        super().setUp()
        octets = self.tool.read_bytes()
        self.sanitized = b"__asan_init" in octets or b"__tsan_init" in octets

    def run_beside_a_quiet_one(self, topology, command=None):
        """Runs the tool in `topology`, and at the same time in a network without hostile
        agents, which shows how long a run takes on the machine as it is now. Checks
        everything but the document. If the times differ too much, both run again: a network
        that makes a run longer does so each time, the machine's other work does not."""
        command = command or [str(self.tool)]
        for attempt in range(ATTEMPTS):
            with concurrent.futures.ThreadPoolExecutor(2) as pool:
                quiet = pool.submit(api.observe_in_lab, network(), [str(self.tool)])
                result = api.observe_in_lab(topology, command)
                quiet = quiet.result()
            self.assertEqual(listed(quiet), GOOD)
            self.assertEqual(result["code"], EXIT_CODE, result["err"][-2000:])
            result["more_memory"] = result["memory"] - quiet["memory"]
            if not self.sanitized:  # a sanitizer keeps what was freed
                most = self.more_memory + self.octets_of_an_answer * result["received"] / 1024
                self.assertLess(result["more_memory"], most)
            more = result["seconds"] - quiet["seconds"]
            # Waiting for the processor is the machine's doing: other tests run beside this one.
            limit = MORE_WHEN_BUSY if busy() else MORE + result["waited"]
            if more < limit:
                return result
            print(f"attempt {attempt + 1}: {more:.3f} s more, {limit:.3f} allowed", file=sys.stderr)
        return self.fail(f"{more:.3f} s more than beside quiet agents, in {ATTEMPTS} attempts")

    def found(self, behaviour, agents, *options):
        """The hostile agents in the document. Checks that all plain ones are in it."""
        topology = network("--behaviour", behaviour, "--agents", str(agents), *options)
        found = listed(self.run_beside_a_quiet_one(topology))
        self.assertEqual(GOOD - found, set())
        return found - GOOD

    def test_truncated_at_every_length(self):
        self.assertEqual(self.found("truncated", 60), set())

    def test_random_octets_of_every_length(self):
        self.assertEqual(self.found("random", 1473), set())

    def test_mutated_answers(self):
        # Some mutants are still answers, so it is not known which agents are listed.
        everyone = numbers(*range(2000))
        self.assertEqual(self.found("mutated", 2000) - everyone, set())

    def test_another_request_identifier(self):
        self.assertEqual(self.found("request-id", 12), set())

    def test_another_version(self):
        self.assertEqual(self.found("version", 14), set())

    def test_another_community_is_an_answer_unless_it_is_too_long_for_net_snmp(self):
        fits = set(range(12)) - {4, 10}  # 2,000 octets
        self.assertEqual(self.found("community", 12), numbers(*fits))

    def test_an_error_status_is_an_answer(self):
        self.assertEqual(self.found("error-status", 20), numbers(*range(20)))

    def test_empty_datagrams(self):
        self.assertEqual(self.found("empty", 200), set())

    def test_every_pdu_type_with_a_request_identifier_is_an_answer(self):
        # GET to REPORT, without the SNMPv1 trap (4), which has none, and what is undefined.
        answers = {0, 1, 2, 3, 5, 6, 7, 8}
        expected = answers | {16 + each for each in answers}
        self.assertEqual(self.found("pdu-type", 32), numbers(*expected))

    def test_sequences_thousands_deep(self):
        self.assertEqual(self.found("deep", 300, "--spread", "500"), set())

    def test_indefinite_lengths(self):
        self.assertEqual(self.found("indefinite", 40), set())

    def test_lengths_beyond_the_end(self):
        self.assertEqual(self.found("overlong", 70), set())

    def test_junk_behind_an_answer_is_not_looked_at(self):
        self.assertEqual(self.found("trailing", 50), numbers(*range(50)))

    def test_port_unreachable(self):
        self.assertEqual(self.found("unreachable", 50), set())

    def test_60_kilobytes_of_bindings_from_each_of_200(self):
        # One after the other: a buffer of 4 MB holds some 80 such datagrams.
        self.more_memory = MORE_MEMORY_FOR_LARGE
        agents = 20 if self.sanitized else 200  # a sanitizer takes its time over each
        found = self.found("large", agents, "--spread", "2500")
        self.assertEqual(found - numbers(*range(agents)), set())
        if not busy(tasks=1):  # Net-SNMP needs milliseconds of the processor for each
            self.assertEqual(len(found), agents)

    def test_hundreds_of_copies(self):
        found = self.found("plain", 20, "--copies", "300")
        self.assertEqual(found, numbers(*range(20)))

    def test_a_flood_of_junk_for_the_whole_run(self):
        # Not enough to fill a buffer of 208 kB before it is read.
        found = self.found("random", 1000, "--flood", "5000", "--ignore", "1000")
        self.assertEqual(found, set())

    def test_a_flood_as_fast_as_it_can_be_sent_does_not_keep_the_run_from_its_end(self):
        # Answers may be lost in it, but nobody else is found.
        flood = ("--behaviour", "random", "--agents", "1000", "--flood", "100000")
        result = self.run_beside_a_quiet_one(network(*flood))
        self.assertEqual(listed(result) - GOOD, set())
        self.assertGreater(result["received"] + result["lost"], 1000)

    def test_a_flood_of_matching_answers_as_fast_as_one_core_sends(self):
        self.octets_of_an_answer = MOST_OF_AN_ANSWER
        rate = 5000 if self.sanitized else 1000000  # a second; a sanitizer reports each as a leak
        flood = ("--behaviour", "long-community", "--agents", "5000", "--flood", str(rate))
        result = self.run_beside_a_quiet_one(network(*flood))
        print(
            f"{result['received']} answers, {result['lost']} lost, {result['more_memory']} kB more,",
            f"{result['seconds']} s, {result['processor']} s of the processor",
            file=sys.stderr,
        )
        found = listed(result)
        self.assertEqual(found - GOOD - numbers(*range(5000)), set())
        self.assertGreater(result["received"], 1000)
        self.assertGreater(len(found), 500)

    def test_a_flood_of_mutated_answers_for_the_whole_run(self):
        found = self.found("mutated", 200, "--flood", "2000")
        self.assertEqual(found - numbers(*range(200)), set())

    def test_answers_shortly_before_the_deadline(self):
        # Of five seconds after each of the two requests.
        found = self.found("plain", 50, "--delay", "4000")
        self.assertEqual(found, numbers(*range(50)))

    def test_answers_at_the_deadline_may_be_listed_or_not(self):
        found = self.found("plain", 50, "--delay", "4990", "--spread", "20")
        self.assertEqual(found - numbers(*range(50)), set())

    def test_answers_after_the_deadline(self):
        self.assertEqual(self.found("plain", 50, "--delay", "6000"), set())

    def test_answers_to_the_resend_only(self):
        found = self.found("plain", 50, "--ignore", "1")
        self.assertEqual(found, numbers(*range(50)))

    def test_a_neighbour_with_an_address_outside_the_subnet_is_listed(self):
        topology = network("--agents", "3", first="203.0.113.7")
        found = listed(self.run_beside_a_quiet_one(topology))
        outside = {f"203.0.113.{number}" for number in (7, 8, 9)}
        self.assertEqual(found, GOOD | outside)

    def test_an_interface_that_goes_down_in_the_middle(self):
        # The second requests cannot even be sent.
        command = ["sh", "-c", AFTER_ANSWERS + "ip link set eth0 down) & exec $0", str(self.tool)]
        topology = network("--agents", "1")
        result = self.run_beside_a_quiet_one(topology, command)
        self.assertEqual(listed(result), GOOD | numbers(0))

    def test_an_interface_that_loses_its_address_in_the_middle(self):
        command = ["sh", "-c", AFTER_ANSWERS + "ip address flush dev eth0) & exec $0", str(self.tool)]
        topology = network("--agents", "1")
        result = self.run_beside_a_quiet_one(topology, command)
        self.assertEqual(listed(result), GOOD | numbers(0))

    def test_all_at_once_under_valgrind(self):
        if shutil.which("valgrind") is None:
            harness.skip("valgrind is not installed")
        if self.sanitized:
            harness.skip("valgrind cannot run what has a sanitizer")
        if "statically linked" in harness.run_outside(["ldd", str(self.tool)]).stdout:
            harness.skip("valgrind cannot replace the allocator inside a static executable")
        topology = network("--behaviour", "plain", "--agents", "2", "--copies", "20")
        kinds = ("truncated 60", "random 200", "mutated 500", "deep 60", "indefinite 8")
        kinds += ("overlong 14", "pdu-type 32", "large 4", "community 12", "version 14")
        for number, kind in enumerate(kinds):
            name, agents = kind.split()
            options = ["--first", f"198.19.{number}.0", "--agents", agents]
            topology["agents"].append(
                {
                    "name": f"wild-{number}",
                    "kind": "program",
                    "addresses": {"campus": f"198.18.0.{10 + number}"},
                    "command": [simulator(), *options, "--behaviour", name],
                }
            )
        valgrind = ["valgrind", "--quiet", "--error-exitcode=99"]
        result = api.observe_in_lab(topology, [*valgrind, str(self.tool)], seconds=120)
        if "Possibly corrupted debuginfo file" in result["err"]:
            # As valgrind 3.19 (Debian 12) says of Clang's DWARF 5, before it starts the tool.
            harness.skip("this valgrind cannot read this compiler's debug information")
        self.assertEqual(result["code"], EXIT_CODE, result["err"][-4000:])
        self.assertEqual((GOOD | numbers(0, 1)) - listed(result), set())


if __name__ == "__main__":
    unittest.main()

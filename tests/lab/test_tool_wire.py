"""What the tool sends, and when."""

import collections
import unittest

from harness import office
from tool import ToolTest, sent

from snmplab import ber, message

# A request that no answer has ended is resent after three seconds; the pauses are two
# seconds. On a busy machine the first of two datagrams can be late, and then the second
# looks early.
LATE = 0.9
EARLY = 0.5


class Requests(ToolTest):
    def setUp(self):
        super().setUp()
        agents = (
            {"name": "laser", "addresses": {"office": "192.0.2.9"}},
            {"name": "far", "kind": "snmpd", "addresses": {"attic": "198.51.100.9"}},
        )
        topology = office(*agents)
        topology["subnets"]["attic"] = "198.51.100.0/24"
        topology["host"]["interfaces"].append(
            {"name": "eth1", "subnet": "attic", "addresses": "198.51.100.1"}
        )
        self.outcome = self.discover(topology, capture=True)
        self.assert_found(self.outcome, "192.0.2.9", "198.51.100.9")
        # By subnet and by the socket of one worker, in order of time.
        self.workers = collections.defaultdict(lambda: collections.defaultdict(list))
        for each in sorted(sent(self.outcome), key=lambda each: each.time):
            self.workers[each.destination][each.source_port].append(each)

    def assert_follows(self, first, second, seconds):
        """`second` came about `seconds` after `first`."""
        between = second.time - first.time
        self.assertGreater(between, seconds - EARLY)
        self.assertLess(between, seconds + LATE)

    def test_timing_and_contents(self):
        self.assertEqual(set(self.workers), {"192.0.2.255", "198.51.100.255"})
        for destination, of_subnet in self.workers.items():
            with self.subTest("two workers, two seconds apart", to=destination):
                first, second = of_subnet.values()
                self.assert_follows(first[0], second[0], 2)
            for datagrams in of_subnet.values():
                with self.subTest("one resend after three seconds", to=destination):
                    request, resend = datagrams
                    self.assert_follows(request, resend, 3)
                    self.assertEqual(request.payload, resend.payload)
        requests = [each[0] for sub in self.workers.values() for each in sub.values()]
        for request in requests:
            with self.subTest("one GET of sysUpTime.0", port=request.source_port):
                found = request.message
                self.assertEqual(
                    found,
                    message.Message(
                        message.VERSION_1,
                        b"public",
                        message.GET,
                        found.request_id,
                        0,
                        10,  # sent on purpose with every kind of request
                        (message.Binding(message.SYS_UP_TIME, ber.NULL, b""),),
                    ),
                )
        with self.subTest("no request is another's"):
            identifiers = {each.message.request_id for each in requests}
            self.assertEqual(len(identifiers), len(requests))
        with self.subTest("nothing else is sent"):
            others = [
                each
                for each in self.outcome.datagrams
                if each.direction == "sent" and each not in sent(self.outcome)
            ]
            self.assertEqual(others, [])


if __name__ == "__main__":
    unittest.main()

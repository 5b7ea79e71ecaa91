"""What the lab's own agent answers, without its sockets."""

import unittest

import harness  # noqa: F401

from snmplab import ber, message, responder
from snmplab.topology import Behaviour

ASKER = ("192.0.2.1", 40000)


def script(**behaviour):
    return responder.Script("public", Behaviour(**behaviour))


def replies(asked, datagram=message.get("public", 7), asker=ASKER):
    return list(asked.replies(datagram, asker, 256))


class Answers(unittest.TestCase):
    def test_a_get_is_answered_once_and_at_once(self):
        (reply,) = replies(script())
        self.assertEqual(reply.delay, 0)
        binding = message.Binding(message.SYS_UP_TIME, ber.TIME_TICKS, b"\x01\x00")
        self.assertEqual(
            message.decode(reply.payload),
            message.Message(
                message.VERSION_1, b"public", message.RESPONSE, 7, 0, 0, (binding,)
            ),
        )

    def test_a_request_with_error_index_10_is_answered_without_errors(self):
        asked = message.Message(
            message.VERSION_1,
            b"public",
            message.GET,
            7,
            0,
            10,
            (message.Binding(message.SYS_UP_TIME),),
        )
        (reply,) = replies(script(), asked.encode())
        self.assertEqual(message.decode(reply.payload).error_index, 0)

    def test_what_is_no_request_of_the_community_gets_nothing(self):
        response = responder.answer(message.decode(message.get("public", 1)), 1)
        cases = {
            "another community": message.get("private", 1),
            "a longer community": message.get("publicity", 1),
            "a response": response.encode(),
            "no SNMP": b"hello",
            "nothing": b"",
        }
        for name, datagram in cases.items():
            with self.subTest(name):
                self.assertEqual(replies(script(), datagram), [])


class Behaviours(unittest.TestCase):
    def test_copies_are_the_same_answer_again(self):
        first, second = replies(script(copies=2))
        self.assertEqual(first, second)

    def test_no_copies_is_silence(self):
        self.assertEqual(replies(script(copies=0)), [])

    def test_delay_is_told_with_the_answer(self):
        (reply,) = replies(script(delay=1.5))
        self.assertEqual(reply.delay, 1.5)

    def test_ignore_counts_each_request_of_each_asker_for_itself(self):
        asked = script(ignore=1)
        other = ("192.0.2.1", 40001)
        self.assertEqual(replies(asked), [])
        self.assertEqual(replies(asked, asker=other), [])
        self.assertEqual(replies(asked, message.get("public", 8)), [])
        self.assertEqual(len(replies(asked)), 1)
        self.assertEqual(len(replies(asked, asker=other)), 1)


if __name__ == "__main__":
    unittest.main()

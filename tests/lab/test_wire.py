"""The transfer syntax and the messages of the lab."""

import unittest

import harness  # noqa: F401

from snmplab import ber, capture, message

# A GET of sysUpTime.0, community "public", request ID 1, written out by hand.
GET = bytes.fromhex(
    "3026"
    "020100"
    "04067075626c6963"
    "a019"
    "020101"
    "020100"
    "020100"
    "300e300c06082b06010201010300"
    "0500"
)


class Integers(unittest.TestCase):
    CASES = (
        (0, "020100"),
        (1, "020101"),
        (-1, "0201ff"),
        (127, "02017f"),
        (128, "02020080"),
        (-128, "020180"),
        (-129, "0202ff7f"),
        (256, "02020100"),
        (2147483647, "02047fffffff"),
        (-2147483648, "020480000000"),
        (4294967295, "020500ffffffff"),
    )

    def test_every_value_has_its_shortest_octets_and_comes_back(self):
        for value, octets in self.CASES:
            with self.subTest(value=value):
                self.assertEqual(ber.integer(value).hex(), octets)
                self.assertEqual(ber.Reader(bytes.fromhex(octets)).integer(), value)


class ObjectIdentifiers(unittest.TestCase):
    CASES = (
        ("1.3.6.1.2.1.1.3.0", "06082b06010201010300"),
        ("0.0", "060100"),
        ("1.39", "06014f"),
        ("2.100.3", "0603813403"),
        ("2.999", "06028837"),
        ("1.3.127.128.16383.16384", "06092b7f8100ff7f818000"),
        ("1.3.4294967295", "06062b8fffffff7f"),
    )

    def test_every_identifier_comes_back(self):
        for text, octets in self.CASES:
            with self.subTest(text=text):
                self.assertEqual(ber.object_identifier(text).hex(), octets)
                reader = ber.Reader(bytes.fromhex(octets))
                self.assertEqual(reader.object_identifier(), text)

    def test_what_is_none_is_refused(self):
        for text in ("1", "3.1", "0.40", "1.3.-1"):
            with self.subTest(text=text), self.assertRaises(ber.BerError):
                ber.object_identifier(text)


class Lengths(unittest.TestCase):
    CASES = ((0, "00"), (127, "7f"), (128, "8180"), (255, "81ff"), (256, "820100"))

    def test_each_has_its_shortest_form_and_comes_back(self):
        for count, octets in self.CASES:
            with self.subTest(count=count):
                encoded = ber.octets(b"x" * count)
                self.assertEqual(encoded[1:-count or None].hex(), octets)
                self.assertEqual(ber.Reader(encoded).octets(), b"x" * count)


class Damage(unittest.TestCase):
    CASES = {
        "no octets": "",
        "no length": "02",
        "content cut short": "020201",
        "indefinite length": "30800000",
        "length of five octets": "02850000000001",
        "length cut short": "028201",
        "another tag": "0401ff",
        "integer without octets": "0200",
    }

    def test_is_told(self):
        for name, octets in self.CASES.items():
            with self.subTest(name), self.assertRaises(ber.BerError):
                ber.Reader(bytes.fromhex(octets)).integer()

    def test_every_prefix_of_a_message_is_refused(self):
        for count in range(len(GET)):
            with self.subTest(count=count), self.assertRaises(ber.BerError):
                message.decode(GET[:count])


class Messages(unittest.TestCase):
    def test_get_is_as_written_by_hand(self):
        self.assertEqual(message.get("public", 1), GET)

    def test_decode_gives_every_field(self):
        self.assertEqual(
            message.decode(GET),
            message.Message(
                message.VERSION_1,
                b"public",
                message.GET,
                1,
                0,
                0,
                (message.Binding(message.SYS_UP_TIME),),
            ),
        )

    def test_decode_of_encode_is_the_message(self):
        bindings = (
            message.Binding("1.3.6.1.2.1.1.3.0", ber.TIME_TICKS, b"\x12"),
            message.Binding("1.3.6.1.2.1.1.5.0", ber.OCTET_STRING, b"name" * 40),
        )
        sent = message.Message(
            message.VERSION_2C, b"\x00\xff", message.RESPONSE, -5, 2, 10, bindings
        )
        self.assertEqual(message.decode(sent.encode()), sent)

    def test_what_is_no_such_message_is_refused(self):
        cases = {
            "octets behind it": GET + b"\x00",
            "version 3": GET.replace(b"\x02\x01\x00", b"\x02\x01\x03", 1),
            "trap": GET.replace(b"\xa0", b"\xa4", 1),
        }
        for name, octets in cases.items():
            with self.subTest(name), self.assertRaises(ber.BerError):
                message.decode(octets)


class Packets(unittest.TestCase):
    V4 = bytes.fromhex("45000020" "00004000" "40110000" "c0000201" "c00002ff")
    V6 = bytes.fromhex("60000000" "000c1140") + bytes(15) + b"\1" + bytes(15) + b"\2"
    UDP = bytes.fromhex("d4310" "0a1" "000c0000") + b"snmp"

    def test_datagrams_of_both_families_are_read(self):
        for packet, source, destination in (
            (self.V4 + self.UDP, "192.0.2.1", "192.0.2.255"),
            (self.V6 + self.UDP, "::1", "::2"),
        ):
            with self.subTest(source=source):
                found = capture.datagram_in(packet, 1.5, "eth0", "sent")
                self.assertEqual(
                    found,
                    capture.Datagram(
                        1.5, "eth0", "sent", source, 54321, destination, 161, b"snmp"
                    ),
                )

    def test_trailing_octets_of_the_frame_are_left_out(self):
        found = capture.datagram_in(self.V4 + self.UDP + b"pad", 0.0, "eth0", "sent")
        self.assertEqual(found.payload, b"snmp")

    def test_everything_else_is_passed_over(self):
        cases = {
            "nothing": b"",
            "another protocol": self.V4.replace(b"\x40\x11", b"\x40\x06") + self.UDP,
            "another port": self.V4 + self.UDP.replace(b"\x00\xa1", b"\x00\x35"),
            "a later fragment": self.V4.replace(b"\x40\x00", b"\x00\x07") + self.UDP,
            "a header alone": self.V4 + self.UDP[:4],
            "no IP": b"\x00" * 60,
        }
        for name, packet in cases.items():
            with self.subTest(name):
                self.assertIsNone(capture.datagram_in(packet, 0.0, "eth0", "sent"))


if __name__ == "__main__":
    unittest.main()

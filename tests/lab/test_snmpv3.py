"""The client library's SNMPv3 exchanges with snmpd. SNMPDISCOVERY_V3_PROBE names the
program that makes one: tests/snmp/SNMPv3Probe.cpp."""

import os
import pathlib
import re
import unittest

import harness

from snmplab import api, message

AGENT = "192.0.2.30"  # of the topology snmpv3
AUTHENTIC = "authpassphrase=authentic-phrase"
PRIVATE = "privpassphrase=private-phrase"


class Exchanges(unittest.TestCase):
    def setUp(self):
        harness.require_namespaces()
        path = os.environ.get("SNMPDISCOVERY_V3_PROBE", "")
        if not os.access(path, os.X_OK):
            self.fail(f"SNMPDISCOVERY_V3_PROBE names no executable: '{path}'")
        self.probe = pathlib.Path(path).resolve()

    def ask(self, user, level, *parameters, setting=""):
        """One GET as `user`, with a line of snmp.conf; returns its outcome in the lab."""
        script = """
            program=$1 SNMPCONFPATH=$TMPDIR/settings; shift
            export SNMPCONFPATH; mkdir "$SNMPCONFPATH"
            echo "$0" >"$SNMPCONFPATH/snmp.conf"
            exec "$program" "$TMPDIR/persistent" "$@"
        """
        command = ["sh", "-c", script, setting, str(self.probe), AGENT]
        command += [message.SYS_UP_TIME, f"securityname={user}", f"securitylevel={level}"]
        return api.run_in_lab("snmpv3", [*command, *parameters], capture=True)

    def assert_answered(self, *asking, **settings):
        outcome = self.ask(*asking, **settings)
        self.assertEqual(outcome.code, 0, outcome.out + outcome.err)
        answer = rf"^response 0 {re.escape(message.SYS_UP_TIME)} = [0-9]+\n$"
        self.assertRegex(outcome.out.decode(), answer)
        return outcome

    def assert_unanswered(self, reason, *asking):
        outcome = self.ask(*asking)
        self.assertEqual(outcome.code, 1, outcome.out + outcome.err)
        self.assertIn(reason, outcome.out)

    def test_no_authentication_and_no_privacy(self):
        self.assert_answered("plain", "NoAuthNoPriv")

    def test_md5(self):
        self.assert_answered("md5", "AuthNoPriv", "authprotocol=MD5", AUTHENTIC)

    def test_sha(self):
        self.assert_answered("sha", "AuthNoPriv", "authprotocol=SHA", AUTHENTIC)

    def test_sha_with_des(self):
        outcome = self.assert_answered(
            "sha-des",
            "AuthPriv",
            "authprotocol=SHA",
            "privprotocol=DES",
            AUTHENTIC,
            PRIVATE,
        )
        # The last request and its answer; the discovery of the engine is in the clear.
        name = bytes.fromhex("2b06010201010300")
        for datagram in outcome.datagrams[-2:]:
            self.assertNotIn(name, datagram.payload)

    def test_aes_leaves_the_choice_to_net_snmp_which_takes_des(self):
        # The library hands Net-SNMP the AES identifier with length zero, which stands
        # for Net-SNMP's own choice: a user of AES is not understood, one of DES is.
        parameters = ("authprotocol=SHA", "privprotocol=AES", AUTHENTIC, PRIVATE)
        self.assert_answered("sha-des", "AuthPriv", *parameters)
        self.assert_unanswered(b"Timeout", "sha-aes", "AuthPriv", *parameters)

    def test_net_snmp_s_default_privacy_protocol_can_be_configured(self):
        parameters = ("authprotocol=SHA", "privprotocol=AES", AUTHENTIC, PRIVATE)
        setting = "defPrivType AES"
        self.assert_answered("sha-aes", "AuthPriv", *parameters, setting=setting)

    def test_a_wrong_pass_phrase(self):
        self.assert_unanswered(
            b"Authentication failure",
            "sha",
            "AuthNoPriv",
            "authprotocol=SHA",
            "authpassphrase=another-phrase",
        )

    def test_a_pass_phrase_under_eight_characters_gives_a_key_of_zeros(self):
        # The session works all the same: the agent's user has that key, which everybody
        # knows.
        short, shorter = "authpassphrase=7-signs", "privpassphrase=private"
        self.assert_answered("sha-zero", "AuthNoPriv", "authprotocol=SHA", short)
        protocols = ("authprotocol=SHA", "privprotocol=DES")
        self.assert_answered("sha-des-zero", "AuthPriv", *protocols, short, shorter)

    def test_eight_characters_are_enough_for_a_key(self):
        self.assert_unanswered(
            b"Authentication failure",
            "sha-zero",
            "AuthNoPriv",
            "authprotocol=SHA",
            "authpassphrase=8-signs!",
        )

    def test_another_protocol_than_the_user_s(self):
        self.assert_unanswered(
            b"Authentication failure", "sha", "AuthNoPriv", "authprotocol=MD5", AUTHENTIC
        )

    def test_an_unknown_user(self):
        self.assert_unanswered(b"Unknown user name", "stranger", "NoAuthNoPriv")

    def test_a_lower_level_than_the_user_s_is_answered_with_an_error(self):
        # The agent's view-based access control lets this user read only with privacy.
        outcome = self.ask("sha-des", "AuthNoPriv", "authprotocol=SHA", AUTHENTIC)
        self.assertEqual(outcome.code, 0, outcome.out + outcome.err)
        self.assertIn(b"response 16 ", outcome.out)  # authorizationError, RFC 3416


if __name__ == "__main__":
    unittest.main()

"""snmp-inventory against real agents: discovery, what is asked and by which version, the
community's way to the tool, exit codes, files, signals."""

import json
import os
import shlex
import time
import unittest

from inventory import FIRST, InventoryTest, campus

from tool import document

# Topologies that come with the lab.
PRINTER, SECURE, SECURE_AGENT = "printer", "snmpv3", "192.0.2.30"

AUTHENTIC = "authprotocol = SHA\nauthpassphrase = authentic-phrase\n"

# What the program must not leave behind, however it ended: its folder and its child.
LEFTOVERS = """
for turn in $(seq 40); do
    left=$(ls -d "$TMPDIR"/snmp-inventory-* 2>/dev/null; \
        for each in /proc/[0-9]*; do readlink "$each/exe"; done 2>/dev/null | grep "/SNMPDiscovery$")
    [ -z "$left" ] && break
    sleep 0.05
done
echo "left: $left"
"""

# Runs the program in the background, waits for $condition, sends it a signal and tells how
# it ended.
SIGNALLED = """
"$0" "$@" >"$TMPDIR/out" 2>"$TMPDIR/err" &
program=$!
for turn in $(seq 200); do
    if eval "$condition"; then break; fi
    sleep 0.05
done
eval "$condition" || echo "never: $condition"
kill -"$signal" $program
wait $program
echo "ended: $?"
""" + LEFTOVERS


class Discovering(InventoryTest):
    def test_a_printer_and_a_host_that_is_none(self):
        found = self.report(PRINTER)
        self.assertEqual(list(found), ["192.0.2.9", "192.0.2.10"])
        laser = found["192.0.2.9"]
        self.assertEqual(laser["name"], "laser")
        self.assertIs(laser["printer"], True)
        self.assertEqual(
            laser["supplies"],
            [
                {
                    "name": "Black Toner",
                    "type": "toner",
                    "class": "supplyThatIsConsumed",
                    "unit": "percent",
                    "level": 42,
                    "capacity": 100,
                    "percent": 42,
                },
                {
                    "name": "Drum",
                    "type": "opc",
                    "class": "supplyThatIsConsumed",
                    "unit": "impressions",
                    "level": 21500,
                    "capacity": 60000,
                    "percent": 36,
                },
                {
                    "name": "Waste Box",
                    "type": "wasteToner",
                    "class": "receptacleThatIsFilled",
                    "unit": "tenthsOfGrams",
                    "level": -2,
                    "capacity": 15000,
                },
            ],
        )
        server = found["192.0.2.10"]
        self.assertIs(server["printer"], False)
        self.assertEqual(server["objectID"], "1.3.6.1.4.1.8072.3.2.10")
        for absent in ("model", "serial", "status", "pages", "supplies"):
            self.assertNotIn(absent, server)

    def test_addresses_only(self):
        outcome = self.run_program(PRINTER, "--no-ask", "--format", "addresses", capture=True)
        self.assertEqual(outcome.out, b"192.0.2.9\n192.0.2.10\n")
        asked = {each.destination for each in outcome.datagrams if each.direction == "sent"}
        self.assertEqual(asked, {"192.0.2.255"})
        found = self.report(PRINTER, "--no-ask")
        self.assertEqual(list(found.values()), [{"hostname": a} for a in found])

    def test_another_community_reaches_the_tool_and_the_agents_byte_for_byte(self):
        community = b"a b\\n$${x}${HOME}#=:\xe9\x01\\"
        path = self.file(community + b"\r\nsecond line\n")
        command = ("--community-file", path, "--quiet")
        outcome = self.run_program("demo", *command, capture=True)
        self.assertEqual(outcome.out, b"[]\n")
        sent = [each for each in outcome.datagrams if each.direction == "sent"]
        self.assertGreaterEqual(len(sent), 6)
        self.assertEqual({each.message.community for each in sent}, {community})

    def test_files_that_another_user_left_for_temporary_ones_do_not_count(self):
        script = """cd "$TMPDIR" || exit 9
        echo 'Community = hostile' | tee SNMPDiscovery.properties >SNMPDiscovery.ini
        echo '{"Community":"hostile"}' >SNMPDiscovery.json
        echo '<config><Community>hostile</Community></config>' >SNMPDiscovery.xml
        "$0" --quiet --community-file "$1" """
        outcome = self.shell("demo", script, self.file("secret"), capture=True)
        sent = [each for each in outcome.datagrams if each.direction == "sent"]
        self.assertEqual({each.message.community for each in sent}, {b"secret"})

    def test_an_agent_of_another_community_is_found_and_asked(self):
        found = self.report("demo", env={"SNMP_COMMUNITY": "secret"})
        self.assertEqual(list(found), ["198.51.100.21"])
        self.assertEqual(found["198.51.100.21"]["name"], "private")

    def test_the_community_is_in_no_argument_and_the_folder_private_and_gone(self):
        condition = "readlink /proc/[0-9]*/exe | grep -q /SNMPDiscovery$"
        script = f"""
        "$0" --no-ask --community-file "$1" >"$TMPDIR/out" & program=$!
        for turn in $(seq 100); do {condition} && break; sleep 0.05; done
        cat /proc/[0-9]*/cmdline | tr '\\0' ' '; echo
        stat -c '%a %n' "$TMPDIR"/snmp-inventory-*
        (cd "$TMPDIR"/snmp-inventory-* && stat -c '%a %F %n' *)
        wait $program; echo "ended: $?"
        """
        outcome = self.shell("demo", script + LEFTOVERS, self.file("very-secret"))
        said = outcome.out.decode()
        self.assertIn("snmp-inventory", said)
        self.assertNotIn("very-secret", said)
        self.assertRegex(said, r"(?m)^700 .*/snmp-inventory-\w+$")
        self.assertRegex(said, r"(?m)^600 regular file SNMPDiscovery.properties$")
        self.assertRegex(said, r"(?m)^777 symbolic link SNMPDiscovery$")
        self.assertRegex(said, r"(?m)^777 symbolic link mibs$")
        self.assertIn("ended: 0", said)
        self.assertRegex(said, r"(?m)^left: $")


class Asking(InventoryTest):
    def credentials(self, text):
        return ["--credentials", self.file(text, "credentials")]

    def test_the_tool_s_own_document_and_a_report_are_read(self):
        topology = campus()
        address = f"{FIRST}.1"
        found = self.report(topology, "--from", self.file(document(address)))
        again = self.report(topology, "--from", self.file(json.dumps(list(found.values()))))
        self.assertEqual(list(again), [address])
        self.assertEqual(again[address]["serial"], "S-1")

    def test_snmpv1_unless_there_are_credentials(self):
        listing = self.listing(f"{FIRST}.1")
        for extra, version in ((), 0), (self.credentials("version = 2c"), 1):
            with self.subTest(version):
                outcome = self.run_program(campus(), "--from", listing, *extra, capture=True)
                sent = [each for each in outcome.datagrams if each.direction == "sent"]
                self.assertEqual({each.message.version for each in sent}, {version})
                self.assertIn(b'"serial":"S-1"', outcome.out)
                self.assertIn(b'"pages":21500', outcome.out)
                self.assertIn(b'"status":"idle"', outcome.out)
                self.assertIn(b'"model":"Laser 3000"', outcome.out)

    def test_a_switch_is_no_printer(self):
        found = self.ask(campus("switch"), [f"{FIRST}.1"])[f"{FIRST}.1"]
        expected = {"hostname", "answers", "name", "description", "location", "objectID"}
        self.assertEqual(set(found), expected | {"uptime", "printer"})
        self.assertIs(found["printer"], False)

    def test_snmpv3(self):
        users = {
            "plain": "securitylevel = NoAuthNoPriv\n",
            "sha": "securitylevel = AuthNoPriv\n" + AUTHENTIC,
            "sha-des": "securitylevel = AuthPriv\nprivprotocol = DES\n"
            "privpassphrase = private-phrase\n" + AUTHENTIC,
        }
        for user, settings in users.items():
            with self.subTest(user):
                text = f"version = 3\nsecurityname = {user}\n{settings}"
                found = self.ask(SECURE, [SECURE_AGENT], *self.credentials(text))
                self.assertEqual(found[SECURE_AGENT]["name"], "secure")
                self.assertIs(found[SECURE_AGENT]["printer"], False)

    def test_snmpv3_with_a_wrong_pass_phrase(self):
        text = "version = 3\nsecurityname = sha\nsecuritylevel = AuthNoPriv\n"
        text += AUTHENTIC.replace("authentic", "another")
        found = self.ask(SECURE, [SECURE_AGENT], *self.credentials(text))
        self.assertEqual(found[SECURE_AGENT], {"hostname": SECURE_AGENT, "answers": True})

    def test_many_agents_by_snmpv3_and_a_black_hole_among_them(self):
        # The black hole has an address on the wire that nobody has.
        text = "version = 3\nsecurityname = sha\nsecuritylevel = AuthNoPriv\n" + AUTHENTIC
        addresses = ["192.0.2.31", SECURE_AGENT, "192.0.2.32"]
        extra = [*self.credentials(text), "--seconds", "2"]
        found = self.ask(SECURE, addresses, *extra)
        self.assertEqual([each["answers"] for each in found.values()], [True, False, False])

    def test_only_printers(self):
        topology = campus("switch", n1="printer", n2="silent")
        addresses = [f"{FIRST}.{number}" for number in (1, 2, 3)]
        found = self.ask(topology, addresses, "--printers", "--seconds", "1")
        self.assertEqual(list(found), addresses[:1])

    def test_what_changed(self):
        old = [
            {"hostname": f"{FIRST}.1", "answers": True, "name": "old", "printer": True},
            {"hostname": f"{FIRST}.9", "answers": True, "name": "gone", "printer": False},
        ]
        path = self.file(json.dumps(old), "old.json")
        listing = self.listing(f"{FIRST}.1")
        outcome = self.run_program(campus(), "--from", listing, "--compare", path, code=3)
        found = json.loads(outcome.out)
        self.assertEqual(found["appeared"], [])
        self.assertEqual(found["vanished"][0]["hostname"], f"{FIRST}.9")
        self.assertEqual(
            found["changed"],
            [
                {
                    "hostname": f"{FIRST}.1",
                    "name": {"old": "old", "new": "laser"},
                    "model": {"new": "Laser 3000"},
                    "serial": {"new": "S-1"},
                }
            ],
        )
        now = self.run_program(campus(), "--from", listing)
        same = self.file(now.out, "now.json")
        self.run_program(campus(), "--from", listing, "--compare", same)


class Failing(InventoryTest):
    def fails(self, cases, code):
        """Each case ends with `code`, one line on standard error and nothing else."""
        script = 'program=$0; n=0; while read -r line; do n=$((n + 1)); '
        script += 'eval "set -- $line"; "$program" "$@" >out 2>err; '
        script += 'echo "$n $? $(wc -c <out) $(wc -l <err) $(cat err)"; done <"$1"'
        lines = "".join(" ".join(map(shlex.quote, map(str, each))) + "\n" for each in cases)
        script = 'cd "$TMPDIR" && ' + script
        said = self.shell(campus(), script, self.file(lines, "cases")).out.decode()
        results = said.splitlines()
        self.assertEqual(len(results), len(cases), said)
        for case, result in zip(cases, results):
            self.assertRegex(result, rf"^\d+ {code} 0 1 snmp-inventory: ", case)

    def fake(self, script, name):
        """The path of a tool that runs `script`."""
        path = self.file(f"#!/bin/sh\n{script}\n", name)
        os.chmod(path, 0o755)
        return path

    def test_a_tool_that_gives_no_document_or_a_bad_one(self):
        real = shlex.quote(str(self.program.parent / "SNMPDiscovery"))
        scripts = {
            "nothing": "exit 64",
            "help": f"exec {real} --help",
            "cut": "printf '[{\"hostname\":\"192.0.2.9\"},{\"host'",
            "line": "echo '[]'; echo done",
            "killed": "printf '[]'; kill -KILL $$",
        }
        cases = [("--tool", self.fake(script, name)) for name, script in scripts.items()]
        self.fails(cases, 1)

    def test_a_tool_that_hangs_is_given_30_seconds(self):
        script = self.fake("trap '' TERM; printf '[]'; while :; do sleep 100; done", "hangs")
        begun = time.monotonic()
        outcome = self.run_program(campus(), "--tool", script, code=1)
        self.assertGreater(time.monotonic() - begun, 30)
        self.assertRegex(outcome.err, rb"^snmp-inventory: .*30 seconds\n$")

    def test_what_the_tool_says_to_standard_error_passes_with_quiet_too(self):
        script = self.fake("echo 'from the tool' >&2; printf '[]'; exit 64", "says")
        for extra in (), ("--quiet",):
            outcome = self.run_program(campus(), "--tool", script, *extra)
            self.assertEqual((outcome.out, outcome.err), (b"[]\n", b"from the tool\n"))

    def test_exit_code_1_and_one_line(self):
        absent = self.folder / "absent"
        good = ("--from", self.listing())
        one = ("--from", self.file(document(f"{FIRST}.1"), "one"))
        old = self.file('[{"hostname":"192.0.2.9"}]', "old.json")
        cases = [
            ("--from", absent),
            ("--from", self.file("{}", "object")),
            ("--tool", absent),
            ("--from", f"{absent}\r\x1b[2J"),
            ("--tool", "/bin/true"),
            ("--tool", "/usr/bin/ldd", "--community-file", self.file("x", "community")),
            (*good, "--compare", absent),
            (*good, "--credentials", absent),
            (*good, "--credentials", self.file("version=1\nx=y", "key")),
            (*good, "--community-file", self.file("\n", "empty")),
            (*one, "--mibs", absent),
            (*one, "--mibs", self.folder),
            (*good, "--output", self.folder),
            (*good, "--output", absent / "file"),
            # Differences that cannot be written: not 3.
            (*good, "--compare", old, "--output", absent / "file"),
        ]
        self.fails(cases, 1)

    def test_exit_code_2_and_one_line(self):
        self.fails([("--no-ask", "--printers"), ("--parallel", "0"), ("x",)], 2)

    def test_standard_descriptors_that_are_closed_or_full(self):
        script = """
        "$0" --from "$1" --no-ask >&-; echo "closed: $?"
        "$0" --from "$1" --no-ask --output "$TMPDIR/report" >&- <&- 2>&-; echo "file: $?"
        "$0" --from - --no-ask <&-; echo "input: $?"
        "$0" --help >/dev/full; echo "full: $?"
        "$0" --help >&-; echo "help: $?"
        { "$0" --from "$1" --no-ask --format addresses 2>&-; echo "error: $?"; }
        """
        listing = self.listing(f"{FIRST}.1")
        expected = f"closed: 1\nfile: 0\ninput: 1\nfull: 1\nhelp: 1\n{FIRST}.1\nerror: 0\n"
        self.assertEqual(self.shell(campus(), script, listing).out.decode(), expected)

    def test_an_old_report_survives_every_failure(self):
        script = """
        mkdir "$TMPDIR/disk" && mount -t tmpfs -o size=64k none "$TMPDIR/disk" || exit 9
        cd "$TMPDIR/disk" && printf old >report
        head -c 1000000 /dev/zero >fill 2>/dev/null
        "$0" --from "$1" --format html --output report; echo "full: $?"
        rm fill; ls -A; cat report; echo
        mount -o remount,bind,ro "$TMPDIR/disk"
        "$0" --from "$1" --format html --output report; echo "read-only: $?"
        ls -A; cat report; echo
        mount -o remount,bind,rw "$TMPDIR/disk"
        "$0" --from "$2" --output report; echo "bad document: $?"
        "$0" --from "$1" --compare "$2" --output report; echo "bad comparison: $?"
        ls -A; cat report; echo
        "$0" --from "$1" --output report; echo "good: $?"
        ls -A; cat report
        "$0" --from "$1" >/dev/full; echo "full output: $?"
        """
        arguments = (self.listing(), self.file("{}", "bad"))
        outcome = self.shell(campus(), script, *arguments)
        kept = b"report\nold\n"
        self.assertEqual(
            outcome.out,
            b"full: 1\n" + kept + b"read-only: 1\n" + kept + b"bad document: 1\n"
            b"bad comparison: 1\n" + kept + b"good: 0\nreport\n[]\nfull output: 1\n",
        )


class Signals(InventoryTest):
    def signalled(self, condition, signal, *arguments, topology="demo"):
        script = f"condition='{condition}'; signal={signal}\n" + SIGNALLED
        said = self.shell(topology, script, *arguments).out.decode()
        number = {"TERM": 15, "INT": 2, "HUP": 1}[signal]
        # A shell starts its jobs with SIGINT ignored, which stays so: see the shell below.
        self.assertIn(f"ended: {128 + number}\n", said)
        self.assertRegex(said, r"(?m)^left: $")
        self.assertNotIn("never", said)

    RUNNING = "readlink /proc/[0-9]*/exe | grep -q /SNMPDiscovery$"

    def test_sigterm_while_the_tool_runs(self):
        self.signalled(self.RUNNING, "TERM", "--community-file", self.file("secret"))

    def test_sigterm_while_agents_are_asked(self):
        listing = self.listing(f"{FIRST}.1")
        # Net-SNMP is set up by then, and the socket open. Whether there is a file in the folder depends
        # on how Net-SNMP was built.
        condition = "grep -q : /proc/net/udp && ls -d $TMPDIR/snmp-inventory-* >/dev/null 2>&1"
        arguments = ("--from", listing, "--seconds", "60")
        self.signalled(condition, "TERM", *arguments, topology=campus("silent"))

    def test_sigterm_while_the_report_is_written(self):
        # Standard output is a pipe that nobody reads.
        many = [f"198.18.{16 + n // 250}.{1 + n % 250}" for n in range(4000)]
        script = """
        mkfifo "$TMPDIR/pipe"; sleep 100 <>"$TMPDIR/pipe" >/dev/null & sleeper=$!
        "$0" --from "$1" --no-ask >"$TMPDIR/pipe" & program=$!
        for turn in $(seq 100); do
            grep -q pipe_write /proc/$program/wchan && break
            sleep 0.05
        done
        kill -TERM $program; wait $program; echo "ended: $?"; kill $sleeper
        """
        said = self.shell(campus(), script + LEFTOVERS, self.listing(*many)).out
        self.assertIn(b"ended: 143\nleft: \n", said)

    def test_sigterm_while_standard_input_is_read(self):
        script = """
        mkfifo "$TMPDIR/pipe"; sleep 100 <>"$TMPDIR/pipe" >/dev/null & sleeper=$!
        "$0" --from - <"$TMPDIR/pipe" >/dev/null & program=$!
        for turn in $(seq 100); do
            ls -d "$TMPDIR"/snmp-inventory-* >/dev/null 2>&1 && break
            sleep 0.05
        done
        kill -TERM $program; wait $program; echo "ended: $?"; kill $sleeper
        """
        said = self.shell(campus(), script + LEFTOVERS).out
        self.assertIn(b"ended: 143\nleft: \n", said)

    def test_sigint_ends_it_by_sigint_and_the_tool_too(self):
        # The shell starts a job with SIGINT ignored; python does not.
        script = """
        python3 -c 'import os, signal, sys
signal.signal(signal.SIGINT, signal.SIG_DFL)
os.execv(sys.argv[1], sys.argv[1:])' "$0" --no-ask >/dev/null & program=$!
        for turn in $(seq 100); do
            readlink /proc/[0-9]*/exe | grep -q /SNMPDiscovery$ && break
            sleep 0.05
        done
        kill -INT $program; wait $program; echo "ended: $?"
        """
        self.assertIn(b"ended: 130\nleft: \n", self.shell("demo", script + LEFTOVERS).out)

    def test_a_signal_that_was_ignored_stays_ignored(self):
        script = """trap '' TERM; "$0" --from "$1" --seconds 1 & program=$!
        sleep 0.3; kill -TERM $program; wait $program; echo "ended: $?" """
        listing = self.listing(f"{FIRST}.1")
        said = self.shell(campus("silent"), script, listing).out
        self.assertTrue(said.endswith(b"ended: 0\n"), said)

    def test_what_the_parent_ignored(self):
        # The shell itself may refuse to ignore SIGCHLD; python does not.
        script = """
        python3 -c 'import os, signal, sys
signal.signal(signal.SIGCHLD, signal.SIG_IGN)
signal.signal(signal.SIGHUP, signal.SIG_IGN)
os.execv(sys.argv[1], sys.argv[1:])' "$0" --no-ask >"$TMPDIR/out" & program=$!
        for turn in $(seq 100); do
            readlink /proc/[0-9]*/exe | grep -q /SNMPDiscovery$ && break
            sleep 0.05
        done
        kill -HUP $program; wait $program; echo "ended: $?"; cat "$TMPDIR/out" """
        self.assertRegex(self.shell("demo", script).out, rb"ended: 0\n\[\{")

    def test_sighup_while_the_tool_runs(self):
        self.signalled(self.RUNNING, "HUP", "--community-file", self.file("secret"))

    def test_an_old_report_survives_sigterm(self):
        script = """printf old >"$TMPDIR/report"
        "$0" --from "$1" --seconds 60 --output "$TMPDIR/report" & program=$!
        sleep 0.5; kill -TERM $program; wait $program; echo "ended: $?"
        cat "$TMPDIR/report"; ls -A "$TMPDIR" """
        said = self.shell(campus("silent"), script, self.listing(f"{FIRST}.1")).out
        self.assertIn(b"ended: 143\noldreport\n", said)


class Terminal(InventoryTest):
    """With a terminal of script(1)."""

    def test_a_table_and_progress_that_is_gone(self):
        script = 'script -qec "stty cols 60; $0 --from $1 --seconds 1" /dev/null </dev/null'
        topology = campus(n1="hostile-texts", n2="silent")
        listing = self.listing(f"{FIRST}.1", f"{FIRST}.2")
        environment = {"LC_ALL": "C.UTF-8"}
        outcome = self.shell(topology, script, listing, env=dict(**environment, **PATHS))
        said = outcome.out.decode()
        self.assertIn("Asked 1 of 2 agents", said)
        progress, _, table = said.rpartition("\r\x1b[K")
        self.assertNotIn("\n", progress)
        lines = table.split("\r\n")
        self.assertEqual(lines[0].split()[:2], ["ADDRESS", "NAME"])
        self.assertEqual(len(lines), 4)
        self.assertTrue(all(len(line) <= 60 for line in lines), table)
        self.assertFalse([c for c in table if ord(c) < 32 and c not in "\r\n"])
        self.assertNotIn("\u202e", table)

    def test_quiet_and_no_terminal_mean_no_progress(self):
        listing = self.listing(f"{FIRST}.1")
        outcome = self.run_program(campus("silent"), "--from", listing, "--seconds", "1")
        self.assertEqual(outcome.err, b"")
        script = 'script -qec "$0 --quiet --from $1 --seconds 1" /dev/null </dev/null'
        said = self.shell(campus("silent"), script, listing).out
        self.assertTrue(said.startswith(b"ADDRESS"), said)


PATHS = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin"}

if __name__ == "__main__":
    unittest.main()

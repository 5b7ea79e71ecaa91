"""The default persistent folder lies in a directory where everybody can write. Another user
who creates it first must not make the tool read his configuration or write where he
wants."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import harness
from harness import ALONE, office
from tool import EXIT_CODE, ToolTest

from snmplab import api

LASER = {"name": "laser", "addresses": {"office": "192.0.2.9"}}

# The other user: "nobody" nearly everywhere.
OTHER = 65534


def as_other(script, *arguments):
    """Runs `script` of a shell as the other user."""
    done = subprocess.run(
        ["sh", "-euc", script, "sh", *map(str, arguments)],
        user=OTHER,
        group=OTHER,
        extra_groups=(),
        umask=0,
        check=False,
        capture_output=True,
        timeout=30,
    )
    if done.returncode != 0:
        raise AssertionError(done.stderr)


class PersistenceTest(ToolTest):
    """A temporary directory as /tmp is, and a folder of the user's that nobody else can
    write to."""

    def setUp(self):
        super().setUp()
        if os.geteuid() != 0:
            harness.skip("two users are needed, and only root can be another one")
        self.temporary = self.make_directory(0o1777)
        self.folder = self.temporary / "SNMPDiscoveryApp" / "snmp-persist"
        self.users = self.make_directory(0o755)
        self.target = self.users / "target"

    def make_directory(self, mode):
        name = pathlib.Path(tempfile.mkdtemp(prefix="snmpdiscovery-"))
        self.addCleanup(shutil.rmtree, name)
        name.chmod(mode)
        return name

    def run_tool(self, *arguments, **settings):
        """Runs the tool as root; it finds the agent whatever lies in the folder."""
        tool = self.tool
        self.tool = "env"
        # Net-SNMP's search path is the usual one, whatever the caller's is.
        outcome = self.discover(
            office(LASER),
            *("-u", "SNMPCONFPATH", f"TMPDIR={self.temporary}", str(tool)),
            *arguments,
            **settings,
        )
        self.tool = tool
        self.assert_found(outcome, "192.0.2.9")
        return outcome

    def plant_configuration(self):
        """The other user's configuration names a file that he cannot write himself."""
        as_other(
            'mkdir -p "$1"; for name in snmp SNMPDiscovery; do'
            ' echo "logOption f $2" > "$1/$name.conf"; done',
            self.folder,
            self.target,
        )

    def plant_fifo(self):
        """Whoever opens the other user's FIFO for reading waits for ever."""
        as_other('mkdir -p "$1/cert_indexes"; mkfifo "$1/cert_indexes/0"', self.folder)

    def plant_link(self):
        """The other user's link lies where the tool's state is saved."""
        as_other(
            'mkdir -p "$1"; ln -s "$2" "$1/SNMPDiscovery.conf"',
            self.folder,
            self.target,
        )


class Foreign(PersistenceTest):
    """The other user was first."""

    def test_configuration_is_not_read(self):
        self.plant_configuration()
        outcome = self.run_tool()
        self.assertFalse(self.target.exists())
        self.assertNotIn(b"SNMPDiscoveryApp", outcome.err)

    def test_link_is_not_followed(self):
        self.plant_link()
        self.target.write_text("as it was\n", encoding="ascii")
        self.run_tool()
        self.assertEqual(self.target.read_text("ascii"), "as it was\n")

    def test_fifo_is_not_waited_for(self):
        self.plant_fifo()
        self.run_tool()

    def test_link_instead_of_the_folder_is_not_followed(self):
        as_other('ln -s "$2" "$1"', self.folder.parent, self.users)
        self.run_tool()
        self.assertEqual(list(self.users.iterdir()), [])

    def test_link_to_a_folder_that_could_be_made_is_not_followed(self):
        as_other('ln -s "$2" "$1"', self.folder.parent, self.users / "absent")
        self.run_tool()
        self.assertEqual(list(self.users.iterdir()), [])

    def test_half_of_the_folder_is_not_completed(self):
        as_other('mkdir "$1"', self.folder.parent)
        self.run_tool()
        self.assertEqual(list(self.folder.parent.iterdir()), [])

    def test_half_of_the_folder_closed_to_others_is_not_completed(self):
        as_other('mkdir -m 700 "$1"', self.folder.parent)
        self.run_tool()
        self.assertEqual(list(self.folder.parent.iterdir()), [])

    def test_file_instead_of_the_folder_stays_as_it_is(self):
        as_other('echo "as it was" > "$1"', self.folder.parent)
        self.run_tool()
        self.assertEqual(self.folder.parent.read_text("ascii"), "as it was\n")

    def test_folder_of_the_user_open_to_others_is_not_used(self):
        self.folder.mkdir(parents=True)
        self.folder.parent.chmod(0o777)
        self.folder.chmod(0o777)
        self.plant_configuration()
        self.run_tool()
        self.assertFalse(self.target.exists())

    def test_the_traps_do_work_where_the_user_walks_into_them(self):
        # Control: the other cases would notice a trap that works. A folder that the user
        # names is used as it is.
        self.plant_configuration()
        self.run_tool(f"--SNMPPersistPath={self.folder}")
        self.assertTrue(self.target.exists())

    def test_the_fifo_does_stop_the_user_who_walks_into_it(self):
        self.plant_fifo()
        with self.assertRaises(subprocess.TimeoutExpired):
            self.run_tool(f"--SNMPPersistPath={self.folder}", timeout=15)


class Race(PersistenceTest):
    """The other user waits until the tool has begun, and then puts a prepared tree into the
    place of the folder: see slip_in.py."""

    def test_nobody_slips_in(self):
        script = pathlib.Path(__file__).with_name("slip_in.py")
        command = [sys.executable, "-B", str(script), str(self.tool), str(self.tool.parent / "mibs")]
        outcome = api.run_in_lab(ALONE, [*command, str(OTHER)], timeout=140)
        self.assertEqual(outcome.code, 0, outcome.err)
        tries = json.loads(outcome.out)
        self.assertGreaterEqual(len(tries), 50)
        for each in tries:
            with self.subTest(trap=each["trap"], trigger=each["trigger"]):
                self.assertTrue(each["ended"], each)
                self.assertEqual((each["code"], each["out"]), (EXIT_CODE, "[]"), each)
                self.assertFalse(each["touched"], each)
                # The tool checks a tree that was there first; a later one found the place taken.
                if each["slipped"]:
                    self.assertNotIn("SNMPDiscoveryApp", each["err"], each)
        # Control: an early strike succeeds, so the others failed because of the tool.
        self.assertTrue(any(each["slipped"] for each in tries if each["trigger"] == 0))


class Own(PersistenceTest):
    def test_is_made_closed_to_others_and_keeps_the_state(self):
        outcome = self.run_tool()
        for made in (self.folder.parent, self.folder):
            self.assertEqual(made.stat().st_mode & 0o7777, 0o700)
        self.assertIn(b"Created directory: " + bytes(self.folder) + b"\n", outcome.err)
        self.assertEqual(self.boots(), 1)
        self.run_tool()
        self.assertEqual(self.boots(), 2)

    def boots(self):
        """How often Net-SNMP says that its engine was started."""
        lines = (self.folder / "SNMPDiscovery.conf").read_text("ascii").splitlines()
        return [int(l.split()[1]) for l in lines if l.startswith("engineBoots ")].pop()

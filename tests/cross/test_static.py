"""The static executables for Linux that scripts/cross makes. Those for this machine's processor run
in the lab, also in a root that holds nothing but them and a shell; others run under qemu-user.

SNMPDISCOVERY_CROSS_BUILD names their build folder, SNMPDISCOVERY_CROSS_FOLDER what is delivered."""

import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import unittest.mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "app"))

import bills  # noqa: E402
import hardening  # noqa: E402
import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

PROGRAMS = ("SNMPDiscovery", "snmp-inventory")

# In the lab's mount namespace: the folder $1 becomes the root, and the rest is the command. The
# shell is the only other program there.
ENTER = """
set -e
root=$(mktemp -d)
mount -t tmpfs tmpfs "$root"
mkdir "$root/proc" "$root/tmp" "$root/dev"
cp -R "$1" "$root/tool"
cp "$2" "$root/sh"
mount -t proc proc "$root/proc"
shift 2
exec env -i PATH="$PATH" TMPDIR=/tmp chroot "$root" /sh -c "$@"
"""


def folder(variable):
    """What the environment names. A missing one is a failure and no skip."""
    path = os.environ.get(variable, "")
    if not pathlib.Path(path).is_dir() or not path:
        raise AssertionError(f"{variable} names no folder: '{path}'")
    return pathlib.Path(path).resolve()


class Static(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        cls.build = folder("SNMPDISCOVERY_CROSS_BUILD")
        cls.folder = folder("SNMPDISCOVERY_CROSS_FOLDER")
        cls.architecture = re.search(r"-linux-(\w+)-static$", cls.folder.name).group(1)
        cls.native = cls.architecture == platform.machine()

    def started(self, program):
        """The command line that starts `program`: a foreign one through a script, so that whoever
        is given its path need not know."""
        path = self.folder / program
        if self.native:
            return path
        holder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-cross-")
        self.addCleanup(holder.cleanup)
        script = pathlib.Path(holder.name) / program
        emulator = shutil.which(f"qemu-{self.architecture}-static")
        self.assertIsNotNone(emulator, "qemu-user-static is missing: scripts/install-dependencies --cross")
        script.write_text(f'#!/bin/sh\nexec {emulator} "{path}" "$@"\n', encoding="utf-8")
        script.chmod(0o755)
        return script

    def test_nothing_is_loaded_and_all_is_hardened(self):
        for program in PROGRAMS:
            with self.subTest(program):
                delivered = self.folder / program
                self.assertEqual(hardening.missing(delivered, static=self.build / program), [])
                dynamic = hardening.readelf("--dynamic", delivered)
                self.assertNotIn("(NEEDED)", dynamic)
                self.assertNotIn("INTERP", hardening.readelf("--segments", delivered))
        self.assertEqual(hardening.unfortified(self.build / "compile_commands.json"), [])

    def test_no_path_of_the_build_is_inside(self):
        for program in PROGRAMS:
            octets = (self.folder / program).read_bytes()
            self.assertNotIn(str(ROOT).encode(), octets, program)

    def test_the_demo_network(self):
        self.assert_discovers_demo(self.started("SNMPDiscovery"))

    def test_a_community_of_its_own(self):
        topology = shipping.harness.office(
            {"name": "a", "addresses": {"office": "192.0.2.9"}, "community": "secret"},
            {"name": "b", "addresses": {"office": "192.0.2.10"}},
        )
        tool = self.started("SNMPDiscovery")
        outcome = self.in_lab(topology, tool, "--Community=secret", code=64)
        self.assertEqual(outcome.out, shipping.tool.document("192.0.2.9"), outcome.err)

    def test_the_inventory_names_the_agents(self):
        command = [self.started("snmp-inventory"), "--tool", self.started("SNMPDiscovery")]
        outcome = self.in_lab("demo", *command, "--format", "csv")
        for address in shipping.DEMO:
            self.assertIn(address.encode(), outcome.out)

    def test_modules_documents_and_licences_are_there(self):
        modules = {path.name: path.read_bytes() for path in (ROOT / "mibs").glob("*.txt")}
        carried = {p.name: p.read_bytes() for p in (self.folder / "mibs").iterdir()}
        self.assertEqual(carried, modules)
        for name in ("README.md", "LICENSE", "SNMPDiscovery.1"):
            self.assertTrue((self.folder / "doc" / name).is_file(), name)
        listed = [
            line.split()
            for line in (self.folder / "licences/LIBRARIES").read_text().splitlines()
        ]
        packages = {words[1] for words in listed}
        self.assertLessEqual({"poco", "net-snmp", "openssl", "musl", "libc++", "CLI11"}, packages)
        for words in listed:
            self.assertEqual(words[0], "-")
            self.assertRegex(words[2], r"^\d+\.\d+")
        for name in ("poco", "net-snmp", "openssl", "musl", "libc++", "CLI11"):
            self.assertTrue((self.folder / f"licences/{name}.txt").is_file(), name)

    def test_its_sum_and_its_bill_of_materials(self):
        archive = self.folder.with_name(f"{self.folder.name}.tar.gz")
        with unittest.mock.patch.dict(os.environ, SNMPDISCOVERY_BUILD=str(self.build)):
            bill = bills.check(self, [archive])[archive.name]
        listed = (self.folder / "licences/LIBRARIES").read_text("utf-8").splitlines()
        self.assertEqual(bills.libraries(bill), {tuple(each.split()[1:3]) for each in listed})

    def test_a_root_with_nothing_but_a_shell(self):
        if os.geteuid() != 0:
            shipping.harness.skip("chroot needs root")
        if not self.native:
            shipping.harness.skip(f"the emulator of {self.architecture} is no part of such a root")
        shell = shutil.which("busybox")
        self.assertIsNotNone(shell, "busybox-static is missing: scripts/install-dependencies --cross")
        self.assertIn("statically linked", run("file", "-L", shell))
        enter = ["sh", "-c", ENTER, "enter", self.folder, shell]
        self.assert_discovers_demo(*enter, "cd / && exec /tool/SNMPDiscovery")


if __name__ == "__main__":
    unittest.main()

"""The packages: what is in them, and Debian's installed on a minimal Debian 12, used in
the lab and removed again."""

import hashlib
import os
import pathlib
import re
import shutil
import unittest

import roots
import shipping
from shipping import ROOT, run

VERSION = re.search(
    r"^    VERSION ([0-9.]+)$", (ROOT / "CMakeLists.txt").read_text("utf-8"), re.MULTILINE
).group(1)

# Of a system with the tool: its files below /usr, as every package lays them out.
LAYOUT = {
    "bin/SNMPDiscovery",
    "bin/snmp-inventory",
    "lib/systemd/system/snmpdiscovery.service",
    "lib/systemd/system/snmpdiscovery.timer",
    "lib/sysusers.d/snmpdiscovery.conf",
    "libexec/SNMPDiscovery/SNMPDiscovery",
    "libexec/SNMPDiscovery/snmp-inventory",
    "share/bash-completion/completions/SNMPDiscovery",
    "share/bash-completion/completions/snmp-inventory",
    *(f"libexec/SNMPDiscovery/mibs/{path.name}" for path in (ROOT / "mibs").glob("*.txt")),
}

# The agents of the lab's demo, by number.
IN_ORDER = ("192.0.2.9", "192.0.2.10", "198.51.100.20", "203.0.113.70")

# All files of the system but those that change with any package.
LIST = (
    "find / -xdev \\( -path /proc -o -path /root -o -path /dev -o -path /mnt -o -path /var/lib/dpkg "
    "-o -path /var/lib/apt -o -path /var/cache -o -path /var/log -o -path /tmp \\) "
    "-prune -o -print | sort"
)

INSTALL = f"""
set -e
export DEBIAN_FRONTEND=noninteractive
apt-get -q -o Acquire::Retries=3 update
# What the package depends on stays, so that the lists show the package alone.
depends=$(dpkg-deb -f /mnt/*.deb Depends | sed 's/([^)]*)//g; s/|[^,]*//g; s/,/ /g')
apt-get -q -y install --no-install-recommends $depends
{LIST} >/root/before
apt-get -q -y install --no-install-recommends /mnt/*.deb
{LIST} >/root/after
"""

REMOVE = f"""
set -e
echo 'Community = changed' >>/etc/snmpdiscovery/SNMPDiscovery.properties
dpkg --remove snmpdiscovery
test -e /etc/snmpdiscovery/SNMPDiscovery.properties
test ! -e /usr/bin/SNMPDiscovery
dpkg --purge snmpdiscovery
{LIST} >/root/purged
"""

AS_NOBODY = 'cd / && exec setpriv --reuid 65534 --regid 65534 --clear-groups "$@"'


class Debian(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        roots.require_root()
        shipping.require("dpkg-buildpackage", "dh", "lintian", "fakeroot")
        cls.output = shipping.work_folder("deb")
        # lintian is part of the script: anything it finds is a failure here.
        run(ROOT / "scripts/package", "--output", cls.output, "deb", timeout=1200)
        (cls.deb,) = cls.output.glob("*.deb")
        cls.written = shipping.work_folder("deb-root")
        cls.root = roots.debian("bookworm")
        cls.outside("sh", "-c", INSTALL, timeout=900)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.written, ignore_errors=True)

    @classmethod
    def outside(cls, *command, **settings):
        """Runs a package manager's work in the root, with the machine's network."""
        line = roots.enter_outside_the_lab(
            cls.root, cls.output, *command, keep=cls.written
        )
        return run(*line, **settings)

    def inside(self, *command, script=AS_NOBODY, **settings):
        """Runs a command of the root as nobody on the host of the lab's demo."""
        line = ["sh", "-c", script, "sh", *command]
        line = roots.enter(self.root, self.output, *line, keep=self.written)
        return self.in_lab("demo", *line, **settings)

    def listed(self, name):
        return set(self.outside("cat", f"/root/{name}").splitlines())

    def test_it_is_used_by_name_and_removed_without_a_trace(self):
        # One test, in the order of an administrator's day.
        outcome = self.inside("SNMPDiscovery", code=64, capture=True)
        self.assertEqual(outcome.out, shipping.DEMO_DOCUMENT, outcome.err)
        self.assertTrue(shipping.asks_for_up_time(outcome))
        outcome = self.inside("snmp-inventory", "--no-ask", "--format", "addresses")
        self.assertEqual(outcome.out.split(), [a.encode() for a in IN_ORDER], outcome.err)
        command = ("env", "SNMP_COMMUNITY=secret", "snmp-inventory", "--format", "addresses")
        self.assertEqual(self.inside(*command).out, b"198.51.100.21\n")

        settings = "/etc/snmpdiscovery/SNMPDiscovery.properties"
        script = f"echo 'Community = secret' >{settings}; {AS_NOBODY}"
        outcome = self.inside("SNMPDiscovery", script=script, code=64)
        self.assertEqual(outcome.out, b'[{"hostname":"198.51.100.21"}]', outcome.err)
        outcome = self.inside("SNMPDiscovery", "-c", "public", code=64)
        self.assertEqual(outcome.out, shipping.DEMO_DOCUMENT, outcome.err)

        new = self.listed("after") - self.listed("before")
        files = {path.removeprefix("/usr/") for path in new if path.startswith("/usr/")}
        self.assertLessEqual(LAYOUT, files)
        # A minimal Debian may leave manual pages out.
        listed = run("dpkg", "-c", self.deb).replace("./usr/", "").split()
        for program in ("SNMPDiscovery", "snmp-inventory"):
            self.assertIn(f"share/man/man1/{program}.1.gz", listed)
        self.assertIn(settings, new)

        self.outside("sh", "-c", REMOVE)
        self.assertEqual(self.listed("purged"), self.listed("before"))

    def test_the_package_describes_itself(self):
        said = run("dpkg-deb", "--field", self.deb)
        self.assertIn(f"Version: {VERSION}\n", said)
        depends = re.search(r"^Depends: (.*)$", said, re.MULTILINE).group(1)
        for library in ("libsnmp40", "libpocofoundation80", "libpoconet80", "libpocoutil80"):
            self.assertIn(library, depends)
        size = self.deb.stat().st_size
        installed = re.search(r"Installed-Size: ([0-9]+)", said).group(1)
        print(f"deb: {size} octets, {installed} kB installed", flush=True)

    def test_every_lintian_override_has_its_reason(self):
        for path in (ROOT / "packaging/debian").rglob("*lintian-overrides"):
            lines = path.read_text("utf-8").splitlines()
            for before, line in zip(["", *lines], lines):
                if line and not line.startswith("#"):
                    self.assertTrue(before.startswith("#"), line)


class Others(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shipping.require("rpm", "rpmbuild", "cpack")
        cls.output = shipping.work_folder("others")
        kinds = ("rpm", "tgz", "source")
        said = run(ROOT / "scripts/package", "--output", cls.output, *kinds)
        made = [pathlib.Path(each) for each in said.splitlines() if each.startswith("/")]
        cls.rpm, cls.tgz, cls.source, cls.formula = made[-4:]

    def test_the_rpm_holds_the_layout_and_asks_for_the_libraries(self):
        files = run("rpm", "-qlp", self.rpm).splitlines()
        self.assertLessEqual({f"/usr/{path}" for path in LAYOUT}, set(files))
        asked = run("rpm", "-qp", "--requires", self.rpm)
        for library in ("libnetsnmp.so", "libPocoNet.so", "libPocoUtil.so"):
            self.assertIn(library, asked)
        self.assertEqual(run("rpm", "-qp", "--qf", "%{VERSION}", self.rpm), VERSION)

    def test_the_archive_holds_the_layout_in_one_folder(self):
        files = run("tar", "-tzf", self.tgz).splitlines()
        inside = {path.partition("/")[2] for path in files}
        self.assertEqual(len({path.partition("/")[0] for path in files}), 1)
        self.assertLessEqual(LAYOUT, inside)
        self.assertFalse({path for path in inside if path.startswith(("include", "lib/lib", "lib/cmake"))})

    def test_the_formula_names_the_source_archive_by_its_sum(self):
        text = self.formula.read_text("utf-8")
        self.assertNotRegex(text, r"@[A-Z0-9]+@")
        found = hashlib.sha256(self.source.read_bytes()).hexdigest()
        self.assertIn(f'sha256 "{found}"', text)
        self.assertIn(f"file://{self.source}", text)
        top = f"snmpdiscovery-{VERSION}/"
        self.assertIn(f"{top}CMakeLists.txt", run("tar", "-tzf", self.source).splitlines())


class Manual(unittest.TestCase):
    def test_the_manual_page_is_clean_and_tells_what_the_help_tells(self):
        shipping.require("mandoc")
        page = shipping.build_folder() / "SNMPDiscovery.1"
        # "unknown xref" would depend on the manual pages of this machine.
        run("mandoc", "-T", "lint", "-W", "warning", page)
        text = run("mandoc", "-T", "ascii", page)
        text = re.sub(r".\x08", "", text)
        options = ("--help", "--Community=", "-c name", "--SNMPPersistPath=path")
        for words in (*options, f"SNMPDiscovery {VERSION}", "EXIT STATUS", "64", "70", "78"):
            self.assertIn(words, text)

    def test_the_page_of_snmp_inventory_is_clean_and_tells_every_option(self):
        shipping.require("mandoc")
        page = shipping.build_folder() / "snmp-inventory.1"
        run("mandoc", "-T", "lint", "-W", "warning", page)
        text = re.sub(r".\x08", "", run("mandoc", "-T", "ascii", page))
        help_text = run(shipping.build_folder() / "snmp-inventory", "--help")
        options = re.findall(r"^ +(?:-h,)?(--[a-z-]+)", help_text, re.MULTILINE)
        self.assertGreater(len(options), 14)
        for words in (*options, "SNMP_COMMUNITY", "securityname", "EXIT STATUS"):
            self.assertIn(words, text)


if __name__ == "__main__":
    unittest.main()

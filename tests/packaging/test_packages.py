"""The packages: what is in them, that they can be made again elsewhere, Debian's installed on a
minimal Debian 12, used in the lab and removed again, and both installed by the playbook."""

import functools
import hashlib
import json
import os
import pathlib
import re
import shutil
import unittest

import bills
import links
import managed
import roots
import shipping
from shipping import ROOT, run

VERSION = re.search(
    r"^    VERSION ([0-9.]+)$", (ROOT / "CMakeLists.txt").read_text("utf-8"), re.MULTILINE
).group(1)

# The system that packages are made on, as their names tell it.
TAG = "".join(
    re.search(rf"^{key}=\"?([^\"\n]*)", pathlib.Path("/etc/os-release").read_text(), re.MULTILINE)[1]
    for key in ("ID", "VERSION_ID")
).replace("debian", "deb")

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
    "share/doc/snmpdiscovery/licences/CLI11.txt",
    *(f"libexec/SNMPDiscovery/mibs/{path.name}" for path in (ROOT / "mibs").glob("*.txt")),
}

HOMEPAGE = "https://example.org/snmpdiscovery"
SETTINGS = dict(
    DEBEMAIL="maintainer@example.org",
    SNMPDISCOVERY_HOMEPAGE=HOMEPAGE,
    SNMPDISCOVERY_URL="https://example.org/snmpdiscovery.tar.gz",
)
KINDS = ("source", "rpm", "tgz", "deb")

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


def package(script, output, *kinds, **settings):
    """Makes packages; returns their paths. lintian is part of the script: anything it
    finds is a failure here."""
    environment = dict(os.environ, **SETTINGS, **settings)
    said = run(script, "--output", output, *kinds, timeout=1100, env=environment)
    return [pathlib.Path(each) for each in said.splitlines() if each.startswith("/")]


@functools.lru_cache(maxsize=None)
def made():
    """Every kind of package, by its kind, and the formula."""
    programs = ("dpkg-buildpackage", "dh", "lintian", "fakeroot", "rpm", "rpmbuild", "cpack")
    shipping.require(*programs)
    output = shipping.work_folder("packages") / "with a blank"
    found = package(ROOT / "scripts/package", output, *KINDS)
    names = [each.name for each in found if output in each.parents]
    by_kind = {
        "source": f"snmpdiscovery-{VERSION}.tar.gz",
        "formula": "snmpdiscovery.rb",
        "rpm": f"snmpdiscovery-{VERSION}-1.{TAG}.{os.uname().machine}.rpm",
        "tgz": f"snmpdiscovery-{VERSION}-{TAG}-{os.uname().machine}.tar.gz",
        "deb": f"snmpdiscovery_{VERSION}~{TAG}u1_{run('dpkg', '--print-architecture').strip()}.deb",
    }
    if names[-len(by_kind):] != list(by_kind.values()):
        raise AssertionError(f"{names} instead of {list(by_kind.values())}")
    return {kind: output / name for kind, name in by_kind.items()}


class Debian(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        roots.require_root()
        cls.deb = made()["deb"]
        cls.output = shipping.work_folder("deb")
        shutil.copy(cls.deb, cls.output)
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
        self.assertIn(f"Version: {VERSION}~{TAG}u1\n", said)
        self.assertIn("Maintainer: The SNMPDiscovery authors <maintainer@example.org>\n", said)
        self.assertIn(f"Homepage: {HOMEPAGE}\n", said)
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


class Playbook(shipping.LabTest):
    """deploy/ansible/install.yml with each kind of package, and discover.yml with what it has
    installed, over SSH."""

    def test_it_installs_the_debian_package(self):
        said = run("dpkg-deb", "--field", made()["deb"], "Depends")
        depends = re.findall(r"([\w.+-]+)(?: \([^)]*\))?(?:, |\n)", said)
        self.assertIn("libsnmp40", depends)
        self.install_and_discover("deb", "python3-apt", *depends)

    def test_it_installs_the_rpm_with_the_dnf_of_debian(self):
        # Debian's own packages of the libraries, and one of RPM that stands for them.
        libraries = ("libpoconet80", "libpocoutil80", "libsnmp40")
        self.install_and_discover("rpm", "dnf", "python3-dnf", "rpm", *libraries, before=self.stand_in)

    def stand_in(self, host, folder):
        """Installs a package with nothing but what the RPM asks of its system."""
        asked = run("rpm", "-qp", "--requires", made()["rpm"]).splitlines()
        provides = [each for each in asked if not each.startswith(("rpmlib(", "config("))]
        self.assertIn("libnetsnmp.so.40()(64bit)", provides)
        settings = dict(Name="stand-in", Version=1, Release=1, License="none", BuildArch="noarch")
        lines = [f"{name}: {value}" for name, value in settings.items()]
        lines += ["Summary: The system's libraries", *(f"Provides: {each}" for each in provides)]
        recipe = folder / "stand-in.spec"
        recipe.write_text("\n".join([*lines, "%description", "%files", ""]), "utf-8")
        run("rpmbuild", "-bb", "--define", f"_topdir {folder}", "--define", f"_rpmdir {folder}", recipe)
        host.outside("rpm", "--install", "/mnt/noarch/stand-in-1-1.noarch.rpm")

    def install_and_discover(self, kind, *packages, before=None):
        roots.require_root()
        folder = shipping.work_folder(f"playbook-{kind}")
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        host = managed.Host(self, folder, *packages)
        if before:
            before(host, folder)
        package = shutil.copy(made()[kind], folder)
        beside = pathlib.Path(f"{package}.sha256")
        beside.write_text("0" * 64 + "  x\n", "utf-8")
        said = host.play("install.yml", file=package, code=2)
        self.assertRegex(said, r"(?s)Compare it with the sum .*fatal: .*changed=0 .*failed=1 ")
        shutil.copy(f"{made()[kind]}.sha256", beside)
        said = host.play("install.yml", file=package)
        self.assertRegex(said, r"managed +: ok=\d+ +changed=1 ")
        said = host.play("install.yml", file=package)
        self.assertRegex(said, r"managed +: ok=\d+ +changed=0 ")
        host.play("discover.yml", output=str(folder), snmpdiscovery_splay=0)
        seen = json.loads((folder / "seen.json").read_text("utf-8"))
        self.assertEqual(seen, {"seen": {each: ["managed"] for each in IN_ORDER}, "failed": []})


class DebianDocuments(unittest.TestCase):
    def test_links_between_the_documents_hold(self):
        folder = shipping.work_folder("deb-contents")
        run("dpkg-deb", "--extract", made()["deb"], folder)
        self.assertEqual(links.broken(folder / "usr/share/doc/snmpdiscovery"), [])


class Others(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.rpm, cls.tgz, cls.source, cls.formula = (
            made()[kind] for kind in ("rpm", "tgz", "source", "formula")
        )

    def test_the_rpm_holds_the_layout_and_asks_for_the_libraries(self):
        files = run("rpm", "-qlp", self.rpm).splitlines()
        self.assertLessEqual({f"/usr/{path}" for path in LAYOUT}, set(files))
        asked = run("rpm", "-qp", "--requires", self.rpm)
        for library in ("libnetsnmp.so", "libPocoNet.so", "libPocoUtil.so"):
            self.assertIn(library, asked)
        self.assertEqual(run("rpm", "-qp", "--qf", "%{VERSION}", self.rpm), VERSION)

    def test_the_rpm_describes_itself_as_debians_package_does(self):
        self.assertEqual(run("rpm", "-qp", "--qf", "%{URL}", self.rpm), HOMEPAGE)
        said = run("dpkg-deb", "--field", made()["deb"], "Description")
        lines = [line.removeprefix(" ") for line in said.splitlines()[1:]]
        text = "\n".join("" if line == "." else line for line in lines)
        self.assertIn("prints their addresses", text)
        self.assertEqual(run("rpm", "-qp", "--qf", "%{DESCRIPTION}", self.rpm), text)

    def test_the_rpm_keeps_the_settings_in_etc_as_debians_package_does(self):
        settings = "/etc/snmpdiscovery/SNMPDiscovery.properties"
        self.assertEqual(run("rpm", "-qp", "--configfiles", self.rpm), f"{settings}\n")
        link = "/usr/libexec/SNMPDiscovery/SNMPDiscovery.properties"
        listed = run("rpm", "-qlvp", self.rpm)
        self.assertRegex(listed, rf"(?m)^l.* {link} -> {settings}$")
        # What the lists of folders and files have in common, the system's own aside.
        deb = run("dpkg-deb", "--contents", made()["deb"])
        self.assertRegex(deb, rf"(?m)^l.* \.{link} -> {settings}$")

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
        self.assertIn(f'url "{SETTINGS["SNMPDISCOVERY_URL"]}"', text)
        self.assertIn(f'homepage "{HOMEPAGE}"', text)
        top = f"snmpdiscovery-{VERSION}/"
        self.assertIn(f"{top}CMakeLists.txt", run("tar", "-tzf", self.source).splitlines())


class Beside(unittest.TestCase):
    def test_every_file_has_its_sum_and_its_bill_of_materials(self):
        files = [path for kind, path in made().items() if kind != "formula"]
        found = bills.check(self, files)
        compiled_in = run("cat", shipping.build_folder() / "compiled-in").split()[1:3]
        for path in files:
            expected = set() if path == made()["source"] else {tuple(compiled_in)}
            self.assertEqual(bills.libraries(found[path.name]), expected, path.name)

    def test_a_bill_that_is_wrong_would_be_refused(self):
        text = pathlib.Path(f"{made()['rpm']}.cdx.json").read_text("utf-8")
        wrong = shipping.work_folder("wrong-bill") / "wrong.cdx.json"
        wrong.write_text(text.replace('"library"', '"book"'), "utf-8")
        self.assertIn("'book' is not one of", bills.refused(wrong))


class Elsewhere(unittest.TestCase):
    """The unpacked source archive, in another folder and without git."""

    @classmethod
    def setUpClass(cls):
        cls.folder = shipping.work_folder("elsewhere")
        run("tar", "-C", cls.folder, "-xzf", made()["source"])
        cls.script = cls.folder / f"snmpdiscovery-{VERSION}/scripts/package"
        cls.temporary = cls.folder / "temporary"
        cls.temporary.mkdir()

    def settings(self, *stand_ins):
        """No repository and no git, temporary files elsewhere, every object compiled; some
        programs are replaced by ones that fail."""
        binaries = shipping.work_folder("elsewhere-bin")
        for name in ("git", *stand_ins):
            (binaries / name).write_text("#!/bin/sh\nexit 1\n", "utf-8")
            (binaries / name).chmod(0o755)
        path = f"{binaries}:{os.environ['PATH']}"
        return {"PATH": path, "TMPDIR": str(self.temporary), "CCACHE_DISABLE": "1"}

    def test_links_between_the_documents_hold(self):
        self.assertEqual(links.broken(self.script.parents[1]), [])

    def test_the_same_octets_come_out(self):
        output = self.folder / f"snmpdiscovery-{VERSION}/in the sources"
        package(self.script, output, *KINDS, **self.settings())
        first = {path.name: path for path in made()["deb"].parent.iterdir()}
        again = {path.name: path for path in output.iterdir()}
        self.assertEqual(set(again), set(first))
        for name, path in again.items():
            self.assertEqual(path.read_bytes(), first[name].read_bytes(), name)

    def test_nothing_is_left_behind_after_a_failure(self):
        before = sorted(self.folder.rglob("*"))
        for kind, program in {"deb": "lintian", "rpm": "rpmbuild", "tgz": "gzip"}.items():
            with self.subTest(kind):
                # The compiler is not wanted here either: what fails is the last program.
                settings = self.settings(program, "dpkg-buildpackage", "cmake")
                with self.assertRaises(AssertionError):
                    package(self.script, self.folder / "new/output", kind, **settings)
                self.assertEqual(sorted(self.folder.rglob("*")), before)


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
        # One cause of 78, in the same words in both places.
        for page in (text, (ROOT / "README.md").read_text("utf-8")):
            self.assertIn("configuration file cannot be read or parsed", " ".join(page.split()))

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

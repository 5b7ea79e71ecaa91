"""The bundle: what is in it, that it comes out the same elsewhere, and that it runs, moved, on minimal
Debian systems that have neither POCO nor Net-SNMP, with nothing of either from anywhere else."""

import hashlib
import os
import pathlib
import re
import tarfile
import unittest

import bills
import links
import roots
import shipping
from shipping import ROOT, run

# What may come from the system: the C and C++ runtime and the loader.
RUNTIME = re.compile(
    r"(lib(c|m|dl|rt|pthread|resolv|gcc_s|stdc\+\+)\.so\.[0-9]+|ld-linux.*\.so\.[0-9]+"
    r"|linux-vdso.*)$"
)

# Unpacks the bundle to a folder with a blank in its name, makes sure that the system has
# nothing of the kind, and runs the tool as nobody with the loader's trace on.
TRY = r"""
set -e
for place in /usr/lib/*/libPoco* /usr/lib/*/libnetsnmp* /etc/snmp /usr/share/snmp; do
    if [ -e "$place" ]; then echo "$place is there" >&2; exit 1; fi
done
mkdir "/opt/some where"
tar -C "/opt/some where" -xzf /mnt/*.tar.gz
cd /
set -- "/opt/some where"/SNMPDiscovery-*/SNMPDiscovery
status=0
setpriv --reuid 65534 --regid 65534 --clear-groups sh -c \
    'LD_DEBUG=libs LD_DEBUG_OUTPUT=/tmp/trace exec "$1"' sh "$1" || status=$?
sed 's/^/trace: /' /tmp/trace.* >&2
exit $status
"""


def loaded(err):
    """The libraries that a loader's trace says were initialised, by name."""
    paths = re.findall(r"calling init: (/.*)$", err.decode(), re.MULTILINE)
    return {pathlib.Path(path).name: path for path in paths}


class Bundle(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        shipping.require("readelf", "gzip", "tar")
        cls.build = shipping.build_folder()
        cls.dist = shipping.work_folder("bundle dist")
        said = run(ROOT / "scripts/bundle", "--build", cls.build, "--output", cls.dist)
        cls.archive = pathlib.Path(said.splitlines()[-1])
        cls.folder = cls.archive.parent / cls.archive.name[: -len(".tar.gz")]
        cls.libraries = {
            line.split()[0]: line.split()[1:3]
            for line in (cls.folder / "licences/LIBRARIES").read_text().splitlines()
        }

    def assert_ran_from(self, place, outcome):
        """The document is right, and each library came from the folder `place`, or is of
        the C and C++ runtime."""
        self.assertEqual(outcome.out, shipping.DEMO_DOCUMENT, outcome.err)
        self.assertTrue(shipping.asks_for_up_time(outcome))
        found = loaded(outcome.err)
        for name, path in found.items():
            if not RUNTIME.match(name):
                self.assertTrue(path.startswith(place), path)
        self.assertLessEqual(set(self.libraries), set(found))
        for line in outcome.err.decode().splitlines():
            self.assertRegex(line, r"^(trace: |Created directory: )")

    def test_a_minimal_debian_12(self):
        self.try_on("bookworm")

    def test_a_minimal_debian_13(self):
        self.try_on("trixie")

    def try_on(self, suite):
        roots.require_root()
        command = roots.enter(roots.debian(suite), self.dist, "sh", "-c", TRY)
        outcome = self.in_lab("demo", *command, code=64, capture=True)
        self.assert_ran_from(f"/opt/some where/{self.folder.name}/", outcome)

    def test_libraries_of_the_system_do_not_come_in_between(self):
        # This machine has them all; even told where, the loader prefers the bundle's.
        place = re.search(r"libPocoNet\S* => (/\S+)/", run("ldd", self.build / "SNMPDiscovery"))
        script = 'LD_LIBRARY_PATH=$1 LD_DEBUG=libs LD_DEBUG_OUTPUT=$TMPDIR/t "$2" || s=$?'
        script += '; sed "s/^/trace: /" "$TMPDIR"/t.* >&2; exit $s'
        program = self.folder / "SNMPDiscovery"
        command = ["sh", "-c", script, "sh", place.group(1), program]
        outcome = self.in_lab("demo", *command, code=64, capture=True)
        self.assert_ran_from(f"{self.folder}/", outcome)

    def test_its_launcher_can_be_linked_to(self):
        link = shipping.work_folder("bundle-link") / "SNMPDiscovery"
        link.symlink_to(self.folder / "bin/SNMPDiscovery")
        self.assert_discovers_demo(link)

    def test_snmp_inventory_uses_the_tool_and_the_libraries_beside_it(self):
        self.assert_takes_stock(self.folder / "bin/snmp-inventory")
        said = run("ldd", self.folder / "snmp-inventory")
        for name, path in re.findall(r"(\S+) => (/.*) \(", said):
            if not RUNTIME.match(name):
                self.assertTrue(path.startswith(f"{self.folder}/"), path)

    def test_all_that_is_needed_is_carried_and_no_runtime(self):
        programs = [self.folder / name for name in ("SNMPDiscovery", "snmp-inventory")]
        programs += [*self.folder.glob("*.so*")]
        self.assertGreaterEqual(len(programs), 7)
        needed = set()
        for program in programs:
            listed = run("readelf", "-d", program)
            needed.update(re.findall(r"\(NEEDED\).*\[(.*)\]", listed))
        for name in needed:
            carried = (self.folder / name).exists()
            self.assertNotEqual(carried, bool(RUNTIME.match(name)), name)
        self.assertEqual({n for n in needed if not RUNTIME.match(n)}, set(self.libraries))

    def test_modules_documents_and_licences_are_there(self):
        modules = {path.name: path.read_bytes() for path in (ROOT / "mibs").glob("*.txt")}
        carried = {p.name: p.read_bytes() for p in (self.folder / "mibs").iterdir()}
        self.assertEqual(carried, modules)
        for name in ("README.md", "LICENSE", "SNMPDiscovery.1", "snmp-inventory.1"):
            self.assertTrue((self.folder / "doc" / name).is_file(), name)
        for package, version in self.libraries.values():
            self.assertTrue((self.folder / f"licences/{package}.txt").is_file(), package)
            self.assertTrue(version)
        self.assertTrue((self.folder / "licences/Apache-2.0").is_file())  # of OpenSSL

    def test_its_name_and_a_file_tell_the_oldest_runtime(self):
        programs = [self.folder / name for name in ("SNMPDiscovery", "snmp-inventory")]
        programs += [*self.folder.glob("*.so*")]
        versions = {}
        for program in programs:
            listed = run("readelf", "-VW", program)
            for interface, version in re.findall(r"Name: (\w+?)_([0-9.]+)  Flags", listed):
                if interface in ("GLIBC", "GLIBCXX", "CXXABI", "GCC"):
                    number = tuple(int(part) for part in version.split("."))
                    versions.setdefault(interface, {}).setdefault(number, set()).add(program.name)
        text = (self.folder / "REQUIREMENTS").read_text("utf-8")
        found = {}
        for line in text.splitlines():
            interface, version, *files = line.replace(":", "").split()
            found[interface] = {tuple(int(part) for part in version.split(".")): set(files)}
        newest = {i: {max(names): names[max(names)]} for i, names in versions.items()}
        self.assertEqual(found, newest)
        oldest = ".".join(str(part) for part in max(versions["GLIBC"]))
        self.assertTrue(self.folder.name.endswith(f"-glibc{oldest}"), self.folder.name)
        beside = pathlib.Path(f"{self.archive}.requirements")
        self.assertEqual(beside.read_text("utf-8"), text)

    def test_links_between_the_documents_hold(self):
        self.assertEqual(links.broken(self.folder / "doc"), [])

    def test_its_sum_and_its_bill_of_materials(self):
        bill = bills.check(self, [self.archive])[self.archive.name]
        packages = {tuple(each) for each in self.libraries.values()}
        compiled_in = (self.build / "compiled-in").read_text("utf-8").split()[1:3]
        self.assertEqual(bills.libraries(bill), packages | {tuple(compiled_in)})
        files = {
            each["name"]: each["hashes"][0]["content"]
            for library in bill["components"]
            for each in library.get("components", [])
        }
        self.assertEqual(files, {
            name: hashlib.sha256((self.folder / name).read_bytes()).hexdigest()
            for name in self.libraries
        })
        for library in bill["components"]:
            if library["name"] in {name for name, _ in packages}:
                self.assertRegex(library["purl"], r"^pkg:deb/\w+/[^?]+\?distro=\w+-[\w.]+$")

    def test_nothing_is_left_behind_after_a_failure(self):
        folder = shipping.work_folder("bundle-failure")
        (folder / "readelf").write_text("#!/bin/sh\nexit 1\n", "utf-8")
        (folder / "readelf").chmod(0o755)
        temporary = folder / "temporary"
        temporary.mkdir()
        settings = dict(os.environ, PATH=f"{folder}:{os.environ['PATH']}", TMPDIR=str(temporary))
        words = (ROOT / "scripts/bundle", "--build", self.build, "--output", folder / "new")
        run(*words, code=1, env=settings)
        self.assertEqual(list(temporary.iterdir()), [])
        self.assertFalse((folder / "new").exists())

    def test_the_archive_holds_the_folder_and_can_be_made_again(self):
        with tarfile.open(self.archive) as archive:
            members = archive.getmembers()
        top = {pathlib.PurePath(each.name).parts[0] for each in members}
        self.assertEqual(top, {self.folder.name})
        self.assertEqual({each.uid for each in members}, {0})
        before = hashlib.sha256(self.archive.read_bytes()).hexdigest()
        again = shipping.work_folder("bundle-again")
        said = run(ROOT / "scripts/bundle", "--build", self.build, "--output", again)
        after = pathlib.Path(said.splitlines()[-1]).read_bytes()
        self.assertEqual(hashlib.sha256(after).hexdigest(), before)

    def test_the_same_octets_come_out_elsewhere(self):
        # In another folder, without git, with every object compiled.
        folder = shipping.work_folder("bundle elsewhere")
        said = run(ROOT / "scripts/package", "--output", folder, "source")
        source = pathlib.Path(next(each for each in said.splitlines() if each.endswith(".tar.gz")))
        run("tar", "-C", folder, "-xzf", source)
        script = folder / source.name.removesuffix(".tar.gz") / "scripts/bundle"
        settings = dict(os.environ, CCACHE_DISABLE="1")
        said = run(script, "--output", folder / "dist", timeout=1100, env=settings)
        again = pathlib.Path(said.splitlines()[-1])
        self.assertEqual(again.name, self.archive.name)
        self.assertEqual(again.read_bytes(), self.archive.read_bytes())

    def test_sizes_are_told(self):
        size = sum(os.lstat(p).st_size for p in self.folder.rglob("*") if p.is_file())
        print(f"bundle: {size} octets, {self.archive.stat().st_size} packed", flush=True)
        self.assertLess(size, 20_000_000)


if __name__ == "__main__":
    unittest.main()

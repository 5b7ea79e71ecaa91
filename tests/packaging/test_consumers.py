"""The libraries as installed, used by the two projects under docs/examples and nothing
of this source tree: static and shared, through CMake and through pkg-config."""

import os
import pathlib
import re
import shutil
import unittest

import shipping
from shipping import ROOT, run

EXAMPLES = ROOT / "docs/examples"

DOCUMENT = """\
[{"contact":null,"duplex":true,"hostname":"192.0.2.9","pages":21500}]
192.0.2.9 has printed 21500 pages; location: unknown
"""

COLUMN = "1.1\ttoner\n1.2\topc\n1.3\twasteToner\n"


class Consumers(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        """Installs a static and a shared build side by side, moves the tree, and copies
        the examples, so that no path of this source tree can help."""
        shipping.require("cmake", "ninja", "pkg-config", "ldd")
        build = shipping.build_folder()
        shared = shipping.work_folder("shared", empty=False)
        run(
            *("cmake", "-S", ROOT, "-B", shared, "-G", "Ninja", "-Wno-dev"),
            *("-DBUILD_SHARED_LIBS=ON", "-DBUILD_TESTING=OFF"),
            "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
        )
        run("cmake", "--build", shared, "--parallel", "2", timeout=1200)
        folder = shipping.work_folder("consumers")
        first = folder / "first"
        shipping.install(first, "development", "libraries", build=build)
        shipping.install(first, "development", "libraries", "runtime", build=shared)
        cls.folder = folder
        cls.prefix = folder / "a prefix"
        first.rename(cls.prefix)
        cls.sources = folder / "sources"
        shutil.copytree(EXAMPLES, cls.sources)
        cls.programs = {}
        for kind, setting in (("static", "OFF"), ("shared", "ON")):
            for name in ("walk", "document"):
                cls.programs[kind, name] = cls.build(
                    name, kind, f"-DSNMPDiscovery_SHARED_LIBS={setting}"
                )

    @classmethod
    def configure(cls, name, target, *options, code=0):
        return run(
            *("cmake", "-S", cls.sources / name, "-B", target, "-G", "Ninja"),
            *(f"-DCMAKE_PREFIX_PATH={cls.prefix}", "-DCMAKE_BUILD_TYPE=Release"),
            "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror",
            *options,
            code=code,
        )

    @classmethod
    def build(cls, name, kind, *options):
        target = cls.folder / f"{name}-{kind}"
        cls.configure(name, target, *options)
        run("cmake", "--build", target)
        return target / name

    def own_libraries(self, program):
        line = r"libsnmpdiscovery-(\w+)\.so\.[0-9.]+ => (\S.*) \("
        return re.findall(line, run("ldd", program))

    def test_the_linked_library_is_of_the_kind_asked_for(self):
        for (kind, name), program in self.programs.items():
            with self.subTest(kind=kind, name=name):
                own = {"walk": "snmp", "document": "value"}[name]
                file = f"lib*/**/libsnmpdiscovery-{own}.so.*.*.*"
                place = str(next(self.prefix.glob(file)).parent)
                loaded = self.own_libraries(program)
                found = [(lib, str(pathlib.Path(path).parent)) for lib, path in loaded]
                self.assertEqual(found, [(own, place)] if kind == "shared" else [])

    def test_a_document_is_built_and_read_back(self):
        for kind in ("static", "shared"):
            self.assertEqual(run(self.programs[kind, "document"]), DOCUMENT)

    def test_a_column_of_a_printer_is_walked(self):
        for kind in ("static", "shared"):
            with self.subTest(kind):
                outcome = self.walk(kind, "192.0.2.9")
                self.assertEqual(outcome.out.decode(), COLUMN, outcome.err)

    def test_an_agent_that_is_no_printer_has_nothing_there(self):
        self.assertEqual(self.walk("static", "192.0.2.10").out, b"")

    def test_who_does_not_answer_is_told_of(self):
        outcome = self.walk("static", "192.0.2.77", code=1)
        self.assertEqual(outcome.err.splitlines()[-1], b"192.0.2.77 does not answer")

    def walk(self, kind, address, code=0):
        script = 'mibs=$1; program=$2; shift 2; exec "$program" "$mibs" "$TMPDIR/persistent" "$@"'
        command = ["sh", "-c", script, "sh", ROOT / "mibs", self.programs[kind, "walk"]]
        return self.in_lab("printer", *command, address, "prtMarkerSuppliesType", code=code)

    def test_pkg_config_is_enough(self):
        configs = next(self.prefix.glob("lib*/**/pkgconfig"))
        settings = dict(os.environ, PKG_CONFIG_PATH=str(configs))
        for name, package in (("walk", "snmp"), ("document", "value")):
            flags = "pkg-config --cflags --libs snmpdiscovery-" + package
            program = self.folder / f"{name}-pkg-config"
            # pkg-config escapes the blank in the prefix for the shell.
            script = f'eval "g++ -std=c++17 -Wall -Werror $1/main.cpp -o $2 $({flags})"'
            source = self.sources / name
            run(*("sh", "-c", script, "sh", source, program), env=settings, cwd=self.folder)
            libraries = dict(os.environ, LD_LIBRARY_PATH=str(configs.parent))
            if name == "document":
                self.assertEqual(run(program, env=libraries), DOCUMENT)
            else:
                self.assertIn("usage: walk", run(program, env=libraries, code=2))
            version = run("pkg-config", "--modversion", f"snmpdiscovery-{package}", env=settings)
            self.assertEqual(version.strip(), self.version())

    def version(self):
        text = (ROOT / "CMakeLists.txt").read_text("utf-8")
        return re.search(r"^    VERSION ([0-9.]+)$", text, re.MULTILINE).group(1)

    def test_every_header_stands_alone(self):
        configs = next(self.prefix.glob("lib*/**/pkgconfig"))
        settings = dict(os.environ, PKG_CONFIG_PATH=str(configs))
        headers = sorted((self.prefix / "include/SNMPDiscovery").glob("*/*.h"))
        self.assertGreaterEqual(len(headers), 8)
        text = "".join(f'#include "{h.parent.name}/{h.name}"\n' for h in headers)
        for header in headers:
            alone = self.folder / "alone.cpp"
            first = f'#include "{header.parent.name}/{header.name}"\n'
            alone.write_text(first + text, "utf-8")
            script = (
                'eval "g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only '
                'alone.cpp $(pkg-config --cflags snmpdiscovery-snmp)"'
            )
            run("sh", "-c", script, env=settings, cwd=self.folder)

    def test_nothing_installed_names_the_source_or_the_build(self):
        texts = [
            path
            for path in self.prefix.rglob("*")
            if path.suffix in (".cmake", ".pc", ".h") and path.is_file()
        ]
        self.assertGreater(len(texts), 10)
        for path in texts:
            text = path.read_text("utf-8")
            self.assertNotIn(str(ROOT), text, path)
            self.assertNotIn(str(self.folder / "first"), text, path)

    def test_the_value_library_needs_neither_poco_nor_net_snmp(self):
        without = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("Poco", "NetSNMP")]
        self.configure("document", self.folder / "alone", *without)
        said = self.configure("walk", self.folder / "lacking", *without, code=1)
        self.assertIn("Poco", said)
        said = self.configure("walk", self.folder / "lacking-too", without[1], code=1)
        self.assertIn("The component snmp needs Net-SNMP 5.9 or later", said)

    def test_wrong_requests_are_refused(self):
        cases = {
            "99.0 REQUIRED CONFIG": 'compatible with requested version "99.0"',
            "REQUIRED CONFIG COMPONENTS app": "There is no component app",
        }
        for number, (words, reason) in enumerate(cases.items()):
            source = self.sources / f"wrong-{number}"
            source.mkdir()
            (source / "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.16)\nproject(wrong CXX)\n"
                f"find_package(SNMPDiscovery {words})\n",
                "utf-8",
            )
            said = self.configure(source.name, self.folder / source.name, code=1)
            self.assertIn(reason, said)

    def test_a_kind_that_is_not_installed_is_named(self):
        prefix = self.folder / "static alone"
        shipping.install(prefix, "development")
        options = (f"-DCMAKE_PREFIX_PATH={prefix}", "-DSNMPDiscovery_SHARED_LIBS=ON")
        said = self.configure("document", self.folder / "no-shared", *options, code=1)
        said = " ".join(said.split())
        self.assertIn("The value library is not installed shared", said)
        self.assertIn("SNMPDiscovery_SHARED_LIBS=ON", said)

    def test_the_tool_of_a_shared_build_finds_its_libraries(self):
        self.assert_discovers_demo(self.prefix / "bin/SNMPDiscovery")


if __name__ == "__main__":
    unittest.main()

"""What scripts/cross makes for macOS. It cannot run here, so its Mach-O files are examined with
llvm-objdump: what they load and from where, the oldest macOS, the signature.

SNMPDISCOVERY_CROSS_FOLDER names what is delivered."""

import hashlib
import os
import pathlib
import re
import shutil
import struct
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

from shipping import ROOT, run  # noqa: E402

OLDEST = "11.0"
SYSTEM = re.compile(r"^/usr/lib/lib[\w.+-]+\.dylib$|^/System/Library/Frameworks/")
MAGIC = bytes.fromhex("cffaedfe")
ADHOC = 0x2  # of a code directory's flags
SHA256 = 2  # of its kinds of hashes


def folder(variable):
    """What the environment names. A missing one is a failure and no skip."""
    path = os.environ.get(variable, "")
    if not path or not pathlib.Path(path).is_dir():
        raise AssertionError(f"{variable} names no folder: '{path}'")
    return pathlib.Path(path).resolve()


def objdump(*arguments):
    """What llvm-objdump says of a file."""
    program = shutil.which("llvm-objdump")
    if program is None:
        raise AssertionError("llvm-objdump is missing: scripts/install-dependencies --cross")
    return run(program, "--macho", *arguments)


def commands(file):
    """The load commands as pairs of name and text."""
    said = objdump("--private-headers", file)
    parts = re.split(r"^Load command \d+\n", said, flags=re.MULTILINE)[1:]
    return [(re.search(r"\bcmd (\w+)", part).group(1), part) for part in parts]


def loaded(file):
    """The paths of the libraries that a file loads."""
    return [
        re.search(r"\bname (.+) \(offset", text).group(1)
        for name, text in commands(file)
        if re.match(r"LC_(LOAD|REEXPORT|LAZY_LOAD|LOAD_WEAK|LOAD_UPWARD)_DYLIB$", name)
    ]


def is_mach_o(path):
    with path.open("rb") as opened:
        return opened.read(4) == MAGIC


def code_directory(file):
    """Where the file's signature and the code directory in it begin, and the directory's first fields."""
    found = [text for name, text in commands(file) if name == "LC_CODE_SIGNATURE"]
    if not found:
        raise AssertionError("no signature")
    offset = int(re.search(r"\bdataoff (\d+)", found[0]).group(1))
    octets = file.read_bytes()
    magic, _, count = struct.unpack_from(">III", octets, offset)
    assert magic == 0xFADE0CC0, hex(magic)  # an embedded signature
    for index in range(count):
        kind, start = struct.unpack_from(">II", octets, offset + 12 + 8 * index)
        if kind == 0:
            return offset, offset + start, struct.unpack_from(">9I4B", octets, offset + start)
    raise AssertionError("no code directory")


def faults_of_signature(file):
    """Why arm64's macOS would not start the file."""
    octets = file.read_bytes()
    signature, directory, fields = code_directory(file)
    magic, _, _, flags, hashes, _, _, count, limit, size, kind, _, page = fields
    assert (magic, size, kind) == (0xFADE0C02, 32, SHA256), fields
    faults = []
    if not flags & ADHOC:
        faults.append("not ad hoc")
    if limit != signature:
        faults.append("does not cover all before it")
    starts = range(0, limit, 1 << page)
    if count != len(starts):
        faults.append(f"{count} hashes of {len(starts)} pages")
    for index, start in enumerate(starts):
        place = directory + hashes + index * size
        found = hashlib.sha256(octets[start:min(start + (1 << page), limit)]).digest()
        if found != octets[place:place + size]:
            faults.append(f"page {index} was changed after signing")
    return faults


class MacOS(unittest.TestCase):
    def setUp(self):
        self.folder = folder("SNMPDISCOVERY_CROSS_FOLDER")
        self.processor = self.folder.name.rpartition("-")[2]
        self.programs = [self.folder / "SNMPDiscovery", self.folder / "snmp-inventory"]
        self.libraries = sorted(self.folder.glob("*.dylib"))
        self.files = [*self.programs, *self.libraries]

    def test_the_tree_is_laid_out_as_the_bundle(self):
        found = {path for path in self.folder.rglob("*") if path.is_file() and is_mach_o(path)}
        self.assertEqual(found, set(self.files))
        names = " ".join(path.name for path in self.libraries)
        for library in ("libPocoFoundation", "libPocoNet", "libPocoUtil", "libnetsnmp", "libcrypto"):
            self.assertIn(library + ".", names)
        modules = {path.name: path.read_bytes() for path in (ROOT / "mibs").glob("*.txt")}
        self.assertEqual({p.name: p.read_bytes() for p in (self.folder / "mibs").iterdir()}, modules)
        listed = (self.folder / "licences/LIBRARIES").read_text("utf-8").splitlines()
        self.assertEqual({line.split()[0] for line in listed} - {"-"}, {p.name for p in self.libraries})

    def test_each_is_for_the_processor_and_the_oldest_macos(self):
        for file in self.files:
            with self.subTest(file.name):
                self.assertIn(f" {self.processor.upper()} ", objdump("--private-header", file))
                versions = [text for name, text in commands(file) if name == "LC_BUILD_VERSION"]
                self.assertEqual(len(versions), 1)
                self.assertRegex(versions[0], r"platform (macos|1)\b")
                self.assertRegex(versions[0], rf"minos {re.escape(OLDEST)}\b")

    def test_libraries_come_from_beside_the_executable_or_from_the_system(self):
        carried = {f"@executable_path/{path.name}" for path in self.libraries}
        used = set()
        for file in self.files:
            with self.subTest(file.name):
                paths = loaded(file)
                self.assertTrue(paths)
                for path in paths:
                    self.assertTrue(path in carried or SYSTEM.match(path), path)
                used.update(carried.intersection(paths))
                self.assertNotIn("LC_RPATH", [name for name, _ in commands(file)])
        self.assertEqual(used, carried)

    def test_libraries_are_named_by_where_they_lie(self):
        for library in self.libraries:
            names = [text for name, text in commands(library) if name == "LC_ID_DYLIB"]
            self.assertEqual(len(names), 1, library.name)
            self.assertIn(f"name @executable_path/{library.name} (offset", names[0])

    def test_one_library_has_the_run_time_of_cxx(self):
        # Two in a process, and an exception of one is none of the other's.
        for file in self.files:
            defined = objdump("--exports-trie", file)
            if file.name.startswith("libc++."):
                self.assertIn("___cxa_throw", defined)
            else:
                self.assertNotIn("___cxa_throw", defined, file.name)

    def test_no_path_of_the_build_is_inside(self):
        for file in self.files:
            self.assertNotIn(str(ROOT).encode(), file.read_bytes(), file.name)

    def test_executables_can_lie_anywhere_in_memory_and_stacks_are_guarded(self):
        for file in self.programs:
            with self.subTest(file.name):
                self.assertIn("LC_MAIN", [name for name, _ in commands(file)])
                self.assertIn("PIE", objdump("--private-header", file))
                self.assertIn("___stack_chk_fail", objdump("--bind", "--lazy-bind", file))

    def test_code_is_signed_ad_hoc(self):
        # Unsigned code does not start on arm64; x86_64 does not ask.
        if self.processor != "arm64":
            return
        for file in self.files:
            with self.subTest(file.name):
                self.assertEqual(faults_of_signature(file), [])


if __name__ == "__main__":
    unittest.main()

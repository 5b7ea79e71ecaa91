"""The controls of test_macos.py: each of its checks must fail on a tree that was spoilt for it.

SNMPDISCOVERY_CROSS_FOLDER names what is delivered, as there."""

import os
import pathlib
import shutil
import struct
import tempfile
import unittest
import unittest.mock

import test_macos

ID, UUID, RPATH, BUILD_VERSION, MAIN = 0xD, 0x1B, 0x8000001C, 0x32, 0x80000028
PIE = 0x200000


def load_command(octets, kind):
    """Where the first load command of a kind begins."""
    place = 32
    for _ in range(struct.unpack_from("<I", octets, 16)[0]):
        found, size = struct.unpack_from("<II", octets, place)
        if found == kind:
            return place
        place += size
    raise AssertionError(f"no load command {kind:#x}")


def number(kind, offset, value):
    """A change of the number at `offset` of a load command; the kind None is the file's header."""
    def change(octets):
        struct.pack_into("<I", octets, offset + (0 if kind is None else load_command(octets, kind)), value)
    return change


def words(old, new, after=None):
    """A change of words, at first after a load command begins."""
    def change(octets):
        assert len(old) == len(new)
        place = octets.index(old, 0 if after is None else load_command(octets, after))
        octets[place:place + len(old)] = new
    return change


def flags_without_pie(octets):
    number(None, 24, struct.unpack_from("<I", octets, 24)[0] & ~PIE)(octets)


def run_path(octets):
    place = load_command(octets, UUID)
    struct.pack_into("<III12s", octets, place, RPATH, 24, 12, b"/opt")


def build_path(octets):
    octets.extend(str(test_macos.ROOT).encode())


HERE, ELSEWHERE = b"@executable_path", b"/opt/homebrew/li"

# A test, the file that is spoilt, and the change.
CHANGES = [
    ("each_is_for_the_processor_and_the_oldest_macos", "SNMPDiscovery", number(None, 4, 0x7)),
    ("each_is_for_the_processor_and_the_oldest_macos", "libPocoNet", number(BUILD_VERSION, 12, 0xC0000)),
    ("libraries_come_from_beside_the_executable_or_from_the_system", "snmp-inventory", words(HERE, ELSEWHERE)),
    ("libraries_come_from_beside_the_executable_or_from_the_system", "libnetsnmp",
     words(b"/usr/lib/libSystem.B", b"/usr/bin/libSystem.B")),
    ("libraries_come_from_beside_the_executable_or_from_the_system", "SNMPDiscovery", run_path),
    ("libraries_are_named_by_where_they_lie", "libcrypto", words(HERE, ELSEWHERE, after=ID)),
    ("no_path_of_the_build_is_inside", "libPocoXML", build_path),
    ("executables_can_lie_anywhere_in_memory_and_stacks_are_guarded", "SNMPDiscovery", flags_without_pie),
    ("executables_can_lie_anywhere_in_memory_and_stacks_are_guarded", "SNMPDiscovery",
     words(b"___stack_chk_fail", b"___stack_chk_none")),
]
ARM64_CHANGES = [
    ("code_is_signed_ad_hoc", "libPocoUtil", words(b"___stack_chk_fail", b"___stack_chk_none")),
    ("code_is_signed_ad_hoc", "snmp-inventory", number(BUILD_VERSION, 12, 0xC0000)),
]


class Controls(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="snmpdiscovery-cross-")
        self.addCleanup(holder.cleanup)
        delivered = test_macos.folder("SNMPDISCOVERY_CROSS_FOLDER")
        self.arm64 = delivered.name.endswith("-arm64")
        self.tree = pathlib.Path(holder.name, delivered.name)
        shutil.copytree(delivered, self.tree, symlinks=True)

    def file(self, name):
        """The program or the library of that name."""
        return next(path for path in self.tree.glob(f"{name}*") if path.name.split(".")[0] == name)

    def fails(self, name):
        """Whether the test fails on the tree as it is now."""
        result = unittest.TestResult()
        with unittest.mock.patch.dict(os.environ, SNMPDISCOVERY_CROSS_FOLDER=str(self.tree)):
            test_macos.MacOS(f"test_{name}").run(result)
        self.assertEqual(result.errors, [])
        return bool(result.failures)

    def assert_only_spoilt_fails(self, name, file, change):
        self.assertFalse(self.fails(name))
        before = file.read_bytes()
        octets = bytearray(before)
        change(octets)
        file.write_bytes(octets)
        self.assertTrue(self.fails(name))
        file.write_bytes(before)

    def test_changed_octets(self):
        for name, file, change in CHANGES + (ARM64_CHANGES if self.arm64 else []):
            with self.subTest(name, file=file):
                self.assert_only_spoilt_fails(name, self.file(file), change)

    def test_a_second_run_time_of_cxx(self):
        def change(octets):
            octets[:] = self.file("libc++").read_bytes()

        self.assert_only_spoilt_fails("one_library_has_the_run_time_of_cxx", self.file("libPocoNet"), change)

    def test_a_module_is_missing_or_a_program_lies_elsewhere(self):
        name = "the_tree_is_laid_out_as_the_bundle"
        module = next((self.tree / "mibs").iterdir())
        module.rename(self.tree / module.name)
        self.assertTrue(self.fails(name))
        (self.tree / module.name).rename(module)
        self.assertFalse(self.fails(name))
        shutil.copy(self.file("libPocoNet"), self.tree / "bin")
        self.assertTrue(self.fails(name))


if __name__ == "__main__":
    unittest.main()

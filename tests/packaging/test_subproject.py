"""The sources as a part of another project: its two libraries and nothing else."""

import re
import unittest

import shipping
from shipping import ROOT, run

PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX)
include(CTest)
{take}
add_executable(consumer main.cpp)
target_link_libraries(consumer PRIVATE SNMPDiscovery::snmp SNMPDiscovery::value)
add_test(NAME own COMMAND consumer)
"""

MAIN = """\
#include "snmp/OID.h"
#include "value/Value.h"

#include <iostream>

int main()
{
    const oid name[] = {1, 3, 6};
    std::cout << Value(UVARNETSNMP::OID(name, 3, 0).toDottedNotation()).to_json() << '\\n';
}
"""

WAYS = {
    "add_subdirectory": 'add_subdirectory("{sources}" taken)',
    "FetchContent": """\
include(FetchContent)
FetchContent_Declare(SNMPDiscovery SOURCE_DIR "{sources}")
FetchContent_MakeAvailable(SNMPDiscovery)""",
}


class Subproject(unittest.TestCase):
    def test_the_libraries_are_built_alone(self):
        shipping.require("cmake", "ninja", "ctest")
        for way, take in WAYS.items():
            with self.subTest(way):
                build = self.configure(way, take)
                run("cmake", "--build", build, "--parallel", "2", timeout=1200)
                self.assertRegex(run(build / "consumer"), r'^"\.?1\.3\.6"\n$')
                self.assertEqual(
                    self.linked(build),
                    {"consumer", "libsnmpdiscovery-snmp.a", "libsnmpdiscovery-value.a"},
                )
                tests = run("ctest", "--test-dir", build, "--show-only")
                self.assertEqual(re.findall(r"Test +#\d+: (.*)", tests), ["own"])

    def configure(self, way, take):
        folder = shipping.work_folder(f"subproject-{way}")
        project = PROJECT.format(take=take.format(sources=ROOT))
        (folder / "CMakeLists.txt").write_text(project, "utf-8")
        (folder / "main.cpp").write_text(MAIN, "utf-8")
        # What only the project's own tests and tools need is not asked for.
        without = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("GTest", "Python3")]
        run("cmake", "-S", folder, "-B", folder / "build", "-G", "Ninja", "-Wno-dev", *without)
        return folder / "build"

    def linked(self, build):
        """The files that a linker makes in a build."""
        targets = run("ninja", "-C", build, "-t", "targets", "all")
        return set(re.findall(r"^(?:.*/)?(\S+): CXX_\w+_LINKER_", targets, re.MULTILINE))


if __name__ == "__main__":
    unittest.main()

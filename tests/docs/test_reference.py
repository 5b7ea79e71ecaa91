"""The reference of the libraries: made by one command, without a warning."""

import pathlib
import re
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402


class Reference(unittest.TestCase):
    def setUp(self):
        shipping.require("doxygen")

    def test_it_is_made_without_a_warning_and_holds_every_class(self):
        folder = shipping.work_folder("reference")
        said = run(ROOT / "scripts/reference", folder)
        self.assertEqual(said, f"{folder}/html/index.html\n")
        pages = {path.name for path in (folder / "html").iterdir()}
        for page in (
            "classValue.html",
            "classDynamic_1_1Any.html",
            "classUVARNETSNMP_1_1OID.html",
            "classUVARNETSNMP_1_1SNMPSecurity.html",
            "classUVARNETSNMP_1_1SNMPSession.html",
        ):
            self.assertIn(page, pages)

    def test_it_covers_the_headers_that_are_installed(self):
        prefix = shipping.work_folder("reference-headers")
        shipping.install(prefix, "development")
        installed = {
            path.relative_to(prefix / "include/SNMPDiscovery").as_posix()
            for path in prefix.rglob("*.h")
        }
        folder = shipping.work_folder("reference-files")
        run(ROOT / "scripts/reference", folder)
        text = (folder / "html/files.html").read_text("utf-8")
        for header in installed:
            self.assertIn(pathlib.PurePath(header).name, text)

    def test_a_comment_that_makes_no_sense_fails(self):
        copy = shipping.work_folder("reference-wrong")
        for name in ("snmp", "value", "docs", "scripts"):
            shutil.copytree(ROOT / name, copy / name)
        shutil.copy(ROOT / "CMakeLists.txt", copy)
        header = copy / "value/Any.h"
        text = header.read_text("utf-8")
        text = re.sub("class Any\n", "/// \\\\nosuchcommand\nclass Any\n", text, count=1)
        header.write_text(text, "utf-8")
        said = run(copy / "scripts/reference", code=1)
        self.assertIn("nosuchcommand", said)


if __name__ == "__main__":
    unittest.main()

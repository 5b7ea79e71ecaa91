"""The reference of the libraries: made by one command, without a warning."""

import pathlib
import re
import shutil
import sys
import unittest
from xml.etree import ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import roots  # noqa: E402
import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402


def without_text(folder):
    """The public and protected members, of a reference as XML, that have no text."""
    found = []
    for path in sorted(folder.glob("*.xml")):
        for compound in ElementTree.parse(path).iter("compounddef"):
            # Classes that are private members, and what files repeat of namespaces.
            if compound.get("prot") == "private" or compound.get("kind") == "file":
                continue
            for member in compound.iter("memberdef"):
                texts = [member.find(f"{kind}description") for kind in ("brief", "detailed")]
                if member.get("prot") != "private" and not any(
                    "".join(text.itertext()).strip() for text in texts
                ):
                    place = member.find("location")
                    name = member.findtext("name") + (member.findtext("argsstring") or "")
                    found.append(f"{place.get('file')}:{place.get('line')}: {name}")
    return found


# In a minimal system, with the sources as /mnt.
WITH_ITS_OWN_DOXYGEN = """
set -e
export DEBIAN_FRONTEND=noninteractive
{ apt-get -q -o Acquire::Retries=3 update
  apt-get -q -y install --no-install-recommends doxygen; } >/tmp/log 2>&1 || { cat /tmp/log; exit 1; }
/mnt/scripts/reference /tmp/reference
"""


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

    def test_the_doxygen_of_debian_13_has_no_warning_either(self):
        roots.require_root()
        written = shipping.work_folder("reference-root")
        self.addCleanup(shutil.rmtree, written, ignore_errors=True)
        command = ("sh", "-c", WITH_ITS_OWN_DOXYGEN)
        root = roots.debian("trixie")
        said = run(*roots.enter_outside_the_lab(root, ROOT, *command, keep=written))
        self.assertEqual(said, "/tmp/reference/html/index.html\n")

    def test_every_public_member_has_a_text_of_its_own(self):
        # Doxygen's own warning passes over members that are deleted or defaulted.
        folder = shipping.work_folder("reference-texts")
        run(ROOT / "scripts/reference", folder)
        self.assertGreater(len(list((folder / "xml").glob("class*.xml"))), 8)
        self.assertEqual(without_text(folder / "xml"), [])

    def test_the_main_page_leads_to_every_library(self):
        folder = shipping.work_folder("reference-page")
        run(ROOT / "scripts/reference", folder)
        text = (folder / "html/index.html").read_text("utf-8")
        for page in ("classValue.html", "classUVARNETSNMP_1_1SNMPSession.html"):
            self.assertIn(f'href="{page}"', text)
        for words in ("parse_json", "GetNext"):  # of the programs that are shown
            self.assertIn(words, text)

    def test_a_member_without_a_text_fails(self):
        copy = self.copy("reference-undocumented")
        header = copy / "value/Value.h"
        text = header.read_text("utf-8")
        header.write_text(text.replace("class Value\n{\npublic:\n",
                                       "class Value\n{\npublic:\n    void undocumented();\n\n"))
        self.assertIn("undocumented", run(copy / "scripts/reference", code=1))

    def copy(self, name):
        """A copy of what the reference is made from."""
        folder = shipping.work_folder(name)
        for part in ("snmp", "value", "docs", "scripts"):
            shutil.copytree(ROOT / part, folder / part)
        shutil.copy(ROOT / "CMakeLists.txt", folder)
        return folder

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
        copy = self.copy("reference-wrong")
        header = copy / "value/Any.h"
        text = header.read_text("utf-8")
        text = re.sub("class Any\n", "/// \\\\nosuchcommand\nclass Any\n", text, count=1)
        header.write_text(text, "utf-8")
        said = run(copy / "scripts/reference", code=1)
        self.assertIn("nosuchcommand", said)


if __name__ == "__main__":
    unittest.main()

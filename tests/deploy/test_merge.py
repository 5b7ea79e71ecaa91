"""deploy/merge-reports.py: what it makes of several reports, and what it refuses."""

import json
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

MERGE = ROOT / "deploy/merge-reports.py"

PRINTER = {
    "hostname": "192.0.2.9",
    "answers": True,
    "name": "Küche",
    "printer": True,
    "pages": 21500,
    "supplies": [{"name": "Black", "level": -2, "capacity": 100}],
}

PAGES = b'[{"hostname":"192.0.2.9","answers":true,"printer":true,"pages":%s}]'
PRINTS = b'[{"hostname":"192.0.2.9","answers":true,"printer":true,"supplies":%s}]'

# What no report is; each is refused as a whole.
WRONG = {
    "nothing": b"",
    "the help": b"usage: snmp-inventory",
    "cut short": b'[{"hostname":"192.0.2.9"},{"hostna',
    "an object": b"{}",
    "entries that are none": b'["192.0.2.9"]',
    "an entry without an address": b'[{"name":"x"}]',
    "an octet too large": b'[{"hostname":"192.0.2.256"}]',
    "an octet too many": b'[{"hostname":"192.0.2.9.1"}]',
    "an octet too few": b'[{"hostname":"192.0.2"}]',
    "an empty octet": b'[{"hostname":"192.0..9"}]',
    "a leading zero": b'[{"hostname":"192.0.2.09"}]',
    "other digits": '[{"hostname":"192.0.2.٩"}]'.encode(),
    "a line end": b'[{"hostname":"192.0.2.9\\n"}]',
    "a template": b'[{"hostname":"{{ 7 * 191 }}"}]',
    "a number for an address": b'[{"hostname":3221225993}]',
    "a number for a name": b'[{"hostname":"192.0.2.9","answers":true,"name":7}]',
    "a word for a flag": b'[{"hostname":"192.0.2.9","printer":"yes"}]',
    "a flag for a number": PAGES % b"true",
    "a number too large": PAGES % b"4294967296",
    "not a number": PAGES % b"NaN",
    "more than all": PRINTS % b'[{"level":1,"capacity":1,"percent":101}]',
    "supplies that are none": PRINTS % b'["Black"]',
    "too long a text": b'[{"hostname":"192.0.2.9","answers":true,"name":"%s"}]' % (b"x" * 1025),
    "half a character": b'[{"hostname":"192.0.2.9","answers":true,"name":"\\ud800"}]',
    "a silent agent that tells something": b'[{"hostname":"192.0.2.9","name":"x"}]',
    "what printers tell": b'[{"hostname":"192.0.2.9","answers":true,"model":"x"}]',
    "a percentage of nothing": PRINTS % b'[{"percent":1}]',
    "no supplies at all": PRINTS % b"[]",
    "a label that is none": PRINTS % b'[{"type":"two words"}]',
    "no UTF-8": b'[{"hostname":"192.0.2.9","answers":true,"name":"\xff"}]',
    "depth": b"[" * 100000,
    "a number of many digits": PAGES % (b"9" * 100000),
    "too many": b"[" + b",".join([b'{"hostname":"192.0.2.9"}'] * 65537) + b"]",
    "too large": b" " * (16 * 1024 * 1024 + 1),
}


class Merge(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def report(self, name, content):
        octets = content if isinstance(content, bytes) else json.dumps(content).encode()
        (self.folder / f"{name}.in").write_bytes(octets)
        return f"{name}={self.folder / name}.in"

    def merge(self, *words, code=0):
        return run(sys.executable, MERGE, "--output", self.folder, *words, code=code)

    def written(self, name):
        path = self.folder / name
        return path.read_text("utf-8") if path.exists() else None

    def agents(self, *addresses):
        return shipping.tool.document(*addresses).decode()

    def test_what_several_hosts_saw_is_listed_once_with_who_saw_it(self):
        bare = {"hostname": "192.0.2.9"}
        silent = {"hostname": "192.0.2.10", "answers": False}
        north = self.report("north", [bare, silent])
        south = self.report("south", [PRINTER, {"hostname": "198.51.100.20"}])
        self.merge(south, north)
        self.assertEqual(self.written("agents.json"),
                         self.agents("192.0.2.10", "192.0.2.9", "198.51.100.20"))
        self.assertEqual(json.loads(self.written("report.json")),
                         [PRINTER, silent, {"hostname": "198.51.100.20"}])
        for name, schema in (("agents", "document"), ("report", "inventory")):
            schema = ROOT / f"docs/{schema}.schema.json"
            run("jsonschema", "-i", self.folder / f"{name}.json", schema)
        self.assertEqual(json.loads(self.written("seen.json")), {
            "seen": {
                "192.0.2.9": ["north", "south"],
                "192.0.2.10": ["north"],
                "198.51.100.20": ["south"],
            },
            "failed": [],
        })

    def test_who_was_told_most_counts_and_then_the_first_by_name(self):
        cases = {
            "told more": ([{"name": "a"}, {"name": "b", "location": "x"}], "b"),
            "answers": ([{"answers": False}, {"name": "b"}], "b"),
            "equal": ([{"name": "a"}, {"name": "b"}], "a"),
        }
        for case, (agents, winner) in cases.items():
            with self.subTest(case):
                words = [
                    self.report(f"host-{number}", [{"hostname": "192.0.2.9", "answers": True, **agent}])
                    for number, agent in enumerate(agents)
                ]
                self.merge(*reversed(words))
                self.assertEqual(json.loads(self.written("report.json"))[0]["name"], winner)

    def test_what_no_report_has_is_left_out(self):
        printer = {"hostname": "192.0.2.9", "answers": True, "printer": True}
        other = {**printer, "other": {"a": 1}, "supplies": [{"b": 2, "name": "x"}]}
        self.merge(self.report("north", [other]))
        self.assertEqual(json.loads(self.written("report.json")),
                         [{**printer, "supplies": [{"name": "x"}]}])

    def test_what_is_no_report_is_refused_and_its_host_named(self):
        good = self.report("good", [])
        for case, octets in WRONG.items():
            with self.subTest(case):
                said = self.merge(good, self.report("wrong", octets), code=1)
                self.assertRegex(said, r"^merge-reports: \S+/wrong\.in: .*\n")
                self.assertEqual(said.splitlines()[1:], ["merge-reports: no report from: wrong"])
                self.assertEqual(self.written("agents.json"), "[]")
                self.assertEqual(json.loads(self.written("seen.json")),
                                 {"seen": {}, "failed": ["wrong"]})

    def test_a_host_s_name_is_by_default_that_of_its_file(self):
        (self.folder / "north.json").write_text('[{"hostname":"192.0.2.9"}]')
        self.merge(self.folder / "north.json")
        self.assertEqual(json.loads(self.written("seen.json"))["seen"], {"192.0.2.9": ["north"]})

    def test_a_file_that_is_not_there_and_a_host_without_one_have_failed(self):
        missing = f"missing={self.folder / 'missing'}"
        self.merge(self.report("good", []), missing, "--failed", "down", code=1)
        self.assertEqual(json.loads(self.written("seen.json"))["failed"], ["down", "missing"])

    def test_nothing_is_written_without_any_report(self):
        (self.folder / "agents.json").write_text("before")
        self.merge(self.report("wrong", b"{}"), "--failed", "down", code=1)
        self.assertEqual(self.written("agents.json"), "before")
        self.assertIsNone(self.written("seen.json"))

    def test_wrong_command_lines(self):
        for words in ((), ("x/a.json", "y/a.json"), ("a=x", "a=y"), ("a=x", "--failed", "a"), ("--other",)):
            with self.subTest(words):
                self.merge(*words, code=2)
                self.assertIsNone(self.written("agents.json"))

    def test_nothing_but_the_three_files_is_left(self):
        self.merge(self.report("good", []))
        found = {path.name for path in self.folder.iterdir()}
        self.assertEqual(found, {"good.in", "agents.json", "report.json", "seen.json"})


if __name__ == "__main__":
    unittest.main()

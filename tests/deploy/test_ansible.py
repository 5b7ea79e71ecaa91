"""The playbook of deploy/ansible. Every host of the inventory is a lab of its own: Ansible
stays on this machine, its connections are local, and the command that it runs for a host
starts that host's lab and the tool in it."""

import json
import os
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

DISCOVER = ROOT / "deploy/ansible/discover.yml"
INSTALL = ROOT / "deploy/ansible/install.yml"
LAB = ROOT / "lab/lab"


def site(subnet, *agents):
    """A topology of one subnet, x.y.z.0/24, with its host at .1 and responders."""
    return {
        "subnets": {"wire": f"{subnet}.0/24"},
        "host": {
            "interfaces": [{"name": "eth0", "subnet": "wire", "addresses": f"{subnet}.1"}]
        },
        "agents": [
            {
                "name": f"agent-{number}",
                "kind": "responder",
                "addresses": {"wire": f"{subnet}.{number}"},
            }
            for number in agents
        ],
    }


class PlaybookTest(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("ansible-playbook")
        self.folder = shipping.work_folder(f"ansible-{self._testMethodName}")
        self.build = shipping.build_folder()

    def in_site(self, *topology):
        """The command of a host at a site."""
        lab = [sys.executable, str(LAB), "--topology", json.dumps(site(*topology)), "--"]
        return lab + [str(self.build / "snmp-inventory"), "--tool", str(self.build / "SNMPDiscovery")]

    def writes(self, text):
        """The command of a host that writes the text for a report."""
        path = self.folder / f"text-{len(list(self.folder.iterdir()))}"
        path.write_text(text, "utf-8")
        return ["sh", "-c", 'cp "$0" "$5"', str(path)]

    def play(self, hosts, *options, code, playbook=DISCOVER, **variables):
        """Runs a playbook for `hosts`, a command for each name; returns what was said and
        the three files, by their names."""
        inventory = {
            "all": {
                "hosts": {
                    name: {"snmpdiscovery_command": command, "ansible_connection": "local"}
                    for name, command in hosts.items()
                }
            }
        }
        path = self.folder / "inventory.json"
        path.write_text(json.dumps(inventory), "utf-8")
        settings = dict(os.environ, ANSIBLE_LOCAL_TEMP=str(self.folder / "tmp"))
        settings.update(ANSIBLE_NOCOLOR="1", ANSIBLE_HOME=str(self.folder / "home"))
        settings.update(ANSIBLE_REMOTE_TEMP=str(self.folder / "tmp"), LC_ALL="C.UTF-8")
        variables = {"output": str(self.folder), "snmpdiscovery_splay": 0, **variables}
        said = run(
            *("ansible-playbook", "-i", path, playbook, "-e", json.dumps(variables)),
            *options,
            code=code,
            env=settings,
            cwd=self.folder,
        )
        return said, {
            name: (self.folder / name).read_text("utf-8")
            for name in ("agents.json", "report.json", "seen.json")
            if (self.folder / name).exists()
        }


class Discover(PlaybookTest):
    def test_reports_are_merged_and_a_host_that_fails_is_named(self):
        hosts = {
            "north": self.in_site("192.0.2", 9, 10),
            "north-too": self.in_site("192.0.2", 10, 11),
            "south": self.in_site("198.51.100", 20),
            "empty": self.in_site("203.0.113"),
            "without-tool": ["/no/such/snmp-inventory"],
            "wrong-options": [str(self.build / "snmp-inventory"), "--help"],
            "liar": self.writes('[{"hostname":"{{ 7 * 191 }}"}]'),
            "octets": self.writes('[{"hostname":"192.0.2.256"}]'),
        }
        said, files = self.play(hosts, code=2)
        addresses = ("192.0.2.10", "192.0.2.11", "192.0.2.9", "198.51.100.20")
        self.assertEqual(files["agents.json"].encode(), shipping.tool.document(*addresses))
        expected = {
            "seen": {
                "192.0.2.9": ["north"],
                "192.0.2.10": ["north", "north-too"],
                "192.0.2.11": ["north-too"],
                "198.51.100.20": ["south"],
            },
            "failed": ["liar", "octets", "without-tool", "wrong-options"],
        }
        self.assertEqual(json.loads(files["seen.json"]), expected)
        report = json.loads(files["report.json"])
        self.assertEqual([agent["hostname"] for agent in report], list(expected["seen"]))
        self.assertTrue(all(agent["answers"] for agent in report))
        self.assertIn("no report from: liar, octets, without-tool, wrong-options", said)

    def test_what_agents_say_is_never_a_template(self):
        name = "{{ lookup('ansible.builtin.pipe', 'touch %s') }}" % (self.folder / "touched")
        entry = [{"hostname": "192.0.2.9", "answers": True, "name": name}]
        said, files = self.play({"liar": self.writes(json.dumps(entry))}, "-v", code=0)
        self.assertEqual(json.loads(files["report.json"]), entry)
        self.assertFalse((self.folder / "touched").exists())

    def test_hosts_outside_the_limit_are_neither_asked_nor_failures(self):
        hosts = {
            "north": self.in_site("192.0.2", 9),
            "south": self.in_site("198.51.100", 20),
            "down": ["/no/such/snmp-inventory"],
        }
        for limit in ("north", "north,localhost"):
            with self.subTest(limit):
                _, files = self.play(hosts, "--limit", limit, code=0)
                self.assertEqual(files["agents.json"], '[{"hostname":"192.0.2.9"}]')
                self.assertEqual(json.loads(files["seen.json"]),
                                 {"seen": {"192.0.2.9": ["north"]}, "failed": []})

    def test_nobody_found_is_an_empty_document(self):
        _, files = self.play({"empty": self.in_site("203.0.113")}, code=0)
        self.assertEqual(files["agents.json"], "[]")
        self.assertEqual(json.loads(files["seen.json"]), {"seen": {}, "failed": []})

    def test_nothing_is_written_when_no_host_has_a_report(self):
        said, files = self.play({"one": ["/no/such/snmp-inventory"]}, code=2)
        self.assertEqual(files, {})
        self.assertIn("no host has a report", said)

    def test_a_host_that_hangs_is_given_up(self):
        hosts = {"hangs": ["sh", "-c", "sleep 100"], "north": self.in_site("192.0.2", 9)}
        _, files = self.play(hosts, code=2, snmpdiscovery_seconds=30)
        self.assertEqual(files["agents.json"], '[{"hostname":"192.0.2.9"}]')
        self.assertEqual(json.loads(files["seen.json"])["failed"], ["hangs"])

    def test_the_community_is_a_file_for_its_user_alone_and_goes_afterwards(self):
        show = 'for word; do last=$word; done; stat -c %a "$last" >"$0"; cat "$last" >>"$0"; ls -d "$last" >>"$0"'
        told = self.folder / "told"
        command = ["sh", "-c", f"{show}; printf '[]' >\"$5\"", str(told)]
        said, _ = self.play({"one": command}, "-vvv", code=0, snmpdiscovery_community="s3cret  x")
        mode, community, path = told.read_text("utf-8").splitlines()
        self.assertEqual((mode, community), ("600", "s3cret  x"))
        self.assertNotIn("s3cret", said.replace('"snmpdiscovery_community": "s3cret  x"', ""))
        self.assertFalse(pathlib.Path(path).parent.exists())

    def test_hosts_wait_each_its_own_time(self):
        hosts = {name: self.writes("[]") for name in ("a", "b", "c")}
        said, _ = self.play(hosts, "-v", code=0, snmpdiscovery_splay=3)
        waited = dict(re.findall(r"ok: \[(\w)\] => .*\"elapsed\": (\d+)", said))
        self.assertEqual(set(waited), set(hosts), said)
        self.assertGreater(len(set(waited.values())), 1)


class Install(PlaybookTest):
    """deploy/ansible/install.yml with the archive that holds all libraries."""

    def test_the_archive_is_unpacked_and_its_programs_are_linked_to(self):
        dist = shipping.work_folder("ansible-dist")
        said = run(ROOT / "scripts/bundle", "--build", self.build, "--output", dist)
        archive = said.splitlines()[-1]
        variables = dict(file=archive, ansible_become=False)
        for name in ("opt", "bin"):
            (self.folder / name).mkdir()
            variables[f"snmpdiscovery_{name}"] = str(self.folder / name)
        said, _ = self.play({"one": []}, code=0, playbook=INSTALL, **variables)
        self.assert_discovers_demo(self.folder / "bin/SNMPDiscovery")
        again, _ = self.play({"one": []}, code=0, playbook=INSTALL, **variables)
        self.assertRegex(again, r"one +: ok=\d+ +changed=0 ")

        pathlib.Path(f"{archive}.sha256").write_text("0" * 64 + "  x\n")
        said, _ = self.play({"one": []}, code=2, playbook=INSTALL, **variables)
        self.assertIn("Compare it with the sum that lies beside it", said)


if __name__ == "__main__":
    unittest.main()

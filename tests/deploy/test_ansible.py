"""The playbook of deploy/ansible. Every host of the inventory is a lab of its own: Ansible
stays on this machine, its connections are local, and the command that it runs for a host
starts that host's lab and the tool in it."""

import json
import os
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

PLAYBOOK = ROOT / "deploy/ansible/discover.yml"
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


class Playbook(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("ansible-playbook")
        self.folder = shipping.work_folder(f"ansible-{self._testMethodName}")
        self.tool = shipping.build_folder() / "SNMPDiscovery"

    def in_site(self, *topology):
        """The command of a host at a site."""
        return [sys.executable, str(LAB), "--topology", json.dumps(site(*topology)), "--",
                str(self.tool)]

    def play(self, hosts, code, **variables):
        """Runs the playbook for `hosts`, a command for each name; returns what was said
        and the two files, or None."""
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
        variables["output"] = str(self.folder)
        said = run(
            *("ansible-playbook", "-i", path, PLAYBOOK, "-e", json.dumps(variables)),
            code=code,
            env=settings,
            cwd=self.folder,
        )
        files = []
        for name in ("agents.json", "agents-seen.json"):
            file = self.folder / name
            files.append(file.read_text("utf-8") if file.exists() else None)
        return said, *files

    def test_documents_are_merged_and_a_host_that_fails_is_named(self):
        hosts = {
            "north": self.in_site("192.0.2", 9, 10),
            "north-too": self.in_site("192.0.2", 10, 11),
            "south": self.in_site("198.51.100", 20),
            "empty": self.in_site("203.0.113"),
            "without-tool": ["/no/such/SNMPDiscovery"],
            "wrong-options": [str(self.tool), "--help"],
            "liar": ["echo", '[{"hostname":"{{ 7 * 191 }}"}]'],
        }
        said, document, seen = self.play(hosts, code=2)
        addresses = ("192.0.2.10", "192.0.2.11", "192.0.2.9", "198.51.100.20")
        self.assertEqual(document.encode(), shipping.tool.document(*addresses))
        expected = {
            "seen": {
                "192.0.2.10": ["north", "north-too"],
                "192.0.2.11": ["north-too"],
                "192.0.2.9": ["north"],
                "198.51.100.20": ["south"],
            },
            "failed": ["liar", "without-tool", "wrong-options"],
        }
        self.assertEqual(json.loads(seen), expected)
        self.assertIn("No document from: liar, without-tool, wrong-options", said)

    def test_all_is_well_when_every_host_has_a_document(self):
        hosts = {"north": self.in_site("192.0.2", 9), "empty": self.in_site("203.0.113")}
        _, document, seen = self.play(hosts, code=0)
        self.assertEqual(document, '[{"hostname":"192.0.2.9"}]')
        self.assertEqual(json.loads(seen)["failed"], [])

    def test_nobody_found_is_an_empty_document(self):
        _, document, seen = self.play({"empty": self.in_site("203.0.113")}, code=0)
        self.assertEqual((document, json.loads(seen)["seen"]), ("[]", {}))

    def test_nothing_is_written_when_no_host_has_a_document(self):
        said, document, seen = self.play({"one": ["/no/such/SNMPDiscovery"]}, code=2)
        self.assertEqual((document, seen), (None, None))
        self.assertIn("No host gave a document", said)

    def test_a_host_that_hangs_is_given_up(self):
        hosts = {"hangs": ["sleep", "100"], "north": self.in_site("192.0.2", 9)}
        said, document, seen = self.play(hosts, code=2, snmpdiscovery_seconds=20)
        self.assertEqual(document, '[{"hostname":"192.0.2.9"}]')
        self.assertEqual(json.loads(seen)["failed"], ["hangs"])


if __name__ == "__main__":
    unittest.main()

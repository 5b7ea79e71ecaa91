"""The page of snmp-inventory in a browser without a network: at two widths, in light and dark, on
paper, and with texts of agents that mean harm."""

import base64
import pathlib
import struct
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402  (the lab's folder on the path)
import browser  # noqa: E402
import harness  # noqa: E402
import inventory  # noqa: E402
import inventory_agents  # noqa: E402
from shipping import ROOT  # noqa: E402

TELEPHONE, DESK = 360, 1280
PICTURE = ROOT / "docs/inventory.png"


class Page(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        if browser.executable() is None:
            harness.skip("no chromium: run scripts/install-dependencies --package")
        cls.holder = tempfile.TemporaryDirectory(prefix="page-")
        cls.addClassCleanup(cls.holder.cleanup)
        cls.folder = pathlib.Path(cls.holder.name)

    def setUp(self):
        super().setUp()
        self.browser = browser.Browser()
        self.addCleanup(self.browser.__exit__)

    def page(self, topology, *arguments):
        """The file of a page about the agents of a topology, made once."""
        name = topology if isinstance(topology, str) else "hostile"
        path = self.folder / f"{name}.html"
        if not path.exists():
            program = shipping.build_folder() / "snmp-inventory"
            outcome = self.in_lab(topology, program, "--format", "html", *arguments)
            path.write_bytes(outcome.out)
        return path

    def hostile(self):
        """The file of a page about two agents whose texts mean harm."""
        listing = self.folder / "listing"
        listing.write_text('[{"hostname":"198.18.16.1"},{"hostname":"198.18.16.2"}]')
        topology = inventory.campus("hostile-texts", n2="long-texts")
        return self.page(topology, "--from", listing)

    def assert_fits(self):
        value = self.browser.value
        wide = value("document.documentElement.scrollWidth")
        self.assertLessEqual(wide, value("window.innerWidth"))
        texts = "[...document.querySelectorAll('h1, h2, p, dd, span, meter')]"
        outside = f"{texts}.filter(e => e.getBoundingClientRect().right > window.innerWidth).length"
        self.assertEqual(value(outside), 0)

    def columns(self):
        style = "getComputedStyle(document.querySelector('main')).gridTemplateColumns"
        return len(self.browser.value(style).split())

    def colour(self, of):
        return self.browser.value(f"getComputedStyle({of}).color")

    def test_it_fits_a_telephone_and_a_desk(self):
        for page in (self.page("demo"), self.hostile()):
            for width, columns in ((TELEPHONE, 1), (DESK, 3)):
                with self.subTest((page.name, width)):
                    self.browser.show(width)
                    self.browser.open(page)
                    self.assert_fits()
                    self.assertEqual(self.columns(), columns)
                    size = self.browser.value("getComputedStyle(document.body).fontSize")
                    self.assertEqual(size, "16px")

    def test_it_is_dark_where_the_user_prefers_that(self):
        lightness = {}
        for scheme in ("light", "dark"):
            self.browser.show(TELEPHONE, scheme=scheme)
            self.browser.open(self.page("demo"))
            lightness[scheme] = self.colour("document.body")
        self.assertEqual(lightness, {"light": "rgb(0, 0, 0)", "dark": "rgb(255, 255, 255)"})

    def test_it_has_a_bar_for_each_supply(self):
        self.browser.show(DESK)
        self.browser.open(self.page("demo"))
        bars = "[...document.querySelectorAll('meter')]"
        self.assertEqual(self.browser.value(f"{bars}.map(e => e.value)"), [42, 36, 0, 7, 0])
        sizes = self.browser.value(f"{bars}.map(e => e.getBoundingClientRect().width)")
        self.assertTrue(all(size > 100 for size in sizes), sizes)

    def test_it_can_be_printed(self):
        self.browser.show(DESK, media="print")
        self.browser.open(self.page("demo"))
        self.assert_fits()
        self.assertEqual(self.columns(), 2)
        paper = base64.b64decode(self.browser.call("Page.printToPDF")["data"])
        self.assertTrue(paper.startswith(b"%PDF-"))

    def test_no_request_leaves_it(self):
        for page in (self.page("demo"), self.hostile()):
            with self.subTest(page.name):
                self.browser.requests.clear()
                self.browser.open(page)
                self.assertEqual(self.browser.requests, [page.as_uri()])

    def test_its_policy_would_stop_one(self):
        # The test of the test: a page with the same head that does ask.
        text = self.page("demo").read_text("utf-8")
        page = self.folder / "asking.html"
        asking = '<img src="http://192.0.2.1/x.png"><script>document.title = "ran"</script></main>'
        page.write_text(text.replace("</main>", asking), "utf-8")
        self.browser.requests.clear()
        self.browser.open(page)
        self.assertEqual(self.browser.value("document.title"), "SNMP agents")
        page.write_text(page.read_text("utf-8").replace("Content-Security-Policy", "x-none"), "utf-8")
        self.browser.open(page)
        self.assertEqual(self.browser.value("document.title"), "ran")
        self.assertIn("http://192.0.2.1/x.png", self.browser.requests)

    def test_texts_of_agents_are_texts(self):
        self.browser.show(DESK)
        self.browser.open(self.hostile())
        value = self.browser.value
        self.assertEqual(value("document.scripts.length"), 0)
        self.assertEqual(value("document.querySelectorAll('body *').length"), self.elements())
        shown = value("document.querySelector('h2').textContent")
        expected = inventory_agents.HOSTILE.replace("\r\n", "\ufffd\n")
        for control in "\x1b\x07\x7f\x9b\u202e":
            expected = expected.replace(control, "\ufffd")
        self.assertEqual(shown, expected)

    def elements(self):
        """How many elements the page would have if the texts were harmless."""
        text = self.hostile().read_text("utf-8").partition("<body>")[2]
        names = "h1 p main article h2 dl dt dd div span meter".split()
        return sum(text.count(f"<{name}>") + text.count(f"<{name} ") for name in names)

    def test_the_picture_in_the_document_is_one(self):
        octets = PICTURE.read_bytes()
        self.assertEqual(octets[:8], b"\x89PNG\r\n\x1a\n")
        width, height = struct.unpack(">II", octets[16:24])
        self.assertEqual(width, 900)
        self.assertGreater(height, 400)
        self.assertLess(len(octets), 200_000)
        self.assertIn("](inventory.png)", (ROOT / "docs/inventory.md").read_text("utf-8"))


if __name__ == "__main__":
    harness.unittest.main()

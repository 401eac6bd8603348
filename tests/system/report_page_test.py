#!/usr/bin/env python3
"""Makes reports and opens them in a headless Chromium.

Usage: report_page_test.py TORNELCTL SAMPLES_FOLDER PICTURES_FOLDER
What the browser shows is left in PICTURES_FOLDER, for people to look at. Ends with 77, "skipped", where Selenium or
chromedriver is not installed.
"""

import base64
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from report_page_probes import COLLISIONS, CONTRASTS, PARTS

SKIPPED = 77
DRIVER = pathlib.Path("/usr/bin/chromedriver")
DESKTOP, PHONE = 1360, 360
CM_PER_INCH, CSS_PIXELS_PER_INCH = 2.54, 96
A4_CM = (21.0, 29.7)
# As root, without a screen, and without a call home.
CHROMIUM_ARGUMENTS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                      "--disable-background-networking", "--disable-component-update", "--disable-sync",
                      "--hide-scrollbars", f"--window-size={DESKTOP},1000"]

HOSTILE_NAMES = [
    b"<script>document.title='broken in'</script>", b"</script></title></style>", b"\"' onmouseover=\"x()\"",
    b"&lt;&amp;&#60;", "a\u202egnirts\u202c b\u2066c".encode(), b"\x01\x07\x1b[31mred", b"\xff\xfe\xc3", b"",
    b"]]>--><!--", "名前が非常に長い放送サービスの名前がここに続きます".encode(), ("W" * 120).encode(),
    "ערוץ ראשון".encode(), b"${1+1}{{x}}",
]

class Browser:
    """Chromium without a window; records what it would load."""

    def __init__(self):
        options = webdriver.ChromeOptions()
        self.profile = tempfile.TemporaryDirectory()
        for argument in CHROMIUM_ARGUMENTS + [f"--user-data-dir={self.profile.name}"]:
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service(str(DRIVER)))

    def quit(self):
        self.driver.quit()
        self.profile.cleanup()

    def cdp(self, command, **parameters):
        return self.driver.execute_cdp_cmd(command, parameters)

    def run(self, script):
        return self.driver.execute_script(script)

    def open(self, page, scheme="light", width=DESKTOP):
        self.driver.get_log("performance")
        self.cdp("Emulation.setEmulatedMedia",
                 features=[{"name": "prefers-color-scheme", "value": scheme},
                           {"name": "prefers-reduced-motion", "value": "reduce"}])
        self.cdp("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)
        self.driver.get(page.as_uri())

    def requests(self):
        messages = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        return [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"]

    def complaints(self):
        """What the console says of the page; the browser's own start page complains, too."""
        messages = [entry["message"] for entry in self.driver.get_log("browser")]
        return [message for message in messages if not message.startswith("chrome://")]

    def picture(self, name, height=None):
        width = self.run("return innerWidth")
        height = height or self.run("return document.documentElement.scrollHeight")
        shot = self.cdp("Page.captureScreenshot", format="png", captureBeyondViewport=True,
                        clip={"x": 0, "y": 0, "width": width, "height": height, "scale": 1})
        (PICTURES / f"{name}.png").write_bytes(base64.b64decode(shot["data"]))

    def printed(self, name):
        pdf = base64.b64decode(self.cdp("Page.printToPDF", preferCSSPageSize=True, printBackground=True)["data"])
        (PICTURES / f"{name}.pdf").write_bytes(pdf)
        return pdf


def tornelctl(*arguments):
    return subprocess.run([TORNELCTL, *map(str, arguments)], capture_output=True, text=True, timeout=120)


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.quit)
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.page = cls.report(SAMPLES / "sample.ts", "sample")
        cls.facts = json.loads(cls.report(SAMPLES / "sample.ts", "facts", "--json").read_text(encoding="utf-8"))

    @classmethod
    def report(cls, stream, name, *options):
        page = cls.folder / f"{name}.html"
        ended = tornelctl("report", stream, "-o", page, *options)
        if ended.returncode != 0:
            raise AssertionError(f"tornelctl report ends with {ended.returncode}: {ended.stderr}")
        return page

    def synthetic(self, names, name):
        stream = self.folder / f"{name}.ts"
        Multiplex(names).write(stream)
        return self.report(stream, name)

    def parts(self):
        return self.browser.run(PARTS)

    def expect_lit(self, service):
        """Exactly what belongs to the service, None for all, stands out."""
        for part in self.parts():
            lit = service is None or service in part["services"]
            self.assertEqual(lit, part["opacity"] > 0.9, part)
            self.assertEqual(not lit, part["opacity"] < 0.3, part)

    def head(self, place):
        return self.browser.driver.find_element("css selector", f".input[data-service='{place}'] .head")

    def pressed(self):
        heads = self.browser.driver.find_elements("css selector", ".input .head")
        return [place for place, head in enumerate(heads) if head.get_attribute("aria-pressed") == "true"]


class Page(ReportTest):
    def test_loads_nothing_and_raises_no_complaint(self):
        self.browser.open(self.page)
        self.browser.picture("light")
        outside = [url for url in self.browser.requests() if not url.startswith("data:")]
        self.assertEqual([self.page.as_uri()], outside)
        self.assertEqual([], self.browser.complaints())

    def test_shows_the_facts_of_the_stream(self):
        self.browser.open(self.page)
        text = self.browser.run("return document.body.textContent")
        for fact in ["Télé Deux", "Kanal Süd", "1.60 Mbit/s", "9.41 s", "1101 (0x044D)", "Sample Network",
                     "2024-05-17 12:59:55 to 13:00:04 UTC", "No fault seen", "AC-3 audio", "DVB subtitles"]:
            self.assertIn(fact, text)

    def test_links_every_output_pid_as_the_daemon_says(self):
        self.browser.open(self.page)
        drawn = {(part["services"][0], part["pid"]) for part in self.parts() if part["kind"] == "link"}
        told = {(place, stream["outputPid"]) for place, service in enumerate(self.facts["services"])
                for stream in service["output"]["streams"] if stream["inputPid"] is not None}
        self.assertEqual(4, len(self.facts["services"]))
        self.assertEqual(15, len(told))
        self.assertEqual(told, drawn)

    def test_lights_up_a_chosen_service_alone_until_it_is_chosen_again(self):
        self.browser.open(self.page)
        self.expect_lit(None)
        self.head(1).click()
        self.expect_lit(1)
        self.assertEqual([1], self.pressed())
        self.browser.picture("selected")
        self.head(2).click()
        self.expect_lit(2)
        self.head(2).click()
        self.expect_lit(None)
        self.assertEqual([], self.pressed())

    def test_goes_dark_again_with_escape(self):
        self.browser.open(self.page)
        self.head(0).click()
        self.expect_lit(0)
        self.browser.driver.switch_to.active_element.send_keys(Keys.ESCAPE)
        self.expect_lit(None)

    def test_is_operated_by_keyboard(self):
        self.browser.open(self.page)
        active = lambda: self.browser.driver.switch_to.active_element
        for _ in range(3):  # the picture, which scrolls, then its services
            active().send_keys(Keys.TAB)
        self.assertIn("Télé Deux", active().get_attribute("aria-label"))
        tip = self.browser.driver.find_element("id", "tip")
        self.assertTrue(tip.is_displayed())
        self.assertIn("service 102", tip.text)
        active().send_keys(Keys.ENTER)
        self.expect_lit(1)
        active().send_keys(Keys.SPACE)
        self.expect_lit(None)

    def test_shows_everything_without_javascript(self):
        self.browser.cdp("Emulation.setScriptExecutionDisabled", value=True)
        try:
            self.browser.open(self.page)
        finally:
            self.browser.cdp("Emulation.setScriptExecutionDisabled", value=False)
        self.expect_lit(None)
        self.head(0).click()
        self.expect_lit(None)  # no script has been there

    def test_has_colours_for_light_and_dark_with_enough_contrast(self):
        background = {}
        for scheme in ("light", "dark"):
            self.browser.open(self.page, scheme)
            self.browser.picture(scheme)
            background[scheme] = self.browser.run("return getComputedStyle(document.documentElement).backgroundColor")
            contrasts = self.browser.run(CONTRASTS)
            self.assertGreater(len(contrasts), 300)
            self.assertEqual([], [entry for entry in contrasts if not entry[1] >= 4.5], scheme)
            self.head(0).click()
            self.browser.picture(f"{scheme}-selected", 1300)
        self.assertNotEqual(background["light"], background["dark"])

    def test_fits_a_phone(self):
        self.browser.open(self.page, width=PHONE)
        self.browser.picture("phone")
        self.assertEqual(PHONE, self.browser.run("return document.documentElement.scrollWidth"))
        self.assertGreater(self.browser.run("return document.querySelector('.scroller').scrollWidth"), 800)

    def test_fills_a_wide_screen_no_further_than_is_good(self):
        self.browser.open(self.page, width=2560)
        self.assertEqual(2560, self.browser.run("return document.documentElement.scrollWidth"))
        self.assertLessEqual(self.browser.run("return document.querySelector('.multiplex').clientWidth"), 1400)

    def test_lets_no_texts_meet(self):
        self.browser.open(self.page)
        self.assertEqual([], self.browser.run(COLLISIONS))


class Paper(ReportTest):
    def expect_all_on_a4(self, name):
        """Printed, and in the print's own layout at the width of A4 without its margins."""
        width, height = ((side - margins) / CM_PER_INCH * CSS_PIXELS_PER_INCH for side, margins in zip(A4_CM, (2.0, 2.4)))
        pages = re.findall(rb"/MediaBox\s*\[\s*0 0 ([\d.]+) ([\d.]+)\s*\]", self.browser.printed(name))
        for page in pages:
            for side, expected in zip(page, A4_CM):
                self.assertAlmostEqual(expected, float(side) / 72 * CM_PER_INCH, delta=0.1)
        self.browser.cdp("Emulation.setEmulatedMedia", media="print")
        self.browser.cdp("Emulation.setDeviceMetricsOverride", width=round(width), height=900, deviceScaleFactor=1,
                         mobile=False)
        beyond = self.browser.run(f"""return [...document.querySelectorAll("main *")].map((part) => [
                                   part.getBoundingClientRect().right, part.outerHTML]).filter((part) => part[0] > {width + 1})""")
        pictures = self.browser.run("return [...document.querySelectorAll('svg')].map((svg) => svg.clientHeight)")
        whole = self.browser.run("return document.documentElement.scrollHeight")
        self.browser.cdp("Emulation.setEmulatedMedia", media="")
        self.assertEqual([], beyond)
        self.assertEqual([], [picture for picture in pictures if not 0 < picture < height], "would be cut in two")
        self.assertGreaterEqual(len(pages) * height, whole)
        return len(pages)

    def test_shows_all_on_a4(self):
        self.browser.open(self.page, "dark")
        self.assertGreaterEqual(self.expect_all_on_a4("print"), 1)

    def test_is_light_whatever_the_screen_is(self):
        self.browser.open(self.page, "dark")
        colour = "return getComputedStyle(document.querySelector('h1')).color"
        on_screen = self.browser.run(colour)
        self.browser.cdp("Emulation.setEmulatedMedia", media="print",
                         features=[{"name": "prefers-color-scheme", "value": "dark"}])
        on_paper = self.browser.run(colour)
        self.browser.cdp("Emulation.setEmulatedMedia", media="")
        self.assertNotEqual(on_screen, on_paper)
        self.assertEqual("rgb(27, 35, 48)", on_paper)

    def test_shows_a_chosen_service_no_brighter_than_the_others(self):
        self.browser.open(self.page)
        self.head(0).click()
        self.browser.cdp("Emulation.setEmulatedMedia", media="print")
        self.expect_lit(None)
        self.browser.cdp("Emulation.setEmulatedMedia", media="")

    def test_shows_all_of_a_long_picture_and_of_long_names(self):
        self.browser.open(self.synthetic(HOSTILE_NAMES * 3, "long"))
        self.assertGreater(self.expect_all_on_a4("print-long"), 5)


class Multiplexes(ReportTest):
    def expect_sound(self):
        self.assertEqual([], self.browser.complaints())
        self.assertEqual([], self.browser.run(COLLISIONS))

    def test_with_hostile_names_show_them_as_text(self):
        page = self.synthetic(HOSTILE_NAMES, "hostile")
        self.browser.open(page)
        self.browser.picture("hostile")
        self.assertEqual("hostile.ts", self.browser.run("return document.title"))
        self.assertEqual(1, self.browser.run("return document.scripts.length"))
        self.assertEqual(0, self.browser.run("return document.querySelectorAll('[onmouseover]').length"))
        titles = self.browser.run("return [...document.querySelectorAll('.input .head title')].map((t) => t.textContent)")
        names = [title.split("\n")[0] for title in titles]
        self.assertEqual(len(HOSTILE_NAMES), len(names))
        self.assertEqual(HOSTILE_NAMES[0].decode(), names[0])
        self.assertEqual(HOSTILE_NAMES[1].decode(), names[1])
        self.assertEqual(HOSTILE_NAMES[3].decode(), names[3])
        self.assertEqual("Service 8", names[7])
        self.assertEqual(HOSTILE_NAMES[11].decode(), names[11])
        source = page.read_text(encoding="utf-8")
        self.assertEqual([], re.findall("[\x00-\x08\x0b-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069]", source))
        self.expect_sound()

    def test_of_a_hundred_services_stay_readable(self):
        self.browser.open(self.synthetic([f"Programm {number:03}".encode() for number in range(100)], "hundred"))
        self.browser.picture("hundred", 4000)
        self.head(57).click()
        self.expect_lit(57)
        self.assertEqual(100, self.browser.run("return document.querySelectorAll('.output.card').length"))
        self.expect_sound()

    def test_fold_what_needs_no_picture(self):
        multiplex = Multiplex([b"Eins"])
        multiplex.listed = [(90, b"Nur gelistet"), (91, b"Auch nur")]
        multiplex.strays = list(range(0x1A00, 0x1A20))
        multiplex.write(self.folder / "folds.ts")
        page = self.report(self.folder / "folds.ts", "folds")
        self.browser.open(page)
        folds = self.browser.driver.find_elements("css selector", ".fold")
        summaries = [fold.find_element("css selector", "summary") for fold in folds]
        self.assertEqual("2 services without a packet", summaries[0].text)
        self.assertIn("32 PIDs in no PAT, CAT or PMT", summaries[1].text)
        self.assertEqual(1, self.browser.run("return document.querySelectorAll('.input.card[data-service]').length"))
        rows = lambda: self.browser.run(
            "return [...document.querySelectorAll('.fold tbody')].map((rows) => rows.checkVisibility())")
        self.assertEqual([False, False], rows())
        summaries[0].click()
        summaries[1].send_keys(Keys.ENTER)
        self.assertEqual([True, True], rows())
        self.assertIn("Nur gelistet", folds[0].text)
        self.browser.picture("folds")
        self.expect_sound()
        self.browser.open(page, width=PHONE)
        self.assertEqual(PHONE, self.browser.run("return document.documentElement.scrollWidth"))

    def test_of_one_service_show_it(self):
        self.browser.open(self.synthetic([b"Eins"], "one"))
        self.browser.picture("one")
        self.assertEqual(1, self.browser.run("return document.querySelectorAll('.output.card').length"))
        self.expect_sound()

    def test_without_services_say_so(self):
        self.browser.open(self.synthetic([], "none"))
        self.browser.picture("none")
        text = self.browser.run("return document.body.textContent")
        self.assertIn("lists a service", text)
        self.assertIn("hold no event", text)
        self.expect_sound()

    def test_that_are_scrambled_say_so_at_the_top(self):
        self.browser.open(self.synthetic([b"A", b"B", b"C"], "scrambled"))
        faults = self.browser.driver.find_element("css selector", ".faults").text
        self.assertIn("48 scrambled packets on 1 PID", faults)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    if webdriver is None or not DRIVER.exists():
        print("report_page_test: skipped, since chromium-driver or python3-selenium is not installed")
        return SKIPPED
    PICTURES.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1], verbosity=2)
    return 0


try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None

if __name__ == "__main__":
    if len(sys.argv) == 4:
        TORNELCTL, SAMPLES, PICTURES = map(pathlib.Path, sys.argv[1:])
        sys.path.insert(0, str(SAMPLES))
        from synthetic_multiplex import Multiplex
    sys.exit(main())

"""Uses pages of the sample world without sight, without a mouse, with fingers.

python3 access_test.py <plotterra-web> <world> <older world> <axe.min.js, which need not be there>"""

import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys

from browser import Browser, text_of_place

WEB, WORLD, OLDER, AXE = (Path(word) for word in sys.argv[1:5])
# Clear of places, half-way between points.
MIDDLE = "at=1.95N,1.95W"
MIDDLE_X, MIDDLE_Y = 999.5, 1038.5
VIEW = f"#{MIDDLE}&zoom=1&show=-places,-dungeons"
WAY = "way=10.0N,20.0W,0.0N,0.0E,20.0S,10.0E"
TARGETS = "button, input, a[role=button], summary, label.choice, [role=menuitem], [role=option], .profile svg"


def setUpModule():
    global page, browser
    folder = tempfile.TemporaryDirectory(prefix="plotterra-access-")
    unittest.addModuleCleanup(folder.cleanup)
    page = Path(folder.name) / "page.html"
    subprocess.run([WEB, "--old", OLDER, "--plot", WORLD / "towns.txt", WORLD, page], check=True, capture_output=True)
    browser = Browser(Path(folder.name))
    unittest.addModuleCleanup(browser.quit)


def screen(width, height, touch=False):
    browser.resize(width, height)
    browser.driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": touch})


def media(**features):
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": name.replace("_", "-"), "value": value} for name, value in features.items()]})


def touch(kind, *spot):
    browser.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
        "type": f"touch{kind}", "touchPoints": [{"x": x, "y": y} for x, y in [spot] if spot]} if spot else {
        "type": f"touch{kind}", "touchPoints": []})


def tool(name):
    """In small windows a picture stands for it."""
    browser.driver.execute_script(
        "[...document.querySelectorAll('.tools button')].find(each => each.textContent === arguments[0]).click()", name)


def menu():
    return browser.texts(".menu:not([hidden]) button")


class AccessTest(unittest.TestCase):
    def tearDown(self):
        screen(1400, 900)
        media()
        browser.driver.execute_script("localStorage.clear()")
        self.assertEqual(browser.faults(), [])


class Menu(AccessTest):
    def test_of_a_place_by_mouse(self):
        browser.open(page, VIEW)
        coordinate = text_of_place(MIDDLE_X - 100, MIDDLE_Y + 50)
        browser.move(500, 350).context_click().perform()
        self.assertEqual(menu(), [f"Copy {coordinate}", "Measure from here", "Mark here", "Link to here"])
        browser.keys(Keys.ARROW_UP, Keys.ENTER)
        exact = text_of_place(MIDDLE_X - 100, MIDDLE_Y + 50, 2).replace(" ", ",")
        browser.wait(lambda: any(f"mark={exact},{coordinate.replace(' ', '%20')}" in text for text in browser.texts(".notice")))
        browser.move(500, 350).context_click().perform()
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.texts(".notice") == [f"Copied: {coordinate}"])
        browser.move(500, 350).context_click().perform()
        browser.keys(Keys.ARROW_DOWN, Keys.ENTER)
        browser.click_at(500, 550)
        self.assertTrue(browser.one(".result").text.startswith("10.00 map units"))
        # At the window's corner it keeps inside; a press elsewhere closes it, and does what it does.
        browser.move(20, 880).context_click().perform()
        box = browser.boxes(".menu")[0][1]
        self.assertTrue(box["bottom"] <= 900 and box["left"] >= 8, box)
        browser.click_at(700, 550)
        self.assertEqual(menu(), [])
        self.assertTrue(browser.one(".result").text.startswith("20.00 map units"))

    def test_in_the_relief_and_by_key(self):
        browser.open(page, f"{VIEW}&relief=0,0")
        browser.wait_for_calm()
        browser.move(500, 350).context_click().perform()
        self.assertEqual(len(menu()), 4)
        browser.keys(Keys.ESCAPE)
        self.assertIn("Land in relief", browser.focused())
        browser.driver.switch_to.active_element.send_keys(Keys.SHIFT, Keys.F10)
        self.assertIn("Copy", menu()[0])
        browser.keys(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ENTER)
        names = [field.get_attribute("value") for field in browser.all("#panel input[type=text]")]
        self.assertIn(names, [["1.9N 1.9W"], ["1.9N 2.0W"], ["2.0N 1.9W"], ["2.0N 2.0W"]])

    def test_under_a_resting_finger(self):
        for more in ("", "&relief=0,0"):
            screen(390, 844, touch=True)
            browser.open(page, VIEW + more)
            browser.wait_for_calm()
            touch("Start", 150, 300)
            browser.wait(menu)
            touch("End")
            time.sleep(0.3)
            self.assertEqual(len(menu()), 4, more)
            self.assertFalse(browser.one(".pinned").is_displayed())
            touch("Start", 150, 700)
            touch("End")
            browser.wait(lambda: not menu())


class Keyboard(AccessTest):
    def test_escape_closes_one_thing_after_another(self):
        browser.open(page, VIEW)
        browser.click_at(300, 300)
        tool("Layers")
        browser.click("input[name=contours]")
        browser.click("#search")
        browser.keys("a")
        shown = [".results", "#panel", ".pinned"]
        for count in range(3):
            self.assertEqual([browser.one(selector).is_displayed() for selector in shown], [False] * count + [True] * (3 - count))
            browser.keys(Keys.ESCAPE)
        self.assertFalse(browser.one(".pinned").is_displayed())

    def test_letters_mean_the_same_wherever_the_focus_is(self):
        browser.open(page, f"{VIEW}&{WAY}")
        self.assertEqual(len(browser.all(".way-corner")), 3)
        browser.keys("r")
        browser.wait(lambda: "relief=" in browser.fragment)
        self.assertFalse(browser.one("#panel").is_displayed())
        self.assertTrue(browser.fragment.replace(".00", ".0").endswith(WAY))
        tool("Layers")
        browser.click("input[name=contours]")
        browser.keys("r")
        browser.wait(lambda: "relief=" not in browser.fragment)
        self.assertTrue(browser.fragment.replace(".00", ".0").endswith(WAY))
        browser.keys(Keys.ESCAPE, Keys.ESCAPE)
        browser.wait(lambda: "way=" not in browser.fragment)
        # Hands that reach in while it comes down do not keep it.
        browser.keys("r")
        browser.wait(lambda: "relief=" in browser.fragment)
        browser.wait_for_calm()
        browser.driver.execute_script("""
            document.querySelector('.relief-switch').click();
            document.querySelector('canvas.relief').dispatchEvent(new WheelEvent('wheel', {deltaY: 50}));""")
        browser.wait(lambda: not browser.one("canvas.relief").is_displayed())
        self.assertEqual(browser.one("#map").get_attribute("inert"), "false")

    def test_what_is_pinned_is_announced(self):
        browser.open(page, f"{VIEW}&mark=1.0N,2.0W,Camp")
        spoken = [text for text in browser.driver.execute_script(
            "return [...document.querySelectorAll('[role=status]')].map(each => each.textContent)") if "Camp" in text]
        self.assertEqual(len(spoken), 1)
        self.assertTrue(spoken[0].startswith("Camp. 1.0N 2.0W  block 7C80  "), spoken)
        browser.click(".pinned .close")
        self.assertIn("Map.", browser.focused())


class Screens(AccessTest):
    def test_fingers_find_what_they_press(self):
        screen(320, 640, touch=True)
        browser.open(page, f"{VIEW}&{WAY}&mark=1.0N,2.0W,Camp&contours")
        browser.driver.execute_script("for (const each of document.querySelectorAll('details')) each.open = true;")
        for name in ("Measure", "Layers", "Changes", "Marks", "More", "Picture", "Relief"):
            if name != "Measure":
                tool(name)
            small = browser.driver.execute_script("""
                return [...document.querySelectorAll(arguments[0])].filter(each => each.checkVisibility() && !each.matches('.off-screen') && !each.parentElement.matches('.choice'))
                    .map(each => [each.outerHTML.slice(0, 80), each.getBoundingClientRect()]).filter(([, {width, height}]) => width < 44 || height < 44)
                    .map(([text]) => text)""", TARGETS)
            self.assertEqual(small, [], name)

    def test_a_sheet_is_drawn_up_and_down_and_hides_no_card(self):
        screen(320, 640, touch=True)
        browser.open(page, f"{VIEW}&mark=1.0N,2.0W,Camp")
        tool("Changes")
        height = lambda: browser.one("#panel").size["height"] / 640
        card, sheet = browser.boxes(".pinned")[0][1], browser.boxes("#panel")[0][1]
        self.assertLessEqual(card["bottom"], sheet["top"])
        self.assertGreater(card["top"], 56)
        for to, rest in ((120, 0.85), (300, 0.42), (620, 0)):
            top = browser.boxes("#panel")[0][1]["top"] + 8
            touch("Start", 160, top)
            for step in range(1, 6):
                touch("Move", 160, top + (to - top) * step / 5)
            touch("End")
            self.assertAlmostEqual(height(), rest, delta=0.01, msg=to)
        self.assertFalse(browser.one("#panel").is_displayed())

    def test_forced_colours_leave_what_colours_say(self):
        media(forced_colors="active", prefers_color_scheme="dark")
        browser.open(page, f"{VIEW},changes")
        tool("Changes")
        colors = browser.driver.execute_script("""
            const colorOf = selector => getComputedStyle(document.querySelector(selector)).backgroundColor;
            return [colorOf('#panel .swatch'), colorOf('.tools [aria-expanded=true]'), colorOf('.tools [aria-expanded=false]')]""")
        self.assertEqual(colors[0], "rgb(232, 168, 0)")
        self.assertNotEqual(colors[1], colors[2])

    def test_a_place_far_out_stays_in_the_middle(self):
        browser.open(page, "#at=90.00N,95.00W&zoom=-3.5")
        browser.one("#map").send_keys(Keys.ENTER)
        self.assertEqual(browser.field("coordinate", ".pinned"), "90.0N 95.0W")
        browser.one("#map").send_keys(*[Keys.ARROW_LEFT] * 3)
        browser.wait(lambda: re.search(r"at=[89]\d\.\d\dN,101\.95W", browser.fragment))


@unittest.skipUnless(AXE.exists(), "axe-core is not there: scripts/install-deps --ci")
class Axe(AccessTest):
    def check(self, name):
        """The driver may run what the page's policy would not."""
        browser.driver.execute_script(AXE.read_text() + "; window.axe = window.axe || axe;")
        found = browser.driver.execute_async_script("""
            const done = arguments[0];
            axe.run(document, {resultTypes: ['violations']}).then(({violations}) => done(violations.map(
                ({id, nodes}) => `${id}: ${nodes.map(({html}) => html.slice(0, 120)).join(' ')}`)), error => done([String(error)]))""")
        self.assertEqual(found, [], name)

    def test_finds_nothing_in_any_state(self):
        browser.driver.set_script_timeout(60)
        browser.open(page)
        self.check("first view")
        for scheme in ("light", "dark"):
            media(prefers_color_scheme=scheme)
            browser.open(page, f"{VIEW}&{WAY}&mark=1.0N,2.0W,Camp&base=slope")
            browser.one(".profile svg").send_keys(Keys.ARROW_RIGHT)
            self.check(f"{scheme}: measuring, pinned")
            next(button for button in browser.all(".pinned button") if button.text == "Mark here").click()
            self.check(f"{scheme}: marks")
            for name in ("Layers", "Changes", "Picture", "?"):
                tool(name)
                self.check(f"{scheme}: {name}")
            browser.driver.execute_script("document.querySelector('[name=swipe]')?.click()")
            browser.keys("/", "a")
            self.check(f"{scheme}: search")
            browser.keys(Keys.ESCAPE)
            browser.move(300, 500).context_click().perform()
            self.check(f"{scheme}: menu")
            browser.driver.execute_script("localStorage.clear()")
        browser.open(page, f"{VIEW},swipe,changes,contours,objects,impassable&base=difference")
        self.check("swipe, changes, legends")
        browser.open(page, f"#{MIDDLE}&zoom=0&relief=20,50")
        browser.wait_for_calm()
        self.check("relief")
        screen(390, 844, touch=True)
        browser.open(page, VIEW)
        tool("More")
        self.check("phone")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:], verbosity=2)

"""Looks at the sample world's relief in a real browser, in a small window, since a processor draws
what is meant for a graphics card.

python3 relief_test.py <plotterra-web> <world> <older world>"""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys

from archive import World
from browser import Browser, Pictures, place_of_text, text_of_place

WEB, WORLD, OLDER = (Path(word) for word in sys.argv[1:4])
BARE = "show=-changes,-grid,-blocks,-places,-dungeons,-marks"
MIDDLE = "at=1.95N,1.95W"
MIDDLE_X, MIDDLE_Y = 999.5, 1038.5
SHALLOW_SEA = 18
# Clear of the cards around the land.
ROOM_X, ROOM_Y = range(60, 500, 20), range(100, 480, 20)


def setUpModule():
    global folder, now, page, towns, browser, pictures
    folder = Path(tempfile.mkdtemp(prefix="plotterra-relief-"))
    now = World(WORLD)
    towns = [line.split(";")[2::-1] for line in (WORLD / "towns.txt").read_text().splitlines()]
    page = folder / "page.html"
    subprocess.run([WEB, "--old", OLDER, "--plot", WORLD / "towns.txt", WORLD, page], check=True, capture_output=True)
    browser = Browser(folder)
    browser.resize(800, 600)
    pictures = Pictures(browser)


def tearDownModule():
    browser.quit()
    shutil.rmtree(folder, ignore_errors=True)


def link(place, more):
    return f"#at={text_of_place(*place, 2).replace(' ', ',')}&{more}"


def summit():
    number = max(now.blocks, key=lambda number: max(now.blocks[number].heights))
    heights = now.blocks[number].heights
    element = heights.index(max(heights))
    return (number >> 8) * 8 + element // 9, (number & 0xFF) * 8 + element % 9


def heading_and_tilt():
    found = re.search(r"relief=(\d+),(\d+)", browser.fragment)
    return found and tuple(map(int, found.groups()))


class ReliefTest(unittest.TestCase):
    def tearDown(self):
        browser.driver.execute_script("localStorage.clear()")
        self.assertEqual(browser.faults(), [])


class Looks(ReliefTest):
    def test_from_above_it_has_the_flat_maps_colours(self):
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}")
        flat = browser.wait_for_calm()
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}&relief=0,0&rise=0.25&haze=0")
        relief = browser.wait_for_calm()
        spots = [(x, y) for x in ROOM_X for y in ROOM_Y]
        pairs = zip(pictures.pixels(flat, spots), pictures.pixels(relief, spots))
        close = sum(max(abs(a - b) for a, b in zip(one, other)) <= 24 for one, other in pairs)
        self.assertGreater(close, 0.8 * len(spots))
        browser.hover(400, 300)
        browser.wait(lambda: "1.9" in browser.field("coordinate") or "2.0" in browser.field("coordinate"))

    def test_its_sea_is_level(self):
        # A window at zoom 0 with much shallow sea, whose bed the flat map shows.
        def shallow(x, y):
            point = now.point(x, y)
            return point is not None and (point[0] & 0xFF) >> 2 == SHALLOW_SEA and not point[0] & 3

        def spots_around(x, y):
            return [(column, row) for column in ROOM_X for row in ROOM_Y
                    if all(shallow(x + column - 400 + step, y + 300 - row) for step in (-3, 0, 3))]

        place, spots = max((((x, y), spots_around(x, y)) for x in range(400, 1700, 200) for y in range(400, 1700, 200)),
                           key=lambda found: len(found[1]))
        self.assertGreater(len(spots), 12)
        spreads = []
        for more in ("", "&relief=0,0&haze=0"):
            browser.open(page, link(place, f"zoom=0&{BARE}{more}"))
            greens = [color[1] for color in pictures.pixels(browser.wait_for_calm(), spots)]
            spreads.append(max(greens) - min(greens))
        self.assertGreater(spreads[0], 8)
        self.assertLess(spreads[1], 4)

    def test_mountains_cast_shadows_away_from_the_light(self):
        x, y = summit()
        browser.open(page, link((x, y), f"zoom=1.5&{BARE}&relief=0,0&haze=0&light=315,20&rise=1"))
        lit = browser.wait_for_calm()
        browser.driver.execute_script("document.querySelector('.relief-settings').open = true")
        browser.click("input[name=shadows]")
        spots = [(400 + 110, 300 + 110), (400 - 90, 300 - 90)]  # south-east and north-west of the summit
        before, after = (pictures.pixels(shot, spots) for shot in (lit, browser.wait_for_calm()))
        behind, ahead = (sum(one) / sum(other) for one, other in zip(before, after))
        self.assertLess(behind, 0.8)
        self.assertGreater(ahead, 0.97)

    def test_the_sea_goes_on_around_the_world(self):
        for more in ("light=90,5", "base=height", "base=slope", "base=difference", "light=315,30&sea=200"):
            browser.open(page, link((0, 2040), f"zoom=2&{BARE}&relief=0,0&{more}"))
            inside, *outside = pictures.pixels(browser.wait_for_calm(), [(420, 320), (380, 320), (420, 280)])
            for color in outside:
                self.assertLessEqual(max(abs(a - b) for a, b in zip(inside, color)), 3, more)

    def test_a_mountain_hides_what_is_behind_it(self):
        x, y = summit()
        browser.open(page, link((x, y - 30), f"zoom=-0.5&{BARE}&relief=0,60&rise=2"))
        browser.wait_for_calm()
        last, leaps = None, []
        for row in range(480, 100, -10):
            browser.hover(400, row)
            text = browser.field("coordinate")
            north = place_of_text(text)[1] if re.search("[NS]", text) else None
            if last is not None and north is not None:
                leaps.append(north - last)
            last = north
        self.assertTrue(all(leap > -0.15 for leap in leaps), leaps)
        self.assertGreater(max(leaps), 3 * sorted(leaps)[len(leaps) // 2], "nothing is hidden")


class Steering(ReliefTest):
    def test_goes_and_comes_back_to_the_same_place(self):
        browser.open(page, "#at=30.05N,12.35W&zoom=0&show=swipe")
        browser.keys("r")
        browser.wait(lambda: "relief=" in browser.fragment)
        self.assertIn("at=30.05N,12.35W&zoom=0", browser.fragment)
        browser.wait_for_calm()
        self.assertFalse(browser.one(".swipe").is_displayed())
        browser.keys("r")
        browser.wait(lambda: "relief=" not in browser.fragment)
        self.assertIn("at=30.05N,12.35W&zoom=0", browser.fragment)
        # Called back on its way to the flat map, it stays.
        browser.tool("Relief")
        browser.wait(heading_and_tilt)
        browser.driver.execute_script("const [button] = arguments; button.click(); setTimeout(() => button.click(), 100);",
                                      browser.one(".relief-switch"))
        browser.wait_for_calm()
        self.assertTrue(browser.one("canvas.relief").is_displayed())
        self.assertEqual(heading_and_tilt(), (0, 58))

    def test_with_compass_and_buttons_at_once_where_nothing_may_move(self):
        browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-reduced-motion", "value": "reduce"}]})
        try:
            browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}&relief=140,50")
            browser.wait_for_calm()
            self.assertEqual(browser.one(".compass").accessible_name, "Looks south-east. Turn to the north")
            browser.driver.execute_script("""
                window.seen = [];
                const rose = document.querySelector('.compass g');
                new MutationObserver(() => window.seen.push(rose.getAttribute('transform'))).observe(rose, {attributes: true});""")
            browser.click(".compass")
            browser.wait(lambda: heading_and_tilt() == (0, 50))
            turns = {float(text[7:-1]) for text in browser.driver.execute_script("return window.seen")}
            self.assertEqual(turns, {0})
            for name, zoom in (("Come closer", 1), ("Come closer", 2), ("Go farther off", 1)):
                browser.click(f"[aria-label='{name}']")
                browser.wait(lambda: f"zoom={zoom}&" in browser.fragment)
        finally:
            browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})

    def test_by_keyboard_alone(self):
        name, coordinate, _ = towns[0]
        browser.open(page, f"#at={coordinate.replace(' ', ',')}&zoom=1&show=-dungeons,-changes&relief=30,40")
        browser.wait_for_calm()
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.texts(".pinned [data-field=coordinate]") == [coordinate])
        browser.keys("n")
        browser.wait(lambda: heading_and_tilt() == (0, 40))
        browser.keys(Keys.PAGE_UP)
        browser.wait(lambda: heading_and_tilt()[1] > 40)
        browser.keys(Keys.TAB)
        self.assertIn(browser.focused().split(", ")[0], [f"{kind} {town}" for town, _, kind in towns])
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.texts(".pinned h3") and f" {browser.texts('.pinned h3')[0]}, " in browser.focused())
        browser.driver.execute_script("document.querySelector('canvas.relief').focus()")
        browser.keys(Keys.HOME)
        browser.wait(lambda: "at=0.15N,0.15E" in browser.fragment)


class Names(ReliefTest):
    def test_are_chosen_by_click_until_the_sea_covers_them(self):
        name, coordinate, _ = towns[1]
        at = f"#at={coordinate.replace(' ', ',')}&zoom=1&show=-dungeons,-changes&relief=0,0"
        browser.open(page, at)
        browser.wait_for_calm()
        browser.click_at(400, 300 - 26)
        browser.wait(lambda: browser.texts(".pinned h3") == [name])
        pin = pictures.pixels(browser.wait_for_calm(), [(400 + 10, 300)])[0]
        self.assertTrue(pin[0] > 180 and pin[1] < 60, pin)
        self.assertTrue(browser.all(".relief-stops button"))
        browser.open(page, f"{at}&sea=400")
        browser.wait_for_calm()
        self.assertEqual(browser.all(".relief-stops button"), [])


class Graphics(ReliefTest):
    def test_without_them_the_flat_map_works_on(self):
        plain = Browser(folder / "plain", "--disable-3d-apis")
        try:
            plain.open(page, f"#{MIDDLE}&zoom=2&relief=20,50")
            plain.wait(lambda: any("no relief" in text for text in plain.texts(".notice")))
            self.assertFalse(plain.one(".relief-switch").is_enabled())
            plain.hover(700, 450)
            self.assertEqual(len(plain.field("block")), 4)
            self.assertEqual(plain.faults(), [])
        finally:
            plain.quit()

    def test_when_they_are_lost_the_flat_map_goes_on_where_it_was(self):
        browser.open(page, f"#{MIDDLE}&zoom=1&{BARE}&relief=20,50")
        browser.wait_for_calm()
        browser.driver.execute_script(
            "document.querySelector('canvas.relief').getContext('webgl').getExtension('WEBGL_lose_context').loseContext()")
        browser.wait(lambda: any("no room" in text for text in browser.texts(".notice")))
        browser.wait(lambda: f"{MIDDLE}&zoom=1" in browser.fragment and "relief=" not in browser.fragment)
        browser.tool("Relief")
        browser.wait(heading_and_tilt)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)

"""Looks at pages of the sample world in a real browser.

python3 page_test.py <plotterra-web> <Plotterra> <world> <older world>"""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys

from archive import World
from browser import Browser, Pictures, base64_of, place_of_text

WEB, PLOTTERRA, WORLD, OLDER = (Path(word) for word in sys.argv[1:5])
HOSTILE = ["<script>alert(1)</script>", '"><img src=x onerror=alert(1)>', "</script>", "{{land}} & <b>"]
TITLE = "Test </title><script>alert(2)</script>"
BARE = "show=-grid,-blocks,-places,-dungeons,-marks"
# Half-way between points, so that at any zoom the middle of the window is the edge of a pixel.
MIDDLE = "at=1.95N,1.95W"
MIDDLE_X, MIDDLE_Y = 999.5, 1038.5
SIZE = 2041


def run(*words):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True, text=True)


def setUpModule():
    global folder, now, page, compared, browser, pictures
    folder = Path(tempfile.mkdtemp(prefix="plotterra-web-"))
    now = World(WORLD)
    places = folder / "places.txt"
    towns = (WORLD / "towns.txt").read_text()
    places.write_text(towns + "".join(f"x;{50 + 5 * n}.0N 60.0W;{name}\n" for n, name in enumerate(HOSTILE)))
    page, compared = folder / "page.html", folder / "compared.html"
    run(WEB, "--plot", places, "--title", TITLE, WORLD, page)
    run(WEB, "--old", OLDER, WORLD, compared)
    browser = Browser(folder)
    pictures = Pictures(browser)


def tearDownModule():
    browser.quit()
    shutil.rmtree(folder, ignore_errors=True)


def text_of_place(x, y, digits=1):
    """A place in points, as the game writes it."""
    east, north = x / 10 - 101.9, y / 10 - 101.9
    return (f"{abs(north):.{digits}f}{'S' if north < 0 else 'N'} "
            f"{abs(east):.{digits}f}{'W' if east < 0 else 'E'}")


class PageTest(unittest.TestCase):
    def tearDown(self):
        self.assertEqual(browser.faults(), [])


class FlatMap(PageTest):
    def test_says_what_is_under_the_cursor(self):
        browser.open(page, f"#{MIDDLE}&zoom=3")
        seen = set()
        for column, row in ((701, 453), (403, 301), (1001, 122), (655, 777), (1210, 640)):
            # At zoom 3 a point is 8 pixels wide; the middle of the window is the corner of a point.
            x, y = MIDDLE_X + (column - 700) / 8, MIDDLE_Y - (row - 450) / 8
            browser.hover(column, row)
            kind, height = now.type_and_height(round(x), round(y))
            self.assertEqual(browser.field("coordinate"), text_of_place(x, y))
            self.assertEqual(browser.field("block"), f"{int(x // 8) << 8 | int(y // 8):04X}")
            self.assertEqual(browser.field("type"), now.type_name(kind))
            self.assertAlmostEqual(float(browser.field("height")), height, delta=height * 1e-6)
            seen.add((kind, height))
        self.assertGreater(len(seen), 2)
        browser.click_at(655, 777)
        self.assertIn(browser.field("block"), browser.one(".pinned").text)

    def test_has_the_pictures_colours(self):
        run(PLOTTERRA, WORLD, folder / "map")
        run(PLOTTERRA, "-h", WORLD, folder / "heights")
        window, left = [60, 60, 740, 700], 1000 - 700
        top = SIZE - 1 - 1038 - 450  # the middle of the window is the upper edge of the row of point 1038
        for picture, base in (("map", ""), ("heights", "&base=height")):
            browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}{base}")
            shot = browser.wait_for_calm()
            area = [window[0] + left, window[1] + top, *window[2:]]
            greatest, colors = pictures.difference(shot, base64_of(folder / f"{picture}.png"), [window, area])
            self.assertGreater(colors, 100, picture)
            self.assertLessEqual(greatest, 1, picture)

    def test_draws_near_land_between_its_points_or_as_squares(self):
        run(PLOTTERRA, "-s", "2", WORLD, folder / "large")
        window = [100, 100, 600, 600]
        area = [1000 * 2 - 700 + 100, (SIZE - 1 - 1038) * 2 - 450 + 100, 600, 600]
        for squares, most in (("", 255), (",squares", 1)):
            browser.open(page, f"#{MIDDLE}&zoom=1&{BARE}{squares}")
            shot = browser.wait_for_calm()
            # The middle of each point has its own colour either way.
            greatest, colors = pictures.difference(shot, base64_of(folder / "large.png"), [window, area])
            self.assertGreater(colors, 100)
            self.assertLessEqual(greatest, most)
            if not squares:
                self.assertGreater(greatest, 10)

    def test_layers_show_at_once(self):
        browser.open(page, f"#{MIDDLE}&zoom=-1&{BARE}")
        browser.tool("Layers")
        window = [60, 100, 900, 700]
        shots = [browser.wait_for_calm(window)]
        for name in ("contours", "roads", "snow", "water", "impassable", "objects"):
            browser.click(f"input[name={name}]")
            shots.append(browser.wait_for_calm(window))
            browser.click(f"input[name={name}]")
        browser.click("#panel input[value=slope]")
        shots.append(browser.wait_for_calm(window))
        self.assertEqual(len(set(shots)), 8)

    def test_fits_small_windows(self):
        browser.resize(390, 844)
        try:
            browser.open(page)
            for button in [*browser.all(".tools button"), browser.one("#search")]:
                box = button.rect
                self.assertTrue(0 <= box["x"] and box["x"] + box["width"] <= 390, button.text)
            # A click fails where something lies over the results.
            town = (WORLD / "towns.txt").read_text().splitlines()[0].split(";")[2]
            browser.click("#search")
            browser.keys(town)
            browser.click(".results li")
            browser.wait(lambda: browser.texts(".pinned h3") == [town])
        finally:
            browser.resize(1400, 900)


class Search(PageTest):
    def search(self, text):
        browser.keys("/")
        browser.one("#search").send_keys(Keys.CONTROL, "a")
        browser.keys(text)

    def test_finds_by_keyboard_alone(self):
        browser.open(page)
        _, coordinate, town = (WORLD / "towns.txt").read_text().splitlines()[0].split(";")
        self.search(town[:6].lower())
        self.assertEqual(browser.texts(".results .name")[0], town)
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.texts(".pinned h3") == [town])
        east, north = place_of_text(coordinate)
        self.assertEqual(browser.field("coordinate", ".pinned"), text_of_place((east + 101.9) * 10, (north + 101.9) * 10))
        at = browser.wait(lambda: re.search("at=([^&]+)&zoom=2", browser.fragment))
        self.assertEqual(place_of_text(at[1]), (east, north))

        self.search("7941")
        self.assertEqual(browser.texts(".results .kind"), ["block"])
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.field("block", ".pinned") == "7941")

        self.search("24.2s, 57e")
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.field("coordinate", ".pinned") == "24.2S 57.0E")
        self.search("no such place anywhere")
        self.assertEqual(browser.texts(".results li"), ["Nothing found"])

    def test_places_are_gone_through_by_keyboard(self):
        browser.open(page, "#at=0.0N,20.0W&zoom=0&show=-dungeons")
        browser.one("#map").send_keys(Keys.ARROW_UP)
        browser.wait(lambda: browser.field("coordinate") not in ("–", "0.0N 20.0W"))
        browser.keys(Keys.TAB)
        towns = [line.split(";") for line in (WORLD / "towns.txt").read_text().splitlines()]
        spoken = [browser.focused()]
        browser.keys(Keys.ARROW_RIGHT)
        spoken.append(browser.focused())
        self.assertLess(*(place_of_text(text)[0] for text in spoken))
        for text in spoken:
            self.assertTrue(any(text.startswith(f"place {name}, ") for *_, name in towns), text)
        browser.keys(Keys.ENTER)
        browser.wait(lambda: spoken[1].startswith(f"place {browser.texts('.pinned h3')[0]}, "))

    def test_names_are_text(self):
        browser.open(page)
        self.assertEqual(browser.driver.title, TITLE)
        for name in HOSTILE:
            self.search(name[:9])
            self.assertIn(name, browser.texts(".results .name"))
            browser.keys(Keys.ENTER)
            browser.wait(lambda: name in browser.texts(".pinned h3"))
            browser.wait(lambda: name in browser.texts(".spot .name"))
        self.assertEqual(browser.all("img"), [])


class Marks(PageTest):
    def test_are_kept_saved_loaded_and_drawn(self):
        browser.open(page, f"#{MIDDLE}&zoom=1&{BARE}&show=-grid,-dungeons,-places")
        browser.click_at(900, 300)
        next(button for button in browser.all(".pinned button") if button.text == "Mark here").click()
        browser.keys("My; camp <b>", Keys.ENTER)
        browser.click_at(300, 700)
        next(button for button in browser.all(".pinned button") if button.text == "Mark here").click()
        browser.keys("Second", Keys.ENTER)
        browser.open(page, f"#{MIDDLE}&zoom=1")
        browser.tool("Marks")
        names = [field.get_attribute("value") for field in browser.all("#panel input[type=text]")]
        self.assertEqual(names, ["My; camp <b>", "Second"])
        browser.click("#panel [aria-label='Delete Second']")

        next(button for button in browser.all("#panel button") if button.text == "Save as plot file").click()
        saved = browser.wait_for_file("*-marks.txt")
        x, y = MIDDLE_X + 200 / 2, MIDDLE_Y + 150 / 2
        self.assertEqual(saved.read_text(), f"mark;{text_of_place(x, y, 3)};My, camp <b>\n")
        picture = folder / "marked"
        log = run(PLOTTERRA, "--plot", saved, WORLD, picture).stderr
        self.assertIn("Found 1 coordinates", log)
        spot = (round(x), SIZE - 1 - round(y))
        self.assertEqual(pictures.pixels(base64_of(picture.with_suffix(".png")), [spot]), [(255, 0, 0)])

        browser.click("#panel [aria-label='Delete My; camp <b>']")
        plot = folder / "mine.txt"
        plot.write_text("a;10.0N 20.0E;One\nnonsense\nb;10.5S, 20.5W;\n")
        browser.one("#panel input[type=file]").send_keys(str(plot))
        browser.wait(lambda: [field.get_attribute("value") for field in browser.all("#panel input[type=text]")]
                     == ["One", "10.5S 20.5W"])


class Links(PageTest):
    def test_restore_the_view_in_another_window(self):
        browser.open(page, "#at=30.05N,12.34W&zoom=2&base=slope&light=90,30&show=contours,-grid&types=3,9"
                     "&mark=30.1N,12.3W,A%20%3Cb%3E%20mark")
        browser.wait_for_calm()
        browser.click(".leaflet-control-zoom-in")
        browser.wait(lambda: "zoom=3" in browser.fragment)
        fragment, shot = browser.fragment, browser.wait_for_calm()
        browser.open(page, fragment)
        self.assertEqual(browser.texts(".pinned h3"), ["A <b> mark"])
        area = [60, 60, 700, 700]
        greatest, _ = pictures.difference(shot, browser.wait_for_calm(), [area, area])
        self.assertEqual(greatest, 0)
        self.assertEqual(browser.fragment, fragment)
        browser.tool("Layers")
        for name, isOn in (("contours", True), ("grid", False), ("places", True), ("type-3", True), ("type-1", False)):
            self.assertEqual(browser.one(f"#panel input[name={name}]").is_selected(), isOn, name)

    def test_nonsense_is_left_out(self):
        browser.open(page, "#at=1N,x&zoom=oops&light=1&show=nothing,&types=a,-1,999&mark=,,&relief=a,b")
        self.assertTrue(browser.all(".land-tile"))
        self.assertEqual(browser.texts(".pinned h3"), [])


class Changes(PageTest):
    def test_are_listed_filtered_and_flown_to(self):
        before = World(OLDER)
        one, two = before.cells, now.cells
        kinds = {"Added": two.files.keys() - one.files.keys(), "Removed": one.files.keys() - two.files.keys(),
                 "Changed": {key for key in one.files.keys() & two.files.keys() if one.read(key) != two.read(key)}}
        blocks = {kind: {key >> 16 for key in keys} for kind, keys in kinds.items()}
        gone = before.blocks.keys() - now.blocks.keys()
        browser.open(compared)
        browser.tool("Changes")
        labels = browser.texts("#panel label")
        for kind, numbers in blocks.items():
            self.assertIn(f"{kind}: {len(numbers)}", labels)
        self.assertIn(f"Land gone: {len(gone)}", labels)
        self.assertTrue(gone)
        listed = {int(text, 16) for text in browser.texts(".changes code")}
        self.assertEqual(listed, set().union(*blocks.values()))
        off = next(row for row in browser.all(".changes .row") if row.text.startswith("FFFF"))
        self.assertIn("not on the map", off.text)
        self.assertFalse(off.is_enabled())
        for kind in ("changed", "added", "removed", "new"):
            browser.click(f"input[name=kind-{kind}]")
        self.assertEqual({int(text, 16) for text in browser.texts(".changes code")}, gone)

        number = min(gone)
        row = next(row for row in browser.all(".changes .row") if row.text.startswith(f"{number:04X}"))
        row.click()
        browser.wait(lambda: browser.field("block", ".pinned") == f"{number:04X}")
        middle = text_of_place((number >> 8) * 8 + 4, (number & 0xFF) * 8 + 4, 2).replace(" ", ",")
        browser.wait(lambda: f"at={middle}&zoom=2" in browser.fragment)

    def test_swipe_shows_then_and_now(self):
        # A block whose land is new: on its left half what was there before, deep sea.
        before = World(OLDER)
        number = next(number for number in sorted(now.blocks.keys() - before.blocks.keys())
                      if all(word & 0x7F != 0x50 for word in now.blocks[number].words))
        x, y = (number >> 8) * 8 + 4, (number & 0xFF) * 8 + 4
        at = text_of_place(x, y, 2).replace(" ", ",")
        browser.open(compared, f"#at={at}&zoom=4&show=swipe,-changes,-grid,-blocks,-places,-dungeons,-marks,squares")
        shot = browser.wait_for_calm()
        then, today = pictures.pixels(shot, [(700 - 40, 500), (700 + 40, 500)])
        self.assertEqual(then, (102, 134, 162))
        self.assertNotEqual(today, then)
        browser.one(".swipe").send_keys(Keys.ARROW_LEFT, Keys.ARROW_LEFT, Keys.ARROW_LEFT)
        moved, _ = pictures.pixels(browser.wait_for_calm(), [(700 - 40, 500), (0, 0)])
        self.assertNotEqual(moved, then)


class Tools(PageTest):
    def test_measure_and_profile(self):
        browser.open(page, f"#{MIDDLE}&zoom=1&{BARE}")
        browser.tool("Measure")
        for x in (500, 700, 700):
            browser.click_at(x, 400)
        browser.keys(Keys.BACKSPACE)
        browser.click_at(700, 600)
        self.assertRegex(browser.one("#panel .result").text, r"^20\.00 map units")
        self.assertTrue(browser.all("#panel .profile polyline"))

    def test_picture_is_what_is_in_view(self):
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}")
        shot = browser.wait_for_calm()
        browser.tool("Picture")
        saved = browser.wait_for_file("Test*.png")
        area = [60, 60, 740, 700]
        greatest, colors = pictures.difference(shot, base64_of(saved), [area, area])
        self.assertEqual(greatest, 0)
        self.assertGreater(colors, 100)


class Relief(PageTest):
    """In a small window, since a processor draws what is meant for a graphics card."""

    def setUp(self):
        browser.resize(800, 600)

    def tearDown(self):
        browser.resize(1400, 900)
        super().tearDown()

    def test_from_above_it_has_the_flat_maps_colours(self):
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}")
        flat = browser.wait_for_calm()
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}&relief=0,0&rise=0.25&haze=0")
        relief = browser.wait_for_calm()
        spots = [(x, y) for x in range(60, 500, 40) for y in range(100, 500, 40)]
        pairs = zip(pictures.pixels(flat, spots), pictures.pixels(relief, spots))
        close = sum(max(abs(a - b) for a, b in zip(one, other)) <= 24 for one, other in pairs)
        self.assertGreater(close, 0.8 * len(spots))
        browser.hover(400, 300)
        browser.wait(lambda: "1.9" in browser.field("coordinate") or "2.0" in browser.field("coordinate"))

    def test_a_mountain_hides_what_is_behind_it(self):
        x, y = self.summit()
        at = text_of_place(x, y - 30, 2).replace(" ", ",")
        browser.open(page, f"#at={at}&zoom=-0.5&{BARE}&relief=0,60&rise=2")
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

    def summit(self):
        number = max(now.blocks, key=lambda number: max(now.blocks[number].heights))
        heights = now.blocks[number].heights
        element = heights.index(max(heights))
        return (number >> 8) * 8 + element // 9, (number & 0xFF) * 8 + element % 9

    def test_goes_and_comes_back_to_the_same_place(self):
        browser.open(page, "#at=30.05N,12.35W&zoom=0")
        browser.keys("r")
        browser.wait(lambda: "relief=" in browser.fragment)
        self.assertIn("at=30.05N,12.35W&zoom=0", browser.fragment)
        browser.wait_for_calm()
        browser.tool("Relief")
        browser.wait(lambda: "relief=" not in browser.fragment)
        self.assertIn("at=30.05N,12.35W&zoom=0", browser.fragment)

    def test_without_webgl_the_flat_map_works_on(self):
        plain = Browser(folder / "plain", "--disable-3d-apis")
        try:
            plain.open(page, f"#{MIDDLE}&zoom=2")
            plain.tool("Relief")
            plain.wait(lambda: any("no relief" in text for text in plain.texts(".notice")))
            plain.hover(700, 450)
            self.assertEqual(len(plain.field("block")), 4)
        finally:
            plain.quit()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:], verbosity=2)

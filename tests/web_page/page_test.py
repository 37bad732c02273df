"""Looks at pages of the sample world in a real browser.

python3 page_test.py <plotterra-web> <Plotterra> <world> <older world>"""

import itertools
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys

from archive import World
from browser import Browser, Pictures, base64_of, place_of_text, text_of_place

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


class PageTest(unittest.TestCase):
    def tearDown(self):
        browser.driver.execute_script("localStorage.removeItem('plotterra layers')")
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
        # What is shown until tiles are drawn lies where they do.
        (_, box), = browser.boxes(".land-backdrop")
        self.assertAlmostEqual(box["x"], 700 - (MIDDLE_X + 0.5) * 8, delta=1)
        self.assertAlmostEqual(box["width"], SIZE * 8, delta=64)
        browser.click_at(655, 777)
        self.assertIn(browser.field("block"), browser.one(".pinned").text)

    def test_has_the_pictures_colours(self):
        run(PLOTTERRA, WORLD, folder / "map")
        run(PLOTTERRA, "-h", WORLD, folder / "heights")
        # A small window: a large one would show the sea around the world. Its middle is the corner of points 999 to the west and 1040 to the south.
        at, column, row = "at=2.15N,1.95W", 1000, SIZE - 1041
        browser.resize(400, 360)
        self.addCleanup(browser.resize, 1400, 900)
        for picture, zoom, more in (("map", -3, ""), ("map", -2, ""), ("map", -1, ""), ("map", 0, ""), ("map", 1, ",squares"),
                                    ("map", 3, ",squares"), ("heights", 0, "&base=height"), ("heights", 2, "&base=height")):
            browser.open(page, f"#{at}&zoom={zoom}&{BARE}{more}")
            shot = browser.wait_for_calm()
            greatest, colors = pictures.difference_at_scale(
                shot, base64_of(folder / f"{picture}.png"), [150, 140, 100, 60], [column, row], 2.0 ** zoom)
            self.assertGreater(colors, 5, (picture, zoom))
            self.assertLessEqual(greatest, 1, (picture, zoom))

    def test_draws_near_land_between_its_points(self):
        shots = []
        for more in ("", ",squares"):
            browser.open(page, f"#{MIDDLE}&zoom=1&{BARE}{more}")
            shots.append(browser.wait_for_calm())
        area = [100, 100, 600, 600]
        greatest, colors = pictures.difference(*shots, [area, area])
        self.assertGreater(colors, 100)
        self.assertGreater(greatest, 10)

    def test_places_are_where_the_picture_has_them(self):
        towns = [line.split(";")[:3] for line in (WORLD / "towns.txt").read_text().splitlines()]
        run(PLOTTERRA, "--plot", WORLD / "towns.txt", WORLD, folder / "plotted")
        points = [((east + 101.9) * 10, (north + 101.9) * 10) for east, north in (place_of_text(text) for _, text, _ in towns)]
        discs = pictures.pixels(base64_of(folder / "plotted.png"), [(int(x + 0.5), SIZE - 1 - int(y + 0.5)) for x, y in points])
        self.assertEqual(set(discs), {(255, 0, 0)})
        x, y = points[0]
        for zoom in (-0.75, 0, 2.75, 6):
            browser.open(page, f"#at={text_of_place(x, y, 2).replace(' ', ',')}&zoom={zoom}&show=-dungeons")
            spots = dict(browser.driver.execute_script("""
                return [...document.querySelectorAll('.spot.place')].filter(e => e.textContent).map(e => {
                    const box = e.getBoundingClientRect();
                    return [e.textContent, [box.x + box.width / 2, box.y + box.height / 2]];
                })"""))
            self.assertIn(towns[0][2], spots, zoom)
            for (_, _, name), (east, north) in zip(towns, points):
                if name in spots:
                    left, top = spots[name]
                    self.assertAlmostEqual(left, 700 + (east - x) * 2 ** zoom, delta=1.5, msg=(name, zoom))
                    self.assertAlmostEqual(top, 450 - (north - y) * 2 ** zoom, delta=1.5, msg=(name, zoom))

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
        try:
            for width, height in ((320, 640), (844, 390), (760, 500), (830, 600), (905, 600), (961, 600), (390, 844)):
                browser.resize(width, height)
                browser.open(page, f"#{MIDDLE}&zoom=1&show=contours")
                browser.keys(Keys.TAB)  # to the map, whose middle is then told
                browser.one("#map").send_keys(Keys.ENTER)
                boxes = {text: box for text, box in browser.boxes(".tools, .search, .pinned, .map-legend, .readout, .leaflet-bar, .scale-bar") if box["width"]}
                self.assertGreaterEqual(len(boxes), 5, (width, height))
                for text, box in boxes.items():
                    self.assertTrue(0 <= box["x"] and box["right"] <= width and 0 <= box["y"] and box["bottom"] <= height, (width, text, box))
                for (one, first), (other, second) in itertools.combinations(boxes.items(), 2):
                    self.assertTrue(first["right"] <= second["x"] or second["right"] <= first["x"] or
                                    first["bottom"] <= second["y"] or second["bottom"] <= first["y"], (width, one, other))
            browser.open(page)
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
        # It is framed, 8 points at zoom 2.
        browser.wait(lambda: any(abs(box["x"] - 684) < 3 and abs(box["y"] - 434) < 3 and abs(box["width"] - 34) < 3
                                 for _, box in browser.boxes("#map path")))

        self.search("24.2s, 57e")
        browser.keys(Keys.ENTER)
        browser.wait(lambda: browser.field("coordinate", ".pinned") == "24.2S 57.0E")
        self.search("e")
        for key, index in ((Keys.ARROW_UP, 29), (Keys.ARROW_UP, 28), (Keys.ARROW_DOWN, 29), (Keys.ARROW_DOWN, 0)):
            browser.keys(key)
            self.assertEqual([row.get_attribute("id") for row in browser.all(".results [aria-selected=true]")], [f"result-{index}"])
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
            self.assertTrue(any(text.startswith(f"{kind} {name}, ") for kind, _, name in towns), text)
        browser.keys(Keys.ENTER)
        browser.wait(lambda: spoken[1].split(" ", 1)[1].startswith(f"{browser.texts('.pinned h3')[0]}, "))

    def test_dungeons_at_one_spot_are_all_named_and_reached(self):
        # Two halls of the list that is built in have this entrance.
        browser.open(page, "#at=50.9S,44.4E&zoom=5&show=-places")
        names = browser.wait(lambda: browser.texts(".spot.dungeon.shared .line"))
        self.assertEqual(len(names), 2)
        browser.click(".spot.dungeon.shared")
        for name in (*names, names[0]):
            self.assertEqual(browser.texts(".pinned h3"), [name])
            browser.click(".others button")

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
        # The way until it is clear that this is no click does not count.
        browser.move(900, 300).click_and_hold().perform()
        browser.hover(904, 300)
        browser.hover(954, 350)
        browser.wait(lambda: any(box["x"] + box["width"] / 2 == 950 for _, box in browser.boxes(".spot.mark")))
        browser.move(954, 350).release().perform()

        next(button for button in browser.all("#panel button") if button.text == "Save as plot file").click()
        saved = browser.wait_for_file("*-marks.txt")
        x, y = MIDDLE_X + 250 / 2, MIDDLE_Y + 100 / 2
        self.assertEqual(saved.read_text(), f"mark;{text_of_place(x, y, 3)};My, camp <b>\n")
        picture = folder / "marked"
        log = run(PLOTTERRA, "--plot", saved, WORLD, picture).stderr
        self.assertIn("Found 1 coordinates", log)
        spot = (round(x), SIZE - 1 - round(y))
        self.assertEqual(pictures.pixels(base64_of(picture.with_suffix(".png")), [spot]), [(255, 0, 0)])

        browser.click("#panel [aria-label='Delete My; camp <b>']")
        self.assertEqual(browser.focused(), "Bring back My; camp <b>")
        browser.keys(Keys.ENTER)
        self.assertEqual(self.names(), ["My; camp <b>"])
        browser.click("#panel [aria-label='Delete My; camp <b>']")
        plot = folder / "mine.txt"
        plot.write_text("a;10.0N 20.0E;One\nnonsense\nb;10.5S, 20.5W;\n")
        browser.one("#panel input[type=file]").send_keys(str(plot))
        browser.wait(lambda: self.names() == ["One", "10.5S 20.5W"])

    def names(self):
        # At once, since the list is made anew as it scrolls.
        return browser.driver.execute_script(
            "return [...document.querySelectorAll('#panel input[type=text]')].map((field) => field.value)")

    def test_that_are_many_scroll_and_come_from_another_page(self):
        browser.open(page)
        browser.driver.execute_script("""
            const key = 'plotterra marks ' + JSON.parse(document.getElementById('description').textContent).landDigest;
            localStorage.setItem(key, JSON.stringify(Array.from({length: 10000}, (_, index) => ({x: index / 5, y: 1000, name: `Mark ${index}`}))));""")
        browser.open(page, "#at=0.0N,0.0E&zoom=0&show=-places,-dungeons")
        browser.tool("Marks")
        browser.wait(lambda: self.names()[:2] == ["Mark 0", "Mark 1"])
        first = browser.driver.current_window_handle
        self.assertLess(len(browser.all("#panel li, .spot-icon")), 300)
        browser.driver.execute_script("const list = document.querySelector('.windowed'); list.scrollTop = list.scrollHeight")
        browser.wait(lambda: self.names()[-1] == "Mark 9999")
        (_, window), (_, row) = browser.boxes("#panel .windowed, #panel li:last-child")
        self.assertAlmostEqual(row["bottom"], window["bottom"], delta=2)
        browser.click("#panel li:last-child input")
        browser.keys(Keys.END, " x", Keys.ENTER)

        browser.driver.switch_to.new_window("tab")
        try:
            browser.open(page, "#mark=1.0N,1.0E,Link")
            browser.wait(lambda: browser.texts(".pinned h3") == ["Link"])
            next(button for button in browser.all(".pinned button") if button.text == "Mark here").click()
            browser.wait(lambda: "mark=" not in browser.fragment)
            self.assertEqual(self.names()[-2:], ["Mark 9999 x", "1.0N 1.0E"])
        finally:
            browser.driver.close()
            browser.driver.switch_to.window(first)
        browser.driver.execute_script("const list = document.querySelector('.windowed'); list.scrollTop = list.scrollHeight")
        browser.wait(lambda: self.names()[-2:] == ["Mark 9999 x", "1.0N 1.0E"])
        browser.driver.execute_script("localStorage.clear()")


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


class Layers(PageTest):
    def test_are_remembered_where_the_address_says_nothing(self):
        browser.open(page, f"#{MIDDLE}&light=90,20")
        browser.tool("Layers")
        browser.click("input[name=contours]")
        button = next(button for button in browser.all("#panel button") if button.text == "As in the game")
        button.click()
        browser.wait(lambda: "show=contours" in browser.fragment and "light" not in browser.fragment)
        browser.click("#panel input[value=slope]")
        self.assertFalse(button.is_enabled())
        browser.open(page)
        browser.tool("Layers")
        self.assertTrue(browser.one("input[name=contours]").is_selected())
        self.assertTrue(browser.one("#panel input[value=slope]").is_selected())
        browser.open(page, f"#{MIDDLE}")
        self.assertEqual(browser.texts(".map-legend .entry"), [])


class Files(PageTest):
    def test_that_are_not_whole_say_so(self):
        text = page.read_text()
        land, library = text.index('id="land">') + 2000, text.index('id="relief-library">') + 2000
        letter = "A" if text[land] != "A" else "B"
        broken = folder / "broken.html"
        for content, said in ((text[:land], "cut short"), (text[:land] + letter + text[land + 1:], "altered"),
                              (text[:text.index("compose(")], "Nothing happens")):
            broken.write_text(content)
            browser.driver.get(broken.as_uri())
            browser.wait(lambda: said in browser.one("#loading").text)
        broken.write_text(text[:library])
        browser.open(broken, f"#{MIDDLE}&zoom=1")
        self.assertIn("cut short", browser.one(".notice").text)
        browser.wait_for_calm()
        # The console says what each file lacks.
        browser.faults()


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
        self.assertEqual(browser.texts(".changes-here .key")[-1], "Land gone")
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
        _, coordinate, town = (WORLD / "towns.txt").read_text().splitlines()[0].split(";")
        east, north = place_of_text(coordinate)
        browser.open(page, f"#at={coordinate.replace(' ', ',')}&zoom=1&show=-grid,-blocks,-dungeons")
        browser.tool("Measure")
        name = next(spot for spot in browser.all(".spot.place .name") if spot.text == town)
        name.click()
        for _ in range(2):  # The second is no corner of its own.
            browser.click_at(500, 450)
        self.assertRegex(browser.one("#panel .result").text, r"^10\.00 map units")
        browser.click_at(500, 650)
        browser.keys(Keys.BACKSPACE)
        self.assertTrue(browser.one("#panel .result").text.startswith("10.00 map units"))
        # A corner is dragged, as soon as a hand moved for more than a click, and moved by key.
        browser.move(500, 450).click_and_hold().move_by_offset(0, 4).move_by_offset(0, 100).pause(0.2).release().perform()
        corner = browser.all(".way-corner")[1].find_element("xpath", "..")
        corner.send_keys(Keys.ARROW_DOWN)
        there = [text_of_place((x + 101.9) * 10, (y + 101.9) * 10, 2).replace(" ", ",")
                 for x, y in ((east, north), (east - 10, north - 5.4))]
        browser.wait(lambda: browser.fragment.endswith(f"&way={','.join(there)}"))
        self.assertRegex(browser.one("#panel .result").text, r"^11\.36 map units")  # 10 across and 5.4 down
        up, across = ([(float(text), float(x), float(y)) for text, anchor, x, y in browser.driver.execute_script("""
            return [...document.querySelectorAll('.profile text')].map(
                each => [each.textContent, ...['text-anchor', 'x', 'y'].map(name => each.getAttribute(name))])""") if anchor == kind and text[0].isdigit()]
            for kind in ("end", "middle"))
        self.assertEqual([value for value, *_ in across], [0, 2, 4, 6, 8, 10])
        browser.one(".profile svg").send_keys(Keys.END)
        last = browser.one(".profile .detail").text
        self.assertTrue(last.startswith("11.36 map units: height "), last)
        x, y = map(float, browser.one(".profile polyline").get_attribute("points").split()[-1].split(","))
        self.assertEqual(x, 290)
        self.assertAlmostEqual(x, across[0][1] + (across[-1][1] - across[0][1]) * 1.1365, delta=0.2)
        (low, _, bottom), (high, _, top) = up[0], up[-1]
        self.assertLess(top, bottom)
        self.assertAlmostEqual(y + 4, bottom + (top - bottom) * (float(last.split()[-1]) - low) / (high - low), delta=3)
        self.assertEqual(float(browser.one(".profile .cursor").get_attribute("x1")), x)
        browser.one(".profile svg").send_keys(Keys.ARROW_LEFT)
        self.assertTrue(browser.one(".profile .detail").text.startswith("11.14 map units: "))
        browser.keys(Keys.ESCAPE)
        self.assertFalse(browser.all(".way-corner"))
        browser.wait(lambda: "way=" not in browser.fragment)
        browser.hover(500, 450 + 108)
        self.assertAlmostEqual(float(last.split()[-1]), float(browser.field("height")), delta=20)
        browser.click_at(500, 450 + 108)
        self.assertEqual(browser.field("coordinate", ".pinned"), text_of_place((east - 10 + 101.9) * 10, (north - 5.4 + 101.9) * 10))

    def test_picture_is_what_is_in_view(self):
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}")
        shot = browser.wait_for_calm()
        browser.tool("Picture")
        browser.click("[data-factor='1']")
        saved = browser.wait_for_file("Test*.png")
        area = [60, 60, 740, 700]
        greatest, colors = pictures.difference(shot, base64_of(saved), [area, area])
        self.assertEqual(greatest, 0)
        self.assertGreater(colors, 100)
        saved.unlink()
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE},squares")
        shot = browser.wait_for_calm()
        browser.tool("Picture")
        browser.click("[data-factor='2']")
        dense = browser.wait_for_file("Test*.png")
        greatest, _ = pictures.difference_at_scale(shot, base64_of(dense), area, [1400, 900], 0.5)
        self.assertLessEqual(greatest, 1)
        dense.unlink()
        browser.open(page, f"#{MIDDLE}&zoom=0&{BARE}&way=11.95N,1.95W,11.95N,10.05E&mark=26.95N,1.95W,Camp")
        browser.tool("Picture")
        browser.click("[data-factor='2']")
        seen = pictures.pixels(base64_of(browser.wait_for_file("Test*.png")), [(2 * 760, 2 * 350), (2 * 820, 2 * 350), (2 * 710, 2 * 200)])
        self.assertEqual(seen, [(209, 18, 44), (255, 255, 255), (209, 18, 44)])  # the way, its corner and the pin


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:], verbosity=2)

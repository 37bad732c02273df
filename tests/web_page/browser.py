"""A browser that looks at a page as a person would: opens, types, clicks, and takes pictures."""

import base64
import re
import time

from selenium import webdriver
from selenium.common.exceptions import WebDriverException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By

FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
         "--disable-background-networking --disable-component-update --disable-sync "
         "--disable-dev-shm-usage --hide-scrollbars --use-angle=swiftshader "
         "--enable-unsafe-swiftshader --window-size=1400,900").split()
PATIENCE = 100


def start(options, attempts=3):
    """A busy machine may be too slow for the driver, which gives a browser a minute to start."""
    try:
        return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    except WebDriverException:
        if attempts == 1:
            raise
        return start(options, attempts - 1)


class Browser:
    """One window of 1400 by 900 pixels, with a profile of its own in `folder`."""

    def __init__(self, folder, *flags):
        self.folder = folder
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for flag in (*FLAGS, f"--user-data-dir={folder / 'profile'}", *flags):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = start(options)
        self.resize(1400, 900)
        self.driver.execute_cdp_cmd("Browser.setDownloadBehavior",
                                    {"behavior": "allow", "downloadPath": str(folder)})

    def quit(self):
        self.driver.quit()

    def resize(self, width, height):
        self.width, self.height = width, height
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def open(self, page, fragment=""):
        """Loads a page anew and waits until it shows its map."""
        self.driver.get("about:blank")
        self.driver.get(page.as_uri() + fragment)
        self.wait(lambda: not self.all("#loading"))

    def wait(self, holds):
        """Waits until something holds, and gives it."""
        end = time.monotonic() + PATIENCE
        while True:
            value = holds()
            if value:
                return value
            if time.monotonic() > end:
                raise AssertionError(f"waited in vain; the address is {self.fragment}")
            time.sleep(0.05)

    def wait_for_calm(self, area=None):
        """Until all is drawn and two pictures of the window, or of an area `[x, y, width, height]`
        of it, a moment apart, are the same."""
        last = [None]

        def is_calm():
            time.sleep(0.2)
            self.wait(lambda: self.one("#stage").get_attribute("aria-busy") == "false")
            now = self.screenshot(area)
            is_same, last[0] = now == last[0], now
            return now if is_same else None

        return self.wait(is_calm)

    def wait_for_file(self, pattern):
        """A file that the page saved: it has its name before it has its bytes."""
        def whole():
            path = next(self.folder.glob(pattern), None)
            return path if path and path.stat().st_size > 0 else None

        return self.wait(whole)

    # -- looking

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        # At once, since the page may replace elements meanwhile.
        return self.driver.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map(e => e.innerText)", selector)

    def boxes(self, selector):
        """Of all elements: their classes, and where they are in the window."""
        return self.driver.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map(e => [e.className, e.getBoundingClientRect().toJSON()])", selector)

    def field(self, name, within=".readout"):
        return self.one(f"{within} [data-field={name}]").text

    @property
    def fragment(self):
        return self.driver.execute_script("return location.hash")

    def focused(self):
        """What a screen reader says of the element with the focus."""
        return self.driver.switch_to.active_element.accessible_name

    def screenshot(self, area=None):
        if area is None:
            return self.driver.get_screenshot_as_base64()
        clip = dict(zip(("x", "y", "width", "height"), area), scale=1)
        return self.driver.execute_cdp_cmd("Page.captureScreenshot", {"clip": clip})["data"]

    def faults(self):
        """What the console complains of: errors, and violations of the page's policy."""
        return [entry["message"] for entry in self.driver.get_log("browser")
                if entry["level"] == "SEVERE" or "Content Security Policy" in entry["message"]]

    # -- doing

    def click(self, selector):
        self.one(selector).click()

    def tool(self, name):
        next(button for button in self.all(".tools button") if button.text == name).click()

    def keys(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def hover(self, x, y):
        """To a pixel of the window."""
        self.move(x, y).perform()

    def click_at(self, x, y):
        self.move(x, y).click().perform()

    def move(self, x, y):
        actions = ActionChains(self.driver, duration=0)
        actions.w3c_actions.pointer_action.move_to_location(x, y)
        return actions


class Pictures:
    """PNG files, decoded by a browser's blank page: a reader that is not the program's."""

    SCRIPT = """
        const [one, other, areas, done] = [arguments[0], arguments[1], arguments[2], arguments[3]];
        const load = async text => {
            const image = new Image();
            image.src = 'data:image/png;base64,' + text;
            await image.decode();
            const canvas = document.createElement('canvas');
            [canvas.width, canvas.height] = [image.width, image.height];
            const context = canvas.getContext('2d', {willReadFrequently: true});
            context.drawImage(image, 0, 0);
            return context;
        };
        """

    def __init__(self, browser):
        self.driver = browser.driver

    def run(self, script, *arguments):
        window = self.driver.current_window_handle
        self.driver.switch_to.new_window("tab")
        self.driver.set_script_timeout(60)
        result = self.driver.execute_async_script(self.SCRIPT + script, *arguments)
        self.driver.close()
        self.driver.switch_to.window(window)
        return result

    def pixels(self, png, spots):
        """Red, green, blue of some pixels."""
        return [tuple(color) for color in self.run("""
            load(one).then(context => done(areas.map(
                ([x, y]) => [...context.getImageData(x, y, 1, 1).data].slice(0, 3))));
            """, png, None, spots)]

    def difference(self, one, other, areas):
        """Of two pictures' areas `[x, y, width, height]`: the greatest difference of a component,
        and how many colours the first has there, so that an empty one is noticed."""
        return self.run("""
            Promise.all([load(one), load(other)]).then(([first, second]) => {
                const [a, b] = [first.getImageData(...areas[0]).data, second.getImageData(...areas[1]).data];
                let greatest = 0;
                const colors = new Set();
                for (let at = 0; at < a.length; ++at) {
                    greatest = Math.max(greatest, Math.abs(a[at] - b[at]));
                    if (at % 4 === 0)
                        colors.add(a[at] << 16 | a[at + 1] << 8 | a[at + 2]);
                }
                done([greatest, colors.size]);
            });
            """, one, other, areas)


    def difference_at_scale(self, shot, picture, area, middle, scale):
        """Of an area of a window, in whose middle a picture's corner `middle` of pixels stands `scale` times
        as large, and that picture: as `difference`. From afar a pixel is the mean of several."""
        return self.run("""
            Promise.all([load(one), load(other)]).then(([window, picture]) => {
                const [left, top, width, height] = areas.area, [column, row] = areas.middle, {scale} = areas;
                const seen = window.getImageData(left, top, width, height).data, colors = new Set(), size = Math.max(1, 1 / scale);
                const whole = picture.getImageData(0, 0, picture.canvas.width, picture.canvas.height);
                const at = (value, middle, start) => Math.floor(start + (value - middle) / scale + 1e-6);
                let greatest = 0;
                for (let y = 0; y < height; ++y)
                    for (let x = 0; x < width; ++x) {
                        const west = at(left + x, window.canvas.width / 2, column), north = at(top + y, window.canvas.height / 2, row);
                        const sums = [0, 0, 0];
                        for (let j = 0; j < size; ++j)
                            for (let i = 0; i < size; ++i)
                                for (let part = 0; part < 3; ++part)
                                    sums[part] += whole.data[((north + j) * whole.width + west + i) * 4 + part];
                        const from = (y * width + x) * 4;
                        for (let part = 0; part < 3; ++part)
                            greatest = Math.max(greatest, Math.abs(seen[from + part] - Math.floor(sums[part] / (size * size))));
                        colors.add(seen[from] << 16 | seen[from + 1] << 8 | seen[from + 2]);
                    }
                done([greatest, colors.size]);
            });
            """, shot, picture, {"area": area, "middle": middle, "scale": scale})


def base64_of(path):
    return base64.b64encode(path.read_bytes()).decode()


def place_of_text(text):
    """Map units of `24.2S 57.0E`, east and north."""
    north, ns, east, ew = re.search(r"([\d.]+)([NS]),?\s*([\d.]+)([EW])", text).groups()
    return float(east) * (-1 if ew == "W" else 1), float(north) * (-1 if ns == "S" else 1)


def text_of_place(x, y, digits=1):
    """A place in points, as the game writes it."""
    east, north = x / 10 - 101.9, y / 10 - 101.9
    return (f"{abs(north):.{digits}f}{'S' if north < 0 else 'N'} "
            f"{abs(east):.{digits}f}{'W' if east < 0 else 'E'}")

"""Opens a page of the sample world in WebKit, the engine of Safari, on a screen that nobody sees.

python3 webkit_test.py <plotterra-web> <world> <older world>"""

import os
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.webkitgtk.options import Options

WEB, WORLD, OLDER = sys.argv[1:4]
PATIENCE = 120


def wait(what, holds):
    end = time.monotonic() + PATIENCE
    while not (value := holds()):
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.1)
    return value


def stop(process):
    process.kill()
    process.wait()


def start_screen():
    """A server with a display of its own, and the display's name."""
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1400x1000x24", "-nolisten", "tcp"],
        pass_fds=[writer], stderr=subprocess.DEVNULL)
    os.close(writer)
    with os.fdopen(reader) as lines:
        return server, f":{lines.readline().strip()}"


def start_driver(display, folder):
    """A server that steers browsers, and its address."""
    with socket.create_server(("127.0.0.1", 0)) as free:
        port = free.getsockname()[1]
    server = subprocess.Popen(
        ["WebKitWebDriver", f"--port={port}"], stderr=subprocess.DEVNULL,
        env={**os.environ, "DISPLAY": display, "HOME": folder, "XDG_RUNTIME_DIR": folder,
             "LIBGL_ALWAYS_SOFTWARE": "1", "NO_AT_BRIDGE": "1",
             # Containers seldom let a program make one, and the page is our own.
             "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS": "1"})

    def answers():
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", port)) == 0
    wait("the driver", answers)
    return server, f"http://127.0.0.1:{port}"


class WebKit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="plotterra-webkit-"))
        cls.page = Path(folder) / "page.html"
        subprocess.run([WEB, "--old", OLDER, "--plot", f"{WORLD}/towns.txt", WORLD, cls.page],
                       check=True, capture_output=True)
        screen, display = start_screen()
        cls.addClassCleanup(stop, screen)
        server, address = start_driver(display, folder)
        cls.addClassCleanup(stop, server)
        options = Options()
        options.binary_location = str(next(Path("/usr/lib").glob("*/webkit2gtk-4.*/MiniBrowser")))
        options.add_argument("--automation")
        cls.driver = webdriver.Remote(address, options=options)
        cls.addClassCleanup(cls.driver.quit)
        cls.driver.set_window_size(1400, 900)

    def look(self, script):
        return self.driver.execute_script("return " + script)

    def open(self, fragment=""):
        self.driver.get("about:blank")
        self.driver.get(self.page.as_uri() + fragment)
        wait("the land", lambda: self.look("document.querySelector('#stage[aria-busy=false]')"))
        self.assertFalse(self.driver.find_elements(By.ID, "loading"))

    def test_draws_finds_and_links(self):
        self.open()
        tiles = "document.querySelectorAll('.land-tile').length"
        wait("tiles", lambda: self.look(tiles) >= 8)
        town = Path(WORLD, "towns.txt").read_text().splitlines()[0].split(";")[2]
        self.driver.find_element(By.ID, "search").send_keys(town + Keys.ENTER)
        wait("the town", lambda: self.look("document.querySelector('.pinned h3')?.innerText") == town)
        wait("its link", lambda: "at=" in self.look("location.hash"))

    def test_shows_the_relief(self):
        self.open("#at=10.0S,60.0E&zoom=1&relief=20,55")
        wait("the relief", lambda: self.look("document.querySelector('canvas.relief')?.width > 1000"))
        self.assertEqual(self.look("[...document.querySelectorAll('.notice')].map(e => e.innerText)"), [])
        self.assertIn("relief=20,55", self.look("location.hash"))
        # A picture of land and sea does not fit into less.
        wait("a picture", lambda: len(self.driver.get_screenshot_as_png()) > 200_000)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)

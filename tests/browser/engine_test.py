"""The engine under node beside the programs: the same files, lines and statuses.

python3 engine_test.py <plotterra.mjs> <folder of the programs>"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ENGINE, PROGRAMS = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
# Of a log's line: when and who; of its text: places in memory, times taken, a system's own numbers of errors.
HEAD = re.compile(r"^\S+ \S+ \S+\[\d+:\d+\] ")
CHANGING = re.compile(r"0x[0-9a-f]+|elapsed time: .*|(?<=POSIXErrorDomain )Code=\d+")


def setUpModule():
    global scratch, world, older, damaged
    scratch = tempfile.TemporaryDirectory(prefix="plotterra-engine-")
    world, older, damaged = (Path(scratch.name, name) for name in ("world", "older", "damaged"))
    for folder, words in ((world, ()), (older, ("--older",)), (damaged, ())):
        subprocess.run([PROGRAMS / "plotterra-sample", *words, folder], check=True, capture_output=True)
    # Every 499th block of the damaged one is linked to itself.
    path = damaged / "client_cell_1.dat"
    archive = bytearray(path.read_bytes())
    for offset in range(256 * 499, len(archive), 256 * 499):
        archive[offset:offset + 4] = offset.to_bytes(4, "little")
    path.write_bytes(archive)


def tearDownModule():
    scratch.cleanup()


class Engine(unittest.TestCase):
    def both(self, words, outputs):
        """Runs both in one folder after the other and holds what they leave against each other."""
        seen = []
        for command in (["node", ENGINE, "Plotterra"], [PROGRAMS / "Plotterra"]):
            with tempfile.TemporaryDirectory(dir=scratch.name) as folder:
                run = subprocess.run([*command, *words], cwd=folder, capture_output=True, timeout=300)
                lines = [CHANGING.sub("", HEAD.sub("", line)) for line in run.stderr.decode().splitlines()]
                files = {path.name: path.read_bytes() for path in Path(folder).iterdir()}
                seen.append((run.returncode, run.stdout, lines, files))
        (engine, program) = seen
        self.assertEqual(engine[0], program[0])
        self.assertEqual(engine[1], program[1])
        self.assertEqual(engine[2], program[2])
        self.assertEqual(sorted(engine[3]), sorted(outputs))
        for name in outputs:
            self.assertTrue(engine[3][name] == program[3][name], f"{name} differs")

    def test_maps(self):
        for options in ((), ("-s", "2", "-a", "--snow"), ("-s", "8", "-w")):
            with self.subTest(options):
                self.both([*options, world, "map"], ["map.png"])

    def test_height_maps(self):
        self.both(["-h", "-s", "3", world, "map"], ["map.png"])

    def test_damaged_archives_beside_an_older_client(self):
        self.both(["--old", older, "--save-changes", "changes", damaged, "map"], ["changes", "map.png"])

    def test_what_is_not_there(self):
        self.both([world / "none", "map"], ["map.png"])
        self.both(["-s"], [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

"""Lets calls of the programs fail, the n-th of each kind in turn, and judges what becomes of the run.

    sweep.py <folder of the programs> <preloaded library> <world> <older world>
             [--seconds N] [--only TEXT] [--kinds KIND,...] [-v]

Runs every case undisturbed, on a sound world and on a damaged copy, counts its calls of each kind, and
repeats it with one of them failing, or all from one on: with --seconds as many, evenly spread, as that
time allows, else each. The kind `addresses` makes nothing fail by itself: there the run may have so many
megabytes of addresses. What must hold:

- the run ends by itself, with its usual status or that of failure
- where anything is missing that the undisturbed run has, a line says so, and the status, but for the
  one program whose status never does
- an output file is absent, the older one, or the same as undisturbed; beside it there is nothing
- nothing is said of a sound archive's soundness

A fault counts when it shows in each of three runs; one that depends on chance, as when a library's own
threads meet the end of memory, is told, and does not count.
"""

import argparse
import collections
import filecmp
import functools
import itertools
import os
import pathlib
import re
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import time

KINDS = ("memory", "map", "open", "read", "write", "close", "thread", "name", "status", "addresses")
FOREVER = 1 << 62
OLD = b"an older output\n"

# What only a damaged archive may be said to be.
DAMAGE = re.compile(r"\bloop\b|shorter than expected|does not (fall|begin)|[Bb]ad magic|cut short|damaged"
                    r"|out of order|not marked free|no archive of|not read by|does not come|used by nobody"
                    r"|left out|invalid number|failed checks|lies past|does not suit|empty slot")
# What differs between two runs that do the same.
CHANGING = re.compile(r"^\S+ \S+ [\w-]+\[\d+:\d+\] |0x[0-9a-f]{6,}|elapsed time: .*|hashed .*"
                      r"|\d+ files? written, \d+ were there")


class Case:
    """A command line, in which {world}, {older} and {out} stand for folders; `outputs` are the files that
    it writes into the last, None: any."""

    def __init__(self, name, words, outputs=(), status_tells=True):
        self.name, self.words, self.outputs, self.status_tells = name, words.split(), outputs, status_tells


CASES = (
    Case("map", "Plotterra -g --plot {towns} {world} {out}/map", ("map.png",), False),
    Case("map of changes", "Plotterra --old {older} --save-changes {out}/changes {world} {out}/map",
         ("map.png", "changes"), False),
    Case("height map", "Plotterra -h {world} {out}/map", ("map.png",), False),
    Case("check", "plotterra-data check {world}"),
    Case("list", "plotterra-data list --format json --type 0x13 {world}"),
    Case("info", "plotterra-data info {world}"),
    Case("diff", "plotterra-data diff --records {older} {world}"),
    Case("cat", "plotterra-data cat --text {world} 13000000"),
    Case("export heights", "plotterra-data export {world} heights {out}/heights.tif", ("heights.tif",)),
    Case("export roads", "plotterra-data export {world} roads {out}/roads.json", ("roads.json",)),
    Case("extract", "plotterra-data extract --type 0x04 {world} {out}/files", None),
    Case("page", "plotterra-web --old {older} --plot {towns} {world} {out}/page.html", ("page.html",)),
    Case("sample", "plotterra-sample --cells 0 {out}/world", None),
)


class Run:
    """What one run left."""

    def __init__(self, status, output, log, folder):
        self.status, self.output, self.folder = status, output, folder
        text = log.decode("utf-8", "replace")
        self.log = [CHANGING.sub("", line) for line in text.splitlines()]
        self.files = {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


    def says(self, text):
        return any(text in line for line in self.log)


class Sweep:
    def __init__(self, arguments, scratch):
        self.arguments, self.scratch = arguments, scratch
        self.calls = scratch / "calls"
        self.failures, self.chances, self.runs = [], [], 0

    def run(self, case, world, folder, kind, at, count=1):
        """With the calls of a kind from `at` on failing, none of them where that is 0."""
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        for name in case.outputs or ():
            (folder / name).write_bytes(OLD)
        self.calls.write_bytes(bytes(8 * len(KINDS)))
        places = {"world": world, "older": self.arguments.older, "out": folder,
                  "towns": self.arguments.world / "towns.txt"}
        words = [word.format(**places) for word in case.words]
        words[0] = str(self.arguments.programs / words[0])
        environment = dict(os.environ, LD_PRELOAD=str(self.arguments.preloaded.resolve()), PLOTTERRA_FAIL_KIND=kind,
                           PLOTTERRA_FAIL_AT=str(at), PLOTTERRA_FAIL_COUNT=str(count),
                           PLOTTERRA_FAIL_CALLS=str(self.calls))
        limit = None
        if kind == "addresses" and at:
            limit = functools.partial(resource.setrlimit, resource.RLIMIT_AS, (at << 20, at << 20))
        try:
            done = subprocess.run(words, env=environment, capture_output=True, timeout=300,
                                  stdin=subprocess.DEVNULL, preexec_fn=limit)
        except subprocess.TimeoutExpired as expired:
            return Run("five minutes", expired.stdout or b"", expired.stderr or b"", folder)
        return Run(done.returncode, done.stdout, done.stderr, folder)

    def faults(self, case, run, usual, is_sound):
        """What is wrong with a run beside an undisturbed one."""
        if run.status == 127 and run.says("error while loading shared libraries"):
            return
        if run.status not in (usual.status, 0 if not case.status_tells else 1):
            yield f"ends with {run.status}"
            return
        strange = run.files - usual.files
        if strange:
            yield f"leaves {sorted(strange)[:3]}"
        is_whole = run.output == usual.output and run.files == usual.files
        for name in sorted(run.files & usual.files):
            if filecmp.cmp(run.folder / name, usual.folder / name, shallow=False):
                continue
            is_whole = False
            if (run.folder / name).read_bytes() != OLD and not self.says_more(run, usual):
                yield f"{name} differs, and nothing says so"
        if not is_whole and not self.says_more(run, usual):
            yield "is not whole, and nothing says so"
        # A decoder that cannot be read is as if it were not there.
        if not is_whole and case.status_tells and run.status == 0 and not run.says(": cannot be read"):
            yield "is not whole, with status 0"
        if is_sound:
            finding = next(filter(DAMAGE.search, self.new_lines(run, usual)), None)
            if finding is not None:
                yield f"finds damage: {finding}"

    @staticmethod
    def new_lines(run, usual):
        known = set(usual.log)
        yield from (line for line in run.log if line not in known)
        known = set(usual.output.splitlines())
        yield from (line.decode("utf-8", "replace") for line in run.output.splitlines() if line not in known)

    @staticmethod
    def says_more(run, usual):
        known = set(usual.log)
        return any(line not in known for line in run.log)

    def try_thrice(self, case, world, usual, is_sound, kind, place, count):
        """The faults of a trial that has any, and whether it has some each time."""
        lines = []
        for _ in range(3):
            run = self.run(case, world, self.scratch / "out", kind, place, count)
            last = run.log[-1] if run.log else "none"
            faults = [f"{fault} (last line: {last})" for fault in self.faults(case, run, usual, is_sound)]
            if not faults:
                return lines, False
            lines = faults
        return lines, True

    def sweep(self, case, world, is_sound, seconds):
        """All calls, or as many as the time allows."""
        title = f"{case.name}, {'sound' if is_sound else 'damaged'}"
        usual = self.run(case, world, self.scratch / "usual", "", 0)
        if usual.status not in (0, 1):
            self.failures.append(f"{title}: undisturbed, it ends with {usual.status}")
            return
        counts = dict(zip(KINDS, struct.unpack(f"{len(KINDS)}Q", self.calls.read_bytes())))
        start, found, tried = time.monotonic(), len(self.failures), 0
        for kind, place, count in self.trials(counts):
            if seconds is not None and time.monotonic() - start > seconds:
                break
            tried += 1
            where = f"{place} MiB" if kind == "addresses" else f"call {place} of {counts[kind]}"
            lines, is_certain = self.try_thrice(case, world, usual, is_sound, kind, place, count)
            (self.failures if is_certain else self.chances).extend(
                f"{title}, {kind}, {where}{' and all after it' if count > 1 else ''}: {line}" for line in lines)
        self.runs += tried
        if self.arguments.verbose:
            print(f"{title}: {counts}, {tried} runs, {len(self.failures) - found} faults", flush=True)

    def trials(self, counts):
        """What is to fail, a trial of each kind in turn, those of a kind in an order that any beginning of
        it is spread evenly over the run."""
        kinds = []
        for kind in self.arguments.kinds.split(","):
            if kind == "addresses":
                kinds.append([(kind, place, 1) for place in spread(range(10, 300))])
            else:
                places = spread(range(1, counts[kind] + 1))
                kinds.append([(kind, place, count) for place in places for count in (1, FOREVER)])
        for turn in itertools.zip_longest(*kinds):
            yield from filter(None, turn)


def damaged_copy(world, folder):
    """With every 499th block of the cell archive linked to itself."""
    shutil.copytree(world, folder)
    path = folder / "client_cell_1.dat"
    archive = bytearray(path.read_bytes())
    for offset in range(256 * 499, len(archive), 256 * 499):
        archive[offset:offset + 4] = offset.to_bytes(4, "little")
    path.write_bytes(archive)
    return folder


def spread(places):
    """In the middle first, then in the middle of each half, of each quarter and so on."""
    halves = collections.deque([(0, len(places))])
    while halves:
        begin, end = halves.popleft()
        if begin < end:
            middle = (begin + end) // 2
            yield places[middle]
            halves += [(begin, middle), (middle + 1, end)]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("programs", "preloaded", "world", "older"):
        parser.add_argument(name, type=pathlib.Path)
    parser.add_argument("--seconds", type=float)
    parser.add_argument("--only", default="")
    parser.add_argument("--kinds", default=",".join(KINDS))
    parser.add_argument("-v", "--verbose", action="store_true")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        worlds = [(arguments.world, True), (damaged_copy(arguments.world, scratch / "damaged"), False)]
        jobs = [(case, world, is_sound) for case in CASES if arguments.only in case.name
                for world, is_sound in worlds if is_sound or "{world}" in case.words]
        sweep = Sweep(arguments, scratch)
        for job in jobs:
            sweep.sweep(*job, arguments.seconds / len(jobs) if arguments.seconds else None)
    for chance in sweep.chances:
        print(f"by chance: {chance}")
    for failure in sweep.failures:
        print(failure)
    print(f"{sweep.runs} runs with a failing call, {len(sweep.failures)} faults")
    return 1 if sweep.failures else 0


if __name__ == "__main__":
    sys.exit(main())

"""Measures whole runs of Plotterra beside other programs; scripts/bench builds what it needs."""

import argparse
import os
import shutil
from pathlib import Path

import tables
from cold import ColdRuns
from measure import Case, OtherWork, measure_all, paired, run, time_ratio

# Peers that take seconds are measured this often at most.
SLOW = 3
ENCODING = "encode and write"


class Bench:
    """The programs, the worlds, and the cases, each made with the peers on the same work."""

    def __init__(self, build):
        self.build = build
        self.worlds = build / "bench" / "worlds"
        self.out = build / "bench" / "out"
        self.out.mkdir(exist_ok=True)
        self.extracted = self.out / "extracted"
        self.markers = self.out / "markers.txt"
        write_markers(self.markers)
        self.cases = []
        self.own = []
        self.peers = []
        self.missing = []

    # -- Plotterra

    def plotterra(self, world, *options, cpu=None):
        output = self.out / "map.png"
        program = self.build / "Plotterra"
        command = [program, *options, self.worlds / world, output]
        return run(command, self.out, output, cpu)

    def add_own(self, name, world, *options, cpu=None):
        case = Case(name, lambda: self.plotterra(world, *options, cpu=cpu))
        self.cases.append(case)
        self.own.append(case)
        return case

    def add_page(self, world):
        """The page of a world."""
        output = self.out / "world.html"
        command = [self.build / "plotterra-web", self.worlds / world, output]
        case = Case(f"{world}, page", lambda: run(command, self.out, output))
        self.cases.append(case)
        self.own.append(case)
        return case

    def add_data(self, name, *words, statuses=(0,)):
        """A run of plotterra-data on the full-size world, its output to a file."""
        command = [self.build / "plotterra-data", *words]
        case = Case(f"full-size, {name}", lambda: run(command, self.out, statuses=statuses))
        self.cases.append(case)
        self.own.append(case)
        return case

    def add_extraction(self):
        """All land blocks to disk, and a copy of the same files. Each run makes a folder of its
        own, and they go when all is measured: ext4 lets deleted inodes rest for minutes, and just
        after a removal creating files takes several times as long."""
        shutil.rmtree(self.extracted, ignore_errors=True)
        self.extracted.mkdir()
        archive = self.worlds / "full-size" / "client_cell_1.dat"
        extract = [self.build / "plotterra-data", "extract", "--type", "WQLandBlock", archive]

        def made():
            return len(list(self.extracted.iterdir()))

        case = Case("full-size, extract all 61,774 land blocks",
                    lambda: run([*extract, self.extracted / f"{made()}"], self.out), SLOW)
        self.cases.append(case)
        self.own.append(case)
        peer = self.add_peer(
            "cp -r of the same files", case,
            lambda: run(["cp", "-r", self.extracted / "0", self.extracted / f"{made()}"], self.out),
            SLOW)
        return case, peer

    def older(self, world):
        return ("--old", self.worlds / f"{world}-older")

    def cold_runs(self):
        """Of the archives that a run walks through; of the others it reads the version alone."""
        names = ("client_cell_1.dat", "client_portal.dat")
        return [
            ColdRuns(name, [self.worlds / world / file for world in worlds for file in names],
                     lambda options=options: self.plotterra("full-size", *options))
            for name, worlds, options in (
                ("full-size, scale 1", ["full-size"], ()),
                ("full-size, scale 1, compared", ["full-size-older", "full-size"],
                 self.older("full-size")),
            )
        ]

    # -- peers

    def has(self, program):
        found = shutil.which(program) is not None
        if not found and program not in self.missing:
            self.missing.append(program)
        return found

    def add_peer(self, name, against, measure, most=None):
        """`against` is the case of Plotterra that does the same work."""
        peer = Case(name, measure, most)
        self.cases.append(peer)
        self.peers.append((peer, against))
        return peer

    def add_hillshade(self, against):
        if not self.has("gdaldem"):
            return None
        heights = self.out / "heights.tif"
        run(["gdal_translate", "-q", self.out / "heights.raw", heights], self.out)
        output = self.out / "hillshade.png"
        command = ["gdaldem", "hillshade", "-q", "-of", "PNG", heights, output]
        name = "gdaldem hillshade"
        return self.add_peer(name, against, lambda: run(command, self.out, output))

    def add_gmt(self, against):
        if not self.has("gmt"):
            return
        heights = f"{self.out / 'heights.grd'}=bf"
        run(["gmt", "grdconvert", self.out / "heights.raw", f"-G{heights}"], self.out)
        output = self.out / "grdimage.png"
        command = ["gmt", "grdimage", heights, "-I+d", "-JX20c", f"-A{output}"]
        command += ["--GMT_HISTORY=false"]
        self.add_peer("gmt grdimage -I", against, lambda: run(command, self.out, output))

    def add_libpng(self, against, scale, most=None):
        program = self.build / "plotterra_bench_libpng"

        def measure():
            outcome = run([program, self.out / "sample.png", scale], self.out)
            seconds, size = outcome.text.split()
            outcome.seconds, outcome.output_bytes = float(seconds), int(size)
            return outcome

        return self.add_peer(f"libpng, defaults, scale {scale}", against, measure, most)

    def add_libvips(self, against, scale, most=None):
        if not self.has("vips"):
            return
        picture, plain = self.out / f"scale-{scale}.v", self.out / "plain.v"
        run(["vips", "copy", self.out / "sample.png", plain], self.out)
        run(["vips", "zoom", plain, picture, scale, scale], self.out)
        output = self.out / "vips.png"
        for level in (1, 6):
            command = ["vips", "copy", picture, f"{output}[compression={level}]"]
            self.add_peer(
                f"libvips, level {level}, scale {scale}",
                against,
                lambda command=command: run(command, self.out, output),
                most,
            )

    def add_sha1(self, against, byte_count):
        if not self.has("openssl"):
            return None
        command = ["openssl", "speed", "-evp", "sha1", "-bytes", 256, "-seconds", 1]
        command += ["-multi", os.cpu_count(), "-mr"]

        def measure():
            outcome = run(command, self.out)
            totals = [line for line in outcome.text.splitlines() if line.startswith("+F:")]
            outcome.seconds = byte_count / float(totals[-1].split(":")[-1])
            return outcome

        name = f"openssl speed: SHA-1 of {tables.megabytes(byte_count)}, all cores"
        return self.add_peer(name, against, measure)

    def prepare(self):
        """Writes what peers work on; gives the number of bytes that comparing worlds hashes."""
        raw = self.out / "heights.raw"
        program = self.build / "plotterra_bench_heights"
        worlds = [self.worlds / "full-size-older", self.worlds / "full-size"]
        outcomes = [run([program, world, raw], self.out) for world in worlds]
        self.plotterra("sample")
        (self.out / "map.png").replace(self.out / "sample.png")
        return sum(int(outcome.text.split()[-1]) for outcome in outcomes)


def write_markers(path):
    places = [(row * 20 - 88, column * 20 - 92) for row in range(5) for column in range(10)]
    lines = [
        f"dot;{abs(north)}.5{'S' if north < 0 else 'N'} {abs(east)}.5{'W' if east < 0 else 'E'};"
        f"Marker {number}\n"
        for number, (north, east) in enumerate(places)
    ]
    path.write_text("".join(lines))


def peak_memory(bench):
    """The greatest peak of any scale and option, and the greatest step from scale 1 to 8."""
    lettered = ("-g", "--plot", bench.markers)
    option_sets = [(), lettered, ("-a",), ("-h",), ("-w",), ("--snow",), bench.older("sample")]
    greatest, step = 0, 0
    for options in option_sets:
        peaks = [bench.plotterra("sample", "-s", scale, *options).peak_bytes
                 for scale in range(1, 9)]
        greatest = max(greatest, *peaks)
        step = max(step, peaks[-1] - peaks[0])
    return greatest, step


def at_most(name, value, bound, figure="{:.3f}"):
    return name, figure, value, bound, value <= bound


def at_least(name, value, bound, figure="{:.2f}"):
    return name, figure, value, bound, value >= bound


def speed_up(one_core, all_cores, stage):
    return paired(one_core, all_cores, lambda one, two: one.stages[stage] / two.stages[stage])


def size_ratio(case, peer):
    return case.output_bytes / peer.output_bytes


def cold_targets(cold_runs):
    targets = []
    for cold in cold_runs:
        if cold.rounds:
            targets += [
                at_most(f"cold, {cold.name}: share of reading and a warm run", cold.ratio, 1.1),
                at_most(f"cold, {cold.name}: major faults", cold.most_faults, 499, "{:.0f}"),
            ]
    return targets


def measure(bench, rounds):
    """Measures everything and gives the rows of the table of targets."""
    hashed_bytes = bench.prepare()
    sample = bench.add_own("sample, scale 1", "sample")
    hillshade = bench.add_hillshade(sample)
    full = bench.add_own("full-size, scale 1", "full-size")
    bench.add_gmt(sample)
    libpng = bench.add_libpng(sample, 1)
    bench.add_libvips(sample, 1)
    one_core = bench.add_own("sample, scale 1, one core", "sample", cpu=0)
    large = bench.add_own("sample, scale 8", "sample", "-s", 8)
    lettered = bench.add_own("sample, scale 8, -g, 50 markers", "sample", "-s", 8, "-g", "--plot",
                             bench.markers)
    large_one_core = bench.add_own("sample, scale 8, one core", "sample", "-s", 8, cpu=0)
    bench.add_own("sample, scale 1, -g", "sample", "-g")
    bench.add_own("sample, scale 1, height map", "sample", "-h")
    bench.add_own("sample, scale 1, compared", "sample", *bench.older("sample"))
    compared = bench.add_own("full-size, scale 1, compared", "full-size",
                             *bench.older("full-size"))
    sha1 = bench.add_sha1(compared, hashed_bytes)
    libpng_large = bench.add_libpng(large, 8, SLOW)
    bench.add_libvips(large, 8, SLOW)
    page, full_page = bench.add_page("sample"), bench.add_page("full-size")
    world, older = bench.worlds / "full-size", bench.worlds / "full-size-older"
    listed = bench.add_data("list --format tsv", "list", "--format", "tsv", world)
    checked = bench.add_data("check", "check", world)
    decoded = bench.add_data("check, with a decoder in Lua for 720,000 cells", "check",
                             "--decoders", Path(__file__).parent / "decoders", world)
    differences = bench.add_data("diff", "diff", older, world, statuses=(1,))
    extracted, copied = bench.add_extraction()
    measure_all(bench.cases, rounds)
    shutil.rmtree(bench.extracted)
    peak, step = peak_memory(bench)

    targets = []
    if hillshade:
        targets += [
            at_most("sample, scale 1: share of gdaldem", time_ratio(sample, hillshade), 0.25),
            at_most("full-size, scale 1: share of gdaldem", time_ratio(full, hillshade), 0.45),
        ]
    targets.append(at_most("sample, scale 8: share of libpng's encoding",
                           time_ratio(large, libpng_large), 0.04))
    if sha1:
        targets.append(at_most("full-size, compared: share of SHA-1 alone",
                               time_ratio(compared, sha1), 1.8))
    added = paired(lettered, large, lambda one, two: one.seconds - two.seconds)
    return targets + [
        at_most("-g and 50 markers at scale 8: time added", added, 0.25, "{:.3f} s"),
        at_most("peak memory, sample, any scale and option", peak / 1e6, 96, "{:.1f} MB"),
        at_most("peak memory, scale 8 more than scale 1", step / 1e6, 24, "{:.1f} MB"),
        at_most("file at scale 1: share of libpng's", size_ratio(sample, libpng), 1.05),
        at_most("file at scale 8: share of libpng's", size_ratio(large, libpng_large), 1.20),
        at_most("page, sample: time", page.seconds, 0.15, "{:.3f} s"),
        at_most("page, full-size: time", full_page.seconds, 0.25, "{:.3f} s"),
        at_most("page, sample: peak memory", page.peak_bytes / 1e6, 120, "{:.1f} MB"),
        at_most("page, sample: file", page.output_bytes / 1e6, 5, "{:.2f} MB"),
        at_most("list --format tsv, full-size: time", listed.seconds, 0.35, "{:.3f} s"),
        at_most("check, full-size: time", checked.seconds, 1, "{:.3f} s"),
        at_most("check with 720,000 records decoded in Lua: time", decoded.seconds, 4, "{:.3f} s"),
        at_most("diff, full-size: time", differences.seconds, 0.4, "{:.3f} s"),
        at_most("extract: share of cp -r", time_ratio(extracted, copied), 1.2),
        at_least("second core: shading", speed_up(one_core, sample, "shade"), 1.7),
        at_least("second core: encoding, scale 1", speed_up(one_core, sample, ENCODING), 1.7),
        at_least("second core: encoding, scale 8", speed_up(large_one_core, large, ENCODING), 1.7),
    ]


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("build", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=int, default=7, help="runs of each case (default 7)")
    parser.add_argument("--peers", action="store_true", help="install the peers first")
    arguments = parser.parse_args()

    bench = Bench(arguments.build.resolve())
    rounds = max(arguments.runs, 1)
    others = OtherWork()
    targets = measure(bench, rounds)
    cold_runs = bench.cold_runs()
    for cold in cold_runs:
        cold.measure(rounds)
    targets += cold_targets(cold_runs)
    print(f"{os.cpu_count()} processors, of which others kept {others.processors():.2f} busy; "
          f"{arguments.runs} runs of each case.")
    tables.print_cases(bench.own)
    tables.print_cold(cold_runs)
    tables.print_peers(bench.peers)
    tables.print_targets(targets)
    for line in dict.fromkeys(line for cold in cold_runs for line in cold.left_out):
        print(f"\n{line}")
    for program in bench.missing:
        print(f"\n{program} is not installed and left out; scripts/bench --peers installs it.")
    for picture in bench.out.glob("*.v"):
        picture.unlink()


if __name__ == "__main__":
    main()

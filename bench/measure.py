"""Runs programs and says what they took."""

import os
import statistics
import time
from dataclasses import dataclass, field
from pathlib import Path


@dataclass
class Run:
    seconds: float
    peak_bytes: int = 0
    major_faults: int = 0
    output_bytes: int = 0
    stages: dict = field(default_factory=dict)
    text: str = ""


def run(command, folder, output=None, cpu=None, statuses=(0,)):
    """Runs a command to its end: whole-process wall time, peak resident memory, how often it
    waited for a page to be read, the stages that
    it reports, what it prints, and the size of the file that it makes."""
    stages = folder / "stages"
    printed = folder / "printed"
    stages.unlink(missing_ok=True)
    command = [str(word) for word in command]
    if cpu is not None:
        command = ["taskset", "-c", str(cpu), *command]
    write = os.O_WRONLY | os.O_CREAT | os.O_TRUNC
    redirections = [
        (os.POSIX_SPAWN_OPEN, 1, str(printed), write, 0o644),
        (os.POSIX_SPAWN_OPEN, 2, os.devnull, os.O_WRONLY, 0),
    ]
    environment = {**os.environ, "PLOTTERRA_STAGES": str(stages)}
    start = time.perf_counter()
    child = os.posix_spawnp(command[0], command, environment, file_actions=redirections)
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    if os.waitstatus_to_exitcode(status) not in statuses:
        raise SystemExit(f"failed: {' '.join(command)}")
    return Run(
        seconds,
        usage.ru_maxrss * 1024,
        usage.ru_majflt,
        Path(output).stat().st_size if output else 0,
        read_stages(stages),
        beginning_of(printed),
    )


def beginning_of(path):
    """A child counts its parent's memory as its own, so a listing of 50 MB is not held here."""
    with path.open() as file:
        return file.read(65536)


def read_stages(path):
    if not path.exists():
        return {}
    lines = (line.split(" ", 1) for line in path.read_text().splitlines())
    return {name: float(seconds) for seconds, name in lines}


class OtherWork:
    """How busy others keep the processors meanwhile. Whoever uses both in one program suffers from
    that more than a peer that uses one, so figures of a busy machine say little."""

    def __init__(self):
        self.start = self.now()

    @staticmethod
    def now():
        """Seconds since some time: passed, used by all, used by this program and its children."""
        user, nice, system, _, _, *interrupts = map(int, Path("/proc/stat").read_text().split()[1:9])
        used = (user + nice + system + sum(interrupts)) / os.sysconf("SC_CLK_TCK")
        return time.perf_counter(), used, sum(os.times()[:4])

    def processors(self):
        passed, used, own = (end - start for start, end in zip(self.start, self.now()))
        return max(used - own, 0) / passed


class Case:
    """Something that is measured several times; `most` bounds how often for what is slow."""

    def __init__(self, name, measure, most=None):
        self.name = name
        self.measure = measure
        self.most = most
        self.runs = []

    def median(self, value):
        return statistics.median(value(run) for run in self.runs)

    @property
    def seconds(self):
        return self.median(lambda run: run.seconds)

    @property
    def peak_bytes(self):
        return max(run.peak_bytes for run in self.runs)

    @property
    def output_bytes(self):
        return self.runs[-1].output_bytes

    def stage(self, name):
        return self.median(lambda run: run.stages.get(name, 0))

    def stage_names(self):
        return list(self.runs[-1].stages)


def paired(case, other, value):
    """The median of a value of two runs that were made in the same round."""
    return statistics.median(value(one, two) for one, two in zip(case.runs, other.runs))


def time_ratio(case, other):
    return paired(case, other, lambda one, two: one.seconds / two.seconds)


def measure_all(cases, rounds):
    """Takes the cases in turn, round by round: what disturbs the machine for a while disturbs all
    of them. A first round, without the slow ones, warms the page cache and does not count."""
    for case in cases:
        if case.most is None:
            case.measure()
    for number in range(rounds):
        for case in cases:
            if case.most is None or number < case.most:
                case.runs.append(case.measure())

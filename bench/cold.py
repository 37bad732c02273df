"""The first run of all: with nothing of the archives in the page cache."""

import os
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path
import statistics
import time

PIECE = 1 << 20
# Kilobytes that the system reads ahead: what most systems do, and much more.
READ_AHEADS = (128, 1024, 8192)


@dataclass
class Round:
    reading: float
    cold: object
    warm: object

    @property
    def ratio(self):
        return self.cold.seconds / (self.reading + self.warm.seconds)


class ColdRuns:
    """Rounds of: reading the archives in order, a cold run, a warm run.

    Files are dropped from the cache one by one, which needs no privilege; that it worked is looked
    at. Setting how much the system reads ahead needs root."""

    def __init__(self, name, archives, run):
        self.name = name
        self.archives = archives
        self.run = run
        self.rounds = []
        self.faults = {}
        self.left_out = []

    def measure(self, rounds):
        if not all(evict(path) for path in self.archives):
            self.left_out.append("Cold runs are left out: the archives stay in memory here.")
            return
        for _ in range(rounds):
            evict_all(self.archives)
            reading = seconds_of_reading(self.archives)
            evict_all(self.archives)
            cold = self.run()
            self.rounds.append(Round(reading, cold, self.run()))
        setting = read_ahead_setting(self.archives[0])
        self.faults[setting.read_text().strip()] = max(r.cold.major_faults for r in self.rounds)
        if not os.access(setting, os.W_OK):
            self.left_out.append("Other amounts of reading ahead are left out: setting them needs "
                                 "root.")
            return
        for amount in READ_AHEADS:
            with changed(setting, str(amount)):
                evict_all(self.archives)
                self.faults[str(amount)] = self.run().major_faults

    @property
    def ratio(self):
        return statistics.median(one.ratio for one in self.rounds)

    @property
    def most_faults(self):
        return max(self.faults.values())


def evict(path):
    """False where the file stays in memory all the same."""
    with open(path, "rb", buffering=0) as file:
        os.fsync(file)
        os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)
        try:
            os.preadv(file.fileno(), [bytearray(1)], path.stat().st_size // 2, os.RWF_NOWAIT)
        except BlockingIOError:
            return True
        except OSError:
            return False
    return False


def evict_all(paths):
    for path in paths:
        evict(path)


def seconds_of_reading(paths):
    piece = bytearray(PIECE)
    start = time.perf_counter()
    for path in paths:
        with open(path, "rb", buffering=0) as file:
            while file.readinto(piece):
                pass
    return time.perf_counter() - start


def read_ahead_setting(path):
    device = path.stat().st_dev
    return Path(f"/sys/class/bdi/{os.major(device)}:{os.minor(device)}/read_ahead_kb")


@contextmanager
def changed(setting, text):
    before = setting.read_text()
    setting.write_text(text)
    try:
        yield
    finally:
        setting.write_text(before)

"""Prints what was measured as tables in Markdown."""

from statistics import median

from measure import time_ratio


def milliseconds(seconds):
    return f"{seconds * 1000:.0f} ms"


def megabytes(count, digits=0):
    return f"{count / 1e6:.{digits}f} MB" if count else ""


def print_table(title, head, rows):
    cells = [head, *rows]
    widths = [max(len(row[column]) for row in cells) for column in range(len(head))]

    def line(row):
        texts = [text.ljust(width) for text, width in zip(row, widths)]
        return "| " + " | ".join(texts) + " |"

    print(f"\n{title}\n")
    print(line(head))
    print("| " + " | ".join("-" * width for width in widths) + " |")
    for row in rows:
        print(line(row))


def stages_in_order(cases):
    """Every stage that a case has, each after the one that it follows there."""
    stages = []
    for case in cases:
        place = 0
        for name in case.stage_names():
            if name not in stages:
                stages.insert(place, name)
            place = stages.index(name) + 1
    return stages


def print_cases(cases):
    stages = stages_in_order(cases)
    rows = [
        [
            case.name,
            milliseconds(case.seconds),
            megabytes(case.peak_bytes),
            megabytes(case.output_bytes, 2),
            *(f"{case.stage(name) * 1000:.1f}" if case.stage(name) else "" for name in stages),
        ]
        for case in cases
    ]
    head = ["Plotterra", "whole run", "peak memory", "file", *(f"{name} (ms)" for name in stages)]
    print_table("Whole runs, medians, and the stages inside them.", head, rows)


def print_peers(peers):
    rows = [
        [
            peer.name,
            milliseconds(peer.seconds),
            megabytes(peer.peak_bytes),
            megabytes(peer.output_bytes, 2),
            case.name,
            f"{time_ratio(case, peer):.3f}",
            f"{case.output_bytes / peer.output_bytes:.2f}" if peer.output_bytes else "",
        ]
        for peer, case in peers
    ]
    head = ["peer", "time", "peak memory", "file", "against", "ratio of time", "ratio of size"]
    print_table("Peers on the same work, in the same run.", head, rows)


def print_cold(cold_runs):
    rows = []
    for cold in cold_runs:
        if not cold.rounds:
            continue
        reading = median(one.reading for one in cold.rounds)
        warm = median(one.warm.seconds for one in cold.rounds)
        first = median(one.cold.seconds for one in cold.rounds)
        faults = (f"{count} at {amount} KB" for amount, count in cold.faults.items())
        rows.append([cold.name, milliseconds(reading), milliseconds(warm), milliseconds(first),
                     f"{cold.ratio:.2f}", ", ".join(faults)])
    head = ["Plotterra", "reading in order", "warm run", "cold run", "share of both",
            "major faults, by what the system reads ahead"]
    if rows:
        print_table("First runs, with nothing of the archives in the page cache.", head, rows)


def print_targets(targets):
    rows = [
        [name, figure.format(value), figure.format(bound), "yes" if met else "NO"]
        for name, figure, value, bound, met in targets
    ]
    print_table("Targets.", ["case", "measured", "target", "met"], rows)

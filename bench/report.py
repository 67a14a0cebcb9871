#!/usr/bin/env python3
"""Puts the results of the benchmarks into the template of docs/performance.md.

    report.py results_directory < bench/performance.md.in > docs/performance.md

A line of the template that begins with %columns names the ways of the rows that follow. A line that
begins with %row is a row of a table: label, figures and remark, separated by |. A figure is
`work:way` of a .tsv file (written by Rounds.java), the name of a benchmark in a .json file, or
`work:*` for all ways of %columns. The first figure of a row is ours. %machine stands for the
machine, %printed NAME for the output of the program NAME.
"""
import json
import os
import platform
import statistics
import sys

ABSENT = "-"


class Figure:
    def __init__(self, unit, median, low, high, ratio=None):
        self.unit, self.median, self.low, self.high, self.ratio = unit, median, low, high, ratio

    def spread(self):
        """Returns half the range from the 10th to the 90th percentile, in percent of the median."""
        return round(50 * (self.high - self.low) / self.median) if self.median else 0


def quantile(values, part):
    return sorted(values)[round(part * (len(values) - 1))]


def results(directory):
    figures = {}
    for name in sorted(os.listdir(directory)):
        path = os.path.join(directory, name)
        if name.endswith(".tsv"):
            for line in open(path):
                work, way, unit, *numbers = line.rstrip("\n").split("\t")
                figures[f"{work}:{way}"] = Figure(unit, *map(float, numbers))
        elif name.endswith(".json"):
            figures.update(google_benchmarks(path))
    return figures


def google_benchmarks(path):
    nanos = {"ns": 1, "us": 1e3, "ms": 1e6}
    runs = {}
    for run in json.load(open(path))["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        runs.setdefault(run["name"], []).append(run["real_time"] * nanos[run["time_unit"]])
        if "bytes_per_key" in run:
            runs.setdefault(run["name"] + "/bytes", []).append(run["bytes_per_key"])
    return {
        name: Figure("bytes" if name.endswith("/bytes") else "ns", statistics.median(times),
                     quantile(times, 0.1), quantile(times, 0.9))
        for name, times in runs.items()
    }


def number(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def cell(figure, ours, together):
    if figure is None:
        return ABSENT
    if figure.unit == "times":
        return f"{figure.median:.2f} ±{figure.spread()}%"
    value, unit = figure.median, figure.unit
    if unit == "ns":
        for larger in ("us", "ms"):
            if value >= 1000:
                value, unit = value / 1000, larger
    text = f"{number(value)} {unit} ±{figure.spread()}%"
    if figure is ours or not figure.median:
        return text
    # The ratios within rounds, known for one process, are better than the ratio of the medians.
    ratio = figure.ratio if together else ours.median / figure.median
    return f"{text} ({number(ratio)})"


def row(line, columns, figures):
    label, *names, remark = (part.strip() for part in line.split("|"))
    if len(names) == 1 and names[0].endswith(":*"):
        names = [names[0][:-1] + way for way in columns]
    found = [figures.get(name) for name in names]
    if found[0] is None:
        sys.exit(f"nothing was measured for {names[0]}")
    together = names[0].endswith(":ours")
    cells = [label, *(cell(each, found[0], together) for each in found)]
    return "| " + " | ".join(cells + [remark] * bool(remark)) + " |"


def machine():
    model = next((line.split(":")[1].strip() for line in open("/proc/cpuinfo")
                  if line.startswith("model name")), platform.machine())
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{os.cpu_count()} cores ({model}), {memory:.0f} GiB of memory, with a load average of "
            f"{os.getloadavg()[1]:.1f} (the benchmarks alone make about 1)")


def main():
    figures, columns = results(sys.argv[1]), []
    for line in sys.stdin:
        line = line.rstrip("\n")
        if line.startswith("%columns"):
            columns = line.split()[1:]
        elif line.startswith("%row"):
            print(row(line[len("%row"):], columns, figures))
        elif line.startswith("%printed"):
            print(open(os.path.join(sys.argv[1], line.split()[1] + ".txt")).read(), end="")
        else:
            print(line.replace("%machine", machine()))


main()

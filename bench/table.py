#!/usr/bin/env python3
"""Measures what lusymbols must cost, each row beside its reference, and prints the table.

Usage: bench/table.py FOLDER [--only TEXT] [--json FILE] [--compare FILE] [--repetitions N]

FOLDER holds the programs. Each row runs in a process of its own, so that its peak memory is its own; what a row compares
runs in the same process, in turns. Times are the shortest of the repetitions, since whatever else the machine does only adds
to them. Exit code: 0 when every row is met, 1 when one is not, 2 for wrong use or benchmarks that fail.
"""

import argparse
import dataclasses
import json
import math
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
from typing import Callable, Optional

MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
# Changes below this are never told, however quiet the machine was.
LEAST_CHANGE = 0.05


@dataclasses.dataclass(frozen=True)
class Goal:
    """A bound on one figure of a row."""
    figure: Callable[["Figures"], float]
    text: str
    bound: float
    isUpper: bool = True

    def is_met(self, figures: "Figures") -> bool:
        value = self.figure(figures)
        return value <= self.bound if self.isUpper else value >= self.bound


@dataclasses.dataclass(frozen=True)
class Row:
    """What is measured: a benchmark and its sizes, the largest last, beside a reference at the largest."""
    work: str
    ours: str
    sizes: tuple
    goals: tuple
    reference: Optional[str] = None
    unit: str = "ms"
    program: str = "lusymbols_bench"
    makes_many_files: bool = False

    def benchmarks(self):
        names = [f"{self.ours}/{size}" if size else self.ours for size in self.sizes]
        return names + ([self.reference] if self.reference else [])


class Figures:
    """What the benchmarks of a row gave; times in milliseconds."""

    def __init__(self, row: Row, runs: dict, peak_mb: float):
        self.row = row
        self.runs = runs
        self.peak_mb = peak_mb
        names = row.benchmarks()
        self.own_names = names[:len(row.sizes)]
        self.ours = self.time(self.own_names[-1])
        self.reference = self.time(row.reference) if row.reference else None

    def time(self, name: str) -> float:
        return min(self.runs[name]["ms"])

    def ratio(self) -> float:
        return self.ours / self.reference

    def counter(self, name: str) -> float:
        return self.runs[self.own_names[-1]]["counters"][name]

    def growth(self) -> Optional[float]:
        """The exponent of the size, by least squares over the sizes."""
        points = [(math.log(size), math.log(self.time(name)))
                  for size, name in zip(self.row.sizes, self.own_names) if isinstance(size, int)]
        if len(points) < 2:
            return None
        middle_x = statistics.fmean(x for x, _ in points)
        middle_y = statistics.fmean(y for _, y in points)
        return (sum((x - middle_x) * (y - middle_y) for x, y in points) / sum((x - middle_x) ** 2 for x, _ in points))

    def noise(self) -> float:
        times = self.runs[self.own_names[-1]]["ms"]
        return (statistics.median(times) - min(times)) / min(times)

    def last_step(self) -> float:
        """How many times longer the largest size takes than the one before."""
        return self.ours / self.time(self.own_names[-2])


def at_most(text: str, bound: float, figure=lambda figures: figures.ours) -> Goal:
    return Goal(figure, text, bound)


def ratio(bound: float) -> Goal:
    return Goal(Figures.ratio, f"{bound:g} x reference", bound)


def faster(times: float) -> Goal:
    return Goal(Figures.ratio, f"{times:g} x faster", 1 / times)


def megabytes_a_second(bound: float) -> Goal:
    return Goal(lambda figures: figures.counter("bytes") / figures.ours / 1e3, f"{bound:g} MB/s", bound, False)


PICTURES = "lusymbols_picture_bench"
# A disk's file system takes its time to give out again what was deleted in the last minutes, by whomever.
MEMORY_FOLDER = "/dev/shm"
MEMORY_NEEDED = 1 << 30
LIBRARY = (1000, 10000, 100000)
ROWS = (
    Row("load 100,000 entries, beside bare pugixml", "Load", LIBRARY, (ratio(1.5),), "LoadReferenceBarePugixml/100000"),
    Row("load 100,000 entries, beside libxml2", "Load", (100000,), (faster(4),), "LoadReferenceLibxml2/100000"),
    Row("load 1,000,000 entries, beside 100,000", "Load", (100000, 1000000),
        (at_most("11 x 100,000", 11, Figures.last_step),
         at_most("1.2 KB an entry", 1200, lambda figures: figures.counter("bytes_per_entry")))),
    Row("write 100,000 entries, beside libxml2", "Write", LIBRARY, (megabytes_a_second(400), faster(5)),
        "WriteReferenceLibxml2/100000"),
    Row("gallery of 100,000 entries", "Gallery", LIBRARY, (at_most("60 ms", 60),)),
    Row("move one part of 100,000; 10,000 symbols, beside 1", "MoveOnePart", ("100000/10000",), (ratio(1.25),),
        "MoveOnePart/100000/1", "ns"),
    Row("open 10,000 stamps, beside a bare parse", "OpenStamps", (1000, 10000), (ratio(3),),
        "OpenStampsReferenceBareParse/10000", makes_many_files=True),
    Row("open 10,000 symbols on parts, beside a bare parse", "OpenAttachedSymbols", (1000, 10000), (ratio(3),),
        "OpenAttachedSymbolsReferenceBareParse/10000", makes_many_files=True),
    Row("save 10,000 stamps, beside a bare parse", "SaveStamps", (1000, 10000), (ratio(3),),
        "OpenStampsReferenceBareParse/10000"),
    Row("save 10,000 symbols on parts, beside a bare parse", "SaveAttachedSymbols", (1000, 10000), (ratio(3),),
        "OpenAttachedSymbolsReferenceBareParse/10000"),
    Row("picture of 1,000,000 triangles, beside bare primary rays", "DrawPicture", ("1000000/process_time/real_time",),
        (at_most("1.5 s", 1500), at_most("600 MB", 600, lambda figures: figures.counter("peak_mb"))),
        "ReferenceBarePrimaryRays/1000000/process_time/real_time", program=PICTURES),
    Row("1,000 vector thumbnails, beside bare librsvg", "MakeThumbnails", ("1000/real_time",), (at_most("1 s", 1000),),
        "MakeThumbnailsReferenceLibrsvg/1000/real_time", program=PICTURES, makes_many_files=True),
    Row("1,000 thumbnails again", "MakeThumbnailsAgain", ("1000/real_time",), (at_most("0.1 s", 100),),
        program=PICTURES, makes_many_files=True),
    Row("a known text to a symbol", "SymbolFromKnownText", ("",), (at_most("30 ns", 30e-6),), unit="ns"),
    Row("a symbol compared", "SymbolComparison", ("",), (at_most("1 ns", 1e-6),), unit="ns"),
    Row("a symbol copied", "SymbolCopy", ("",), (at_most("1 ns", 1e-6),), unit="ns"),
    Row("a handle copied", "HandleCopy", ("iterations:20000/manual_time",), (at_most("10 ns", 10e-6),), unit="ns"),
)


class BenchmarkFault(Exception):
    pass


def environment(row: Row) -> dict:
    """With many files in memory, where there is room for them and the user has not chosen another place."""
    try:
        has_room = shutil.disk_usage(MEMORY_FOLDER).free >= MEMORY_NEEDED and os.access(MEMORY_FOLDER, os.W_OK)
    except OSError:
        has_room = False
    place = {"TMPDIR": MEMORY_FOLDER} if row.makes_many_files and has_room else {}
    return {**place, **os.environ}


def run_row(folder: str, row: Row, repetitions: int) -> Figures:
    program = os.path.join(folder, row.program)
    names = row.benchmarks()
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        command = [program, "--benchmark_filter=^(" + "|".join(names) + ")$", f"--benchmark_repetitions={repetitions}",
                   "--benchmark_enable_random_interleaving=true", f"--benchmark_out={out.name}"]
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env=environment(row))
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise BenchmarkFault(f"{row.work}: {program} ended with {process.returncode}")
        report = json.load(out)
    runs = {name: {"ms": [], "counters": {}} for name in names}
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            raise BenchmarkFault(f"{run['run_name']}: {run['error_message']}")
        if run["run_type"] == "iteration" and run["run_name"] in runs:
            runs[run["run_name"]]["ms"].append(run["real_time"] * MILLISECONDS[run["time_unit"]])
            runs[run["run_name"]]["counters"] = {key: value for key, value in run.items()
                                                 if isinstance(value, (int, float))}
    missing = [name for name in names if not runs[name]["ms"]]
    if missing:
        raise BenchmarkFault(f"{row.work}: there is no benchmark {missing[0]}")
    return Figures(row, runs, usage.ru_maxrss / 1024)


def shown(milliseconds: Optional[float], unit: str) -> str:
    if milliseconds is None:
        return ""
    value = milliseconds / MILLISECONDS[unit]
    return f"{value:.0f} {unit}" if value >= 100 else f"{value:.3g} {unit}"


def line_of(figures: Figures) -> tuple:
    row = figures.row
    growth = figures.growth()
    met = ["yes" if goal.is_met(figures) else "NO" for goal in row.goals]
    return (row.work, shown(figures.ours, row.unit), shown(figures.reference, row.unit),
            f"{figures.ratio():.2f}" if figures.reference else "", ", ".join(goal.text for goal in row.goals),
            ", ".join(met), "" if growth is None else f"{growth:.2f}", f"{figures.peak_mb:.0f} MB")


def print_table(lines: list) -> None:
    head = ("work", "ours", "reference", "ratio", "goal", "met", "growth", "peak")
    widths = [max(len(line[column]) for line in [head, *lines]) for column in range(len(head))]
    for line in [head, tuple("-" * width for width in widths), *lines]:
        print("| " + " | ".join(text.ljust(width) for text, width in zip(line, widths)) + " |")


def to_json(figures: Figures) -> dict:
    return {"ours_ms": figures.ours, "reference_ms": figures.reference, "noise": figures.noise(),
            "growth": figures.growth(), "peak_mb": figures.peak_mb,
            "met": [goal.is_met(figures) for goal in figures.row.goals]}


def print_changes(now: dict, before: dict) -> None:
    """Beyond the spread of both runs; a row without reference is compared by itself."""
    print("\nchanged beyond the noise:")
    isAny = False
    for work, new in now.items():
        old = before.get(work)
        if not old:
            continue
        change = new["ours_ms"] / old["ours_ms"] - 1
        if abs(change) > max(LEAST_CHANGE, new["noise"], old["noise"]):
            isAny = True
            print(f"  {work}: {change:+.0%} ({old['ours_ms']:.4g} ms before, {new['ours_ms']:.4g} ms now)")
    if not isAny:
        print("  nothing")


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--only", metavar="TEXT", default="", help="rows whose name holds this")
    parser.add_argument("--json", metavar="FILE", help="keep the figures")
    parser.add_argument("--compare", metavar="FILE", help="tell what changed since these figures were kept")
    parser.add_argument("--repetitions", type=int, default=5)
    return parser.parse_args()


def main() -> int:
    arguments = read_arguments()
    before = None
    if arguments.compare:
        with open(arguments.compare, encoding="utf-8") as file:
            before = json.load(file)
    rows = [row for row in ROWS if arguments.only in row.work]
    if not rows:
        print(f"table.py: no row has '{arguments.only}' in its name", file=sys.stderr)
        return 2
    results = []
    for number, row in enumerate(rows, 1):
        print(f"{number}/{len(rows)} {row.work}", file=sys.stderr)
        results.append(run_row(arguments.folder, row, arguments.repetitions))
    print_table([line_of(figures) for figures in results])
    now = {figures.row.work: to_json(figures) for figures in results}
    if arguments.json:
        with open(arguments.json, "w", encoding="utf-8") as file:
            json.dump(now, file, indent=2)
    if before is not None:
        print_changes(now, before)
    return 0 if all(met for kept in now.values() for met in kept["met"]) else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (BenchmarkFault, OSError, ValueError) as fault:
        print(f"table.py: {fault}", file=sys.stderr)
        sys.exit(2)

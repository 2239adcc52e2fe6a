#!/usr/bin/env python3
"""Counts the instructions of work whose cost must not grow unnoticed, and compares them with bench/instructions.json.

Usage: bench/instructions.py PROGRAM [--update]

Valgrind counts them, which repeats to a part in a thousand whatever else the machine does. Exit code: 0 when each is within the
margin or below, 1 when one is above, 2 for wrong use or benchmarks that fail. --update keeps the counts as the new ones: after
a change that is worth its cost, or that saves some.
"""

import argparse
import json
import os
import re
import subprocess
import sys
import tempfile

KEPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "instructions.json")
MARGIN = 0.05
# What is counted, by name: the benchmark, the operation, without what prepares and ends it, and the class whose threads count as
# well.
WORK = {
    "load 10,000 entries": ("Load/10000", "lusymbols::SymbolTemplateLoader::GetTemplateList", "PieceReading"),
    "write 10,000 entries": ("Write/10000", "lusymbols::SymbolTemplateWriter::WritePartslibraryListToXML",
                             "lusymbols::SymbolTemplateWriter"),
    "gallery of 10,000 entries": ("Gallery/10000", "lusymbols::PartslibraryUIData::Refresh",
                                  "lusymbols::PartslibraryUIData"),
    "move a part with a symbol": ("MoveOnePart/1000/1", "luk::ShapeInstance::SetLocation", "luk::ShapeInstance"),
}


class CountFault(Exception):
    pass


def count(program: str, benchmark: str, operation: str, class_of_threads: str) -> int:
    with tempfile.TemporaryDirectory() as folder:
        command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/out",
                   f"--toggle-collect={operation}(*", f"--toggle-collect=std::thread::_State_impl<*{class_of_threads}*", program,
                   f"--benchmark_filter=^{benchmark}$", "--benchmark_min_time=0.000001"]
        run = subprocess.run(command, capture_output=True, text=True, check=False)
    found = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != 0 or not found or int(found.group(1)) == 0 or "ERROR" in run.stdout:
        raise CountFault(f"{benchmark} did not run:\n{run.stderr[-2000:]}{run.stdout[-500:]}")
    return int(found.group(1))


def read_kept() -> dict:
    if not os.path.exists(KEPT):
        return {}
    with open(KEPT, encoding="utf-8") as file:
        return json.load(file)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="lusymbols_bench, built in release")
    parser.add_argument("--update", action="store_true", help="keep the counts as the new ones")
    arguments = parser.parse_args()
    counts = {work: count(arguments.program, *what) for work, what in WORK.items()}
    if arguments.update:
        with open(KEPT, "w", encoding="utf-8") as file:
            json.dump(counts, file, indent=2)
            file.write("\n")
        return 0
    kept = read_kept()
    isAnyAbove = False
    for work, instructions in counts.items():
        if work not in kept:
            raise CountFault(f"{KEPT} has no count for '{work}'; --update keeps one")
        change = instructions / kept[work] - 1
        isAnyAbove |= change > MARGIN
        remark = "TOO MANY" if change > MARGIN else "fewer: --update keeps this" if change < -MARGIN else ""
        print(f"{work:<28} {instructions:>14,} instructions  {change:+.1%}  {remark}".rstrip())
    return 1 if isAnyAbove else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (CountFault, OSError, ValueError) as fault:
        print(f"instructions.py: {fault}", file=sys.stderr)
        sys.exit(2)

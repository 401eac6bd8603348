#!/usr/bin/env python3
"""Prints the table of works and their floors; with --plot draws how they grow. See scripts/bench."""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

from daemon_memory import DaemonMemory
from plot import Panel, Series, draw

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"

# What is measured, its floor, the works, and the ratio to reach.
ROWS = [
    ("`buildOutput`, 10 streams, 17 descriptors", "output/10x17", ["unchanged", "changed"], 2.0),
    ("`buildOutput`, 20 streams, 80 descriptors", "output/20x80", ["unchanged", "changed"], 2.0),
    ("`setEITSchedule`, 9,600 events, restamped", "schedule/9600", ["first", "again"], 2.4),
    ("the same, `MainTask` told", "schedule-told/9600", ["first", "again"], 2.6),
    ("`setTOT` that restamps it", "tot/9600", ["restamp"], 1.5),
    ("`setPMT`, 10 streams, PIDs known, `MainTask` told", "pmt/10x17", ["told"], 3.0),
    ("100 `getSrvOutputData` over loopback, both ends", "round-trip/100", ["synthesis"], 1.3),
    ("table store save, 1 service", "save/1", ["file"], 1.2),
    ("table store save, 10 services", "save/10", ["file"], 1.2),
    ("table store save, 100 services", "save/100", ["file"], 1.2),
    ("start to serving, 100 stored services", "start/100", ["serving"], 1.5),
]
EVENTS = [10, 100, 1000, 10000, 100800]
EVENTS_WITH_MEMORY = EVENTS[2:]  # fewer are lost among what a page holds
SERVICES = [1, 10, 100, 1000]


class Bench:
    """The program that holds the works."""

    def __init__(self, program):
        self.program = program

    def instructions(self, work):
        with tempfile.TemporaryDirectory() as folder:
            command = ["valgrind", "--tool=callgrind", "--instr-atstart=no",
                       f"--callgrind-out-file={folder}/out.%p", self.program, "--count", work]
            run = subprocess.run(command, env={"LD_BIND_NOW": "1", "PATH": "/usr/bin:/bin"},
                                 capture_output=True, text=True, check=False)
        # A child that stands in for MainTask has a line of its own, with nothing counted.
        collected = [int(count) for count in re.findall(r"Collected : (\d+)", run.stderr)]
        if run.returncode != 0 or not collected or max(collected) == 0:
            sys.exit(f"bench: {work} cannot be counted: {run.stderr.strip()}")
        return max(collected)

    def memory(self, work):
        """(growth at the peak, growth in the end) in kB."""
        run = subprocess.run([self.program, "--memory", work], capture_output=True, text=True,
                             check=False)
        if run.returncode != 0:
            sys.exit(f"bench: {work}: {run.stderr.strip()}")
        peak, end = map(int, run.stdout.split())
        return peak, end


def print_row(work, floor, figure, ratio, target):
    verdict = "" if ratio <= target else " **missed**"
    print(f"| {work} | {floor} | {figure} | {ratio:.2f} | {target:.1f}{verdict} |", flush=True)


def print_table(bench, daemon):
    print("| work | floor | the daemon | ratio | at most |\n| --- | ---: | ---: | ---: | --- |")
    for title, name, works, target in ROWS:
        floor = bench.instructions(f"{name}/floor")
        for work in works:
            count = bench.instructions(f"{name}/{work}")
            suffix = f", {work}" if len(works) > 1 else ""
            print_row(title + suffix, f"{floor:,}", f"{count:,}", count / floor, target)
    _, one_map = bench.memory("schedule/9600/floor")
    with daemon() as measured:
        peak, held = measured.take_schedule(9600)
    for title, kilobytes, target in [("memory at its peak while taking the schedule", peak, 3.2),
                                     ("memory holding it", held, 2.1)]:
        print_row(title, f"{one_map:,} kB", f"{kilobytes:,} kB", kilobytes / one_map, target)


def plot(bench, daemon):
    def counts(pattern, sizes):
        return [(size, bench.instructions(pattern.format(size))) for size in sizes]

    memory = []
    for size in EVENTS_WITH_MEMORY:
        with daemon() as measured:
            memory.append((size, *measured.take_schedule(size)))
    panels = [
        Panel("Instructions, by events of a schedule", "events", "instructions", [
            Series("first schedule", counts("schedule/{}/first", EVENTS)),
            Series("the same again", counts("schedule/{}/again", EVENTS)),
            Series("Thrift's decoding", counts("schedule/{}/floor", EVENTS), floor=True)]),
        Panel("Instructions, by stored services", "services", "instructions", [
            Series("table store save", counts("save/{}/file", SERVICES)),
            Series("Thrift's encoding", counts("save/{}/floor", SERVICES), floor=True)]),
        Panel("Memory, by events of a schedule", "events", "kB", [
            Series("at its peak", [(size, peak) for size, peak, _ in memory]),
            Series("held", [(size, held) for size, _, held in memory]),
            Series("one decoded map", [(size, bench.memory(f"schedule/{size}/floor")[1])
                                       for size in EVENTS_WITH_MEMORY], floor=True)]),
    ]
    target = DOCS / "performance.svg"
    target.write_text(draw(panels), encoding="utf-8")
    print(f"drawn: {target}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=pathlib.Path, help="where the programs are")
    parser.add_argument("--plot", action="store_true", help="draw the growth series into docs/performance.svg")
    options = parser.parse_args()
    bench = Bench(str(options.folder / "tornel_bench"))
    work = plot if options.plot else print_table
    work(bench, lambda: DaemonMemory(options.folder))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Prints the table of works, their floors and what a former build took; with --docs puts it into docs/performance.md
and draws how works grow. See scripts/bench."""

import argparse
import dataclasses
import functools
import pathlib
import re
import subprocess
import sys
import tempfile
import typing

from daemon_memory import DaemonMemory
from plot import Panel, Series, draw

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
EVENTS = [10, 100, 1000, 10000, 100800]
EVENTS_WITH_MEMORY = EVENTS[2:]  # fewer are lost among what a page holds
SERVICES = [1, 10, 100, 1000]


class Bench:
    """The programs of a build, and what they measure; LookupError for a work that it lacks."""

    def __init__(self, folder):
        self.folder = folder
        self.program = str(folder / "tornel_bench")
        self.works = self._run(self.program, "--list").stdout.split()

    @functools.cache
    def instructions(self, work):
        with tempfile.TemporaryDirectory() as folder:
            output = self._count(work, "valgrind", "--tool=callgrind", "--instr-atstart=no",
                                 f"--callgrind-out-file={folder}/out.%p").stderr
        # A child that stands in for MainTask has a line of its own, with nothing counted.
        collected = max(map(int, re.findall(r"Collected : (\d+)", output)), default=0)
        return collected or sys.exit(f"bench: {work} cannot be counted: {output.strip()}")

    def system_calls(self, work):
        """Those between the two lines that the program writes before and after."""
        with tempfile.NamedTemporaryFile("r", encoding="ascii") as file:
            self._count(work, "strace", "-o", file.name)
            calls = [line.partition(" = ")[0].rstrip() for line in file]
        return calls.index(r'write(2, "ran\n", 4)') - calls.index(r'write(2, "run\n", 4)') - 1

    def memory(self, work):
        """By how many kB the program grows."""
        return int(self._run(self.program, "--memory", work).stdout)

    @functools.cache
    def daemon_memory(self, what):
        """By how many kB the daemon grows: at its peak, and in the end. `what`: see DaemonMemory.take."""
        if what == "requests" and "request/100/unchanged" not in self.works:
            raise LookupError(what)
        with DaemonMemory(self.folder) as daemon:
            return daemon.take(what)

    def _count(self, work, *under):
        if work not in self.works:
            raise LookupError(work)
        return self._run(*under, self.program, "--count", work)

    def _run(self, *command):
        run = subprocess.run(command, env={"LD_BIND_NOW": "1", "PATH": "/usr/bin:/bin"}, capture_output=True, text=True,
                             check=False)
        if run.returncode != 0:
            sys.exit(f"bench: {' '.join(command)}: {run.stderr.strip()}")
        return run


@dataclasses.dataclass
class Row:
    """A line of the table: what is measured, and its targets, a ratio to its floor and a figure."""
    title: str
    measure: typing.Callable[[Bench], int]
    floor: typing.Callable[[Bench], int] | None = None
    ratio: float | None = None
    figure: int | None = None

    def cells(self, bench, former):
        figure, floor = self.measure(bench), self.floor and self.floor(bench)
        ratio = floor and round(figure / floor, 2)
        limits = [f"{limit:,}" for limit in (self.ratio, self.figure) if limit]
        missed = (floor and ratio > self.ratio) or (self.figure and figure > self.figure)
        try:
            before = former and self.measure(former)
        except LookupError:
            before = None
        return [self.title, *["" if found is None else f"{found:,}" for found in (floor, before, figure)],
                f"{ratio:.2f}" if floor else "", ", ".join(limits) + (" **missed**" if missed else "")]


def counted(title, work, ratio=None, figure=None):
    """The instructions of a work, against those of its floor where there is a ratio to reach."""
    floor = work.rpartition("/")[0] + "/floor"
    return Row(title, lambda bench: bench.instructions(work), ratio and (lambda bench: bench.instructions(floor)),
               ratio, figure)


def each_further_service(bench):
    return (bench.instructions("request/100/unchanged") - bench.instructions("request/1/unchanged")) // 99


def one_map(bench):
    return bench.memory("schedule/9600/floor")


ROWS = [
    counted("request, unchanged and saved, 1 service stored", "request/1/unchanged", figure=200_000),
    counted("request, unchanged and saved, 10 stored", "request/10/unchanged"),
    counted("request, unchanged and saved, 100 stored", "request/100/unchanged"),
    Row("each further stored service", each_further_service, figure=5_000),
    counted("request, changed and saved, 100 stored", "request/100/changed", figure=1_500_000),
    counted("`setEITPresentFollowing`, one service, saved with 100", "eit-pf/100/saved", figure=857_521),
    Row("system calls of a `PIDRemap` save, 200 PIDs", lambda bench: bench.system_calls("pid-map/200/saved"),
        figure=12),
    counted("`buildOutput`, 10 streams, 17 descriptors, unchanged", "output/10x17/unchanged", 1.0),
    counted("`buildOutput`, 10 streams, 17 descriptors, changed", "output/10x17/changed", 2.0),
    counted("`buildOutput`, 20 streams, 80 descriptors, unchanged", "output/20x80/unchanged", 0.8),
    counted("`buildOutput`, 20 streams, 80 descriptors, changed", "output/20x80/changed", 1.6),
    counted("100 `getSrvOutputData` over loopback, both ends", "round-trip/100/synthesis", 1.6),
    counted("`setEITSchedule`, 9,600 events, restamped, first", "schedule/9600/first", 2.2),
    counted("`setEITSchedule`, 9,600 events, restamped, again", "schedule/9600/again", 1.5),
    counted("the same, `MainTask` told, first", "schedule-told/9600/first", 2.6),
    counted("the same, `MainTask` told, again", "schedule-told/9600/again", 2.6),
    counted("`setTOT` that restamps it", "tot/9600/restamp", 1.5),
    counted("`setPMT`, 10 streams, PIDs known, `MainTask` told", "pmt/10x17/told", 3.0),
    counted("start to serving, 100 stored services", "start/100/serving", 1.0, 49_604_654),
    Row("memory of 100 stored services, kB", lambda bench: bench.daemon_memory("requests")[1], figure=1_824),
    Row("memory at its peak while taking the schedule, kB", lambda bench: bench.daemon_memory("9600")[0], one_map, 3.2),
    Row("memory holding it, kB", lambda bench: bench.daemon_memory("9600")[1], one_map, 2.1),
]


def table(bench, former):
    """The lines, one after the other, as they are found."""
    yield "| work | floor | former | the daemon | ratio | at most |"
    yield "| --- | ---: | ---: | ---: | ---: | --- |"
    for row in ROWS:
        yield f"| {' | '.join(row.cells(bench, former))} |"


def plot(bench):
    def counts(pattern, sizes):
        return [(size, bench.instructions(pattern.format(size))) for size in sizes]

    memory = [(size, *bench.daemon_memory(str(size))) for size in EVENTS_WITH_MEMORY]
    panels = [
        Panel("Instructions, by events of a schedule", "events", "instructions", [
            Series("first schedule", counts("schedule/{}/first", EVENTS)),
            Series("the same again", counts("schedule/{}/again", EVENTS)),
            Series("Thrift's decoding", counts("schedule/{}/floor", EVENTS), floor=True)]),
        Panel("Instructions, by stored services", "services", "instructions", [
            Series("request, changed and saved", counts("request/{}/changed", SERVICES)),
            Series("request, unchanged and saved", counts("request/{}/unchanged", SERVICES))]),
        Panel("Memory, by events of a schedule", "events", "kB", [
            Series("at its peak", [(size, peak) for size, peak, _ in memory]),
            Series("held", [(size, held) for size, _, held in memory]),
            Series("one decoded map", [(size, bench.memory(f"schedule/{size}/floor")) for size in EVENTS_WITH_MEMORY],
                   floor=True)]),
    ]
    (DOCS / "performance.svg").write_text(draw(panels), encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=pathlib.Path, help="where the programs are")
    parser.add_argument("--against", type=pathlib.Path, help="where those of a former commit are")
    parser.add_argument("--docs", action="store_true", help="write docs/performance.md and draw docs/performance.svg")
    options = parser.parse_args()
    bench = Bench(options.folder)
    lines = []
    for line in table(bench, options.against and Bench(options.against)):
        print(line, flush=True)
        lines.append(line + "\n")
    if options.docs:
        page = DOCS / "performance.md"
        text = page.read_text(encoding="utf-8")
        page.write_text(re.sub(r"(^\|.*\n)+", "".join(lines), text, count=1, flags=re.MULTILINE), encoding="utf-8")
        plot(bench)


if __name__ == "__main__":
    main()

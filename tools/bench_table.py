#!/usr/bin/env python3
"""Prints results of the benches as one Markdown table, beside the goals of bench/goals.txt.

  bench_table.py [--all] RESULT.json...    --all: also the workloads that nothing measured
  bench_table.py --programs [NAME...]      the programs that these workloads (P6) or names stand for

A figure is the median over processes; ratios are rounded up.
"""
import json
import math
import os
import re
import statistics
import sys

GOALS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../bench/goals.txt")
HEAD = ("| # | workload | ours, ns | limit, ns | ratio | worst process | rivals | goal | |\n"
        "|---|---|---:|---:|---:|---:|---|---|---|")


class Goals:
    """goals.txt: `workloads` as (number, programs, what), `rows` by number."""

    def __init__(self, path=GOALS):
        self.rivals, self.workloads, self.rows = set(), [], {}
        with open(path, encoding="utf-8") as file:
            for number, line in enumerate(file, 1):
                line = line.split("#")[0].strip()
                if line and not self.take(line):
                    sys.exit(f"{path}:{number}: not understood: {line}")

    def take(self, line):
        columns = [column.strip() for column in line.split("|")]
        section = re.fullmatch(r"\[(P\d+)((?: \w+)*)\] (.+)", line)
        if line.startswith("rivals "):
            self.rivals.update(line.split()[1:])
        elif section:
            self.workloads.append((section[1], section[2].split(), section[3]))
            self.rows[section[1]] = []
        elif len(columns) == 4 and self.workloads:
            self.rows[self.workloads[-1][0]].append(columns)
        else:
            return False
        return True

    def programs(self, names):
        """What the names stand for, each once; names that are no number are programs."""
        found = {number: programs for number, programs, _ in self.workloads}
        return dict.fromkeys(program for name in names for program in found.get(name, [name]))


class Results:
    """Values of each counter of each benchmark, one a process."""

    def __init__(self, paths):
        self.runs = {}
        for path in paths:
            with open(path, encoding="utf-8") as file:
                for run in json.load(file)["benchmarks"]:
                    name = re.sub(r"/(?:manual_time|min_time:[\d.]+|iterations:\d+)", "",
                                  run["run_name"])
                    for counter, value in run.items():
                        if isinstance(value, float):
                            self.runs.setdefault(name, {}).setdefault(counter, []).append(value)

    def values(self, run, counter):
        return self.runs.get(run, {}).get(counter, [])

    def nanoseconds(self, run, contestant):
        values = self.values(run, f"{contestant} ns")
        return statistics.median(values) if values else None

    def contestants(self, run):
        return [name[:-3] for name in self.runs.get(run, {}) if name.endswith(" ns")]

    def limit(self, run):
        """The contestant that the others are measured against has no ratio."""
        return next((name for name in self.contestants(run)
                     if not self.values(run, f"{name} x")), None)


def shown(value, digits=2):
    if value is None:
        return ""
    return f"{math.ceil(value * 10 ** digits - 1e-9) / 10 ** digits:,.{digits}f}"


def verdict(goal, value, rivals):
    """The goal as shown, and whether the value meets it."""
    if not goal or value is None:
        return goal, ""
    most = rivals.get(goal) if not re.fullmatch(r"[\d.]+", goal) else float(goal)
    if most is None:
        return goal, "the rival is not there"
    return goal, "met" if value <= most else "**missed**"


def growth(results, run, ours):
    """The factor from one benchmark to the other, or None when one was not run."""
    first, last = run.removesuffix(" each").split("..")
    times = [results.nanoseconds(name, ours) for name in (first, last)]
    if None in times:
        return None
    sizes = [int(name.split("/")[1]) if run.endswith(" each") else 1 for name in (first, last)]
    return times[1] / sizes[1] / (times[0] / sizes[0])


def row(results, all_rivals, number, run, ours, goal, what):
    """One line of the table; None when nothing was measured."""
    limit, rivals, ratios, times = results.limit(run), {}, [], (None, None)
    if ".." in run:
        factor = growth(results, run, ours)
        ratios = [factor] if factor is not None else []
    elif f"{ours} ns" not in results.runs.get(run, {}):
        ratios = results.values(run, ours)
    else:
        ratios = results.values(run, f"{ours} x")
        times = results.nanoseconds(run, ours), results.nanoseconds(run, limit)
        rivals = {name: statistics.median(results.values(run, f"{name} x"))
                  for name in results.contestants(run) if name in all_rivals and name != limit}
    if not ratios:
        return None
    ratio = statistics.median(ratios)
    others = ", ".join(f"{name} {shown(value)}" for name, value in rivals.items())
    worst = shown(max(ratios)) if ".." not in run else ""
    return (f"| {number} | {what} | {shown(times[0], 1)} | {shown(times[1], 1)} | {shown(ratio)} "
            f"| {worst} | {others} | {' | '.join(verdict(goal, ratio, rivals))} |")


def unknown(results, goals):
    """What was measured and stands in no line of the goals, as rows of no number."""
    known = {(run, ours) for rows in goals.rows.values() for run, ours, _, _ in rows}
    for run in results.runs:
        for ours in results.contestants(run):
            if ours not in goals.rivals | {results.limit(run)} and (run, ours) not in known:
                yield run, ours, "", f"{run}, {ours}"


def main():
    arguments = sys.argv[1:]
    goals = Goals()
    if arguments[:1] == ["--programs"]:
        print("\n".join(goals.programs(arguments[1:])))
        return
    everything = arguments[:1] == ["--all"]
    results = Results(arguments[1 if everything else 0:])
    print(HEAD)
    for number, _, title in goals.workloads:
        lines = [row(results, goals.rivals, number, *columns)
                 or everything and f"| {number} | {columns[3]} | | | | | | {columns[2]} | **not there** |"
                 for columns in goals.rows[number]]
        lines = [line for line in lines if line]
        if lines:
            print(f"| {number} | **{title}** | | | | | | | |", *lines, sep="\n")
        elif everything:
            print(f"| {number} | **{title}** | | | | | | | **not there** |")
    for columns in unknown(results, goals):
        print(row(results, goals.rivals, "", *columns))


if __name__ == "__main__":
    main()

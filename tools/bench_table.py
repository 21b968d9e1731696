#!/usr/bin/env python3
"""Prints a Markdown table of benchmark results: the median over processes of every counter.

  bench_table.py RESULT.json...
"""
import json
import statistics
import sys

NOT_COUNTERS = {"name", "family_index", "per_family_instance_index", "run_name", "run_type",
                "repetitions", "repetition_index", "threads", "iterations", "real_time",
                "cpu_time", "time_unit"}


def collect(paths):
    """Counter values by workload, in the order of the files."""
    workloads = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                name = run["run_name"].removesuffix("/manual_time")
                for counter, value in run.items():
                    if counter not in NOT_COUNTERS:
                        workloads.setdefault(name, {}).setdefault(counter, []).append(value)
    return workloads


def main():
    print("| workload | contestant | ns | ratio to the limit |\n|---|---|---:|---:|")
    for name, counters in collect(sys.argv[1:]).items():
        for counter, values in counters.items():
            if counter.endswith(" ns"):
                contestant = counter.removesuffix(" ns")
                ratios = counters.get(f"{contestant} x")
                ratio = f"{statistics.median(ratios):.2f}" if ratios else "1"
                print(f"| {name} | {contestant} | {statistics.median(values):.1f} | {ratio} |")


if __name__ == "__main__":
    main()

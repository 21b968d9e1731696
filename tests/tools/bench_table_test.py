"""Feeds results to tools/bench_table.py, and holds bench/goals.txt to the benches that there are."""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(ROOT, "tools"))
import bench_table

RESULTS = {
    "tell/8/manual_time": {"limit ns": 10.0, "GenericNotifier ns": 15.5, "GenericNotifier x": 1.551,
                           "ValServer ns": 21.0, "ValServer x": 2.1},
    "tell/1/manual_time": {"limit ns": 10.0, "ValServer ns": 20.0, "ValServer x": 2.0,
                           "sigc++ ns": 30.0, "sigc++ x": 3.0},
    "flattening/1000/manual_time": {"limit ns": 5.0, "edit ns": 1000.0, "edit x": 2.0},
    "flattening/100000/manual_time": {"limit ns": 5.0, "edit ns": 200000.0, "edit x": 4.5},
    "wholeCopy/1000000/min_time:1.000/manual_time": {"bytes a clip": 136.3},
    "newOne/3/manual_time": {"limit ns": 1.0, "list ns": 3.0, "list x": 3.0},
}
ROWS = [
    "| P1 | 1 listener, value server | 20.0 | 10.0 | 2.00 | 2.00 | sigc++ 3.00 | sigc++ | met |",
    "| P1 | 8 listeners, notifier | 15.5 | 10.0 | 1.56 | 1.56 |  | 2.0 | met |",
    "| P1 | 8 listeners, value server | 21.0 | 10.0 | 2.10 | 2.10 |  | 2.0 | **missed** |",
    "| P6 | bytes a clip |  |  | 136.30 | 136.30 |  | 150 | met |",
    "| P8 | 100,000 clips | 200,000.0 | 5.0 | 4.50 | 4.50 |  | 4.0 | **missed** |",
    "| P8 | growth per clip, 1,000 to 100,000 |  |  | 2.00 |  |  | 1.5 | **missed** |",
    "|  | newOne/3, list | 3.0 | 1.0 | 3.00 | 3.00 |  |  |  |",
]


class BenchTable(unittest.TestCase):
    def test_results_stand_beside_their_goals(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump({"benchmarks": [{"run_name": run, **counters}
                                      for run, counters in RESULTS.items()]}, file)
            file.flush()
            printed = subprocess.run([os.path.join(ROOT, "tools/bench_table.py"), file.name],
                                     capture_output=True, text=True, check=True).stdout
        for row in ROWS:
            self.assertIn(row, printed.splitlines())
        self.assertNotIn("P13", printed)

    def test_every_goal_is_of_a_bench_that_there_is(self):
        goals = bench_table.Goals()
        self.assertEqual(sorted(goals.rows, key=lambda p: int(p[1:])), [f"P{n}" for n in range(1, 17)])
        for number, programs, _ in goals.workloads:
            source = ""
            for program in programs:
                with open(os.path.join(ROOT, f"bench/{program}.cpp"), encoding="utf-8") as file:
                    source += file.read()
            for run, *_ in goals.rows[number]:
                for name in re.findall(r"(\w+)(?:/\w+)?(?:\.\.|$)", run.removesuffix(" each")):
                    self.assertRegex(source, rf"BENCHMARK(_CAPTURE)?\({name}\b", number)


if __name__ == "__main__":
    unittest.main()

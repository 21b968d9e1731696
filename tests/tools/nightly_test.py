"""Holds the goals of tools/nightly to the tests that there are: one that names none shows nothing."""
import fnmatch
import glob
import importlib.machinery
import importlib.util
import os
import re
import sys
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(ROOT, "tools"))
loader = importlib.machinery.SourceFileLoader("nightly", os.path.join(ROOT, "tools/nightly"))
nightly = importlib.util.module_from_spec(importlib.util.spec_from_loader("nightly", loader))
sys.modules["nightly"] = nightly
loader.exec_module(nightly)


def tests_of(folder):
    """The tests of a folder, "Instance/Suite.name" where a suite has parameters, and its text."""
    text = ""
    for path in glob.glob(os.path.join(ROOT, "tests", folder, "*.cpp")):
        with open(path, encoding="utf-8") as file:
            text += file.read()
    cases = re.findall(r"^(?:TEST\w*|RC_GTEST_PROP)\((\w+), (\w+)", text, re.MULTILINE)
    return [f"{prefix}{suite}.{name}" for suite, name in cases for prefix in ("", "Any/")], text


class Nightly(unittest.TestCase):
    def test_every_goal_names_tests_that_there_are(self):
        for goal in nightly.GOALS:
            for step in goal.steps:
                if isinstance(step, nightly.Gtest):
                    names, text = tests_of(step.folder)
                    for pattern in step.tests.split(":"):
                        self.assertTrue(fnmatch.filter(names, pattern), f"{goal.number}: {pattern}")
                    self.assertIn(f'RecordProperty("{step.counted}"' if step.counted else "", text)

    def test_a_goal_is_met_by_enough_and_nothing_absent(self):
        class Step:
            def __init__(self, ok, *counts):
                self.outcome = nightly.Outcome(ok, list(counts), 1)

            def run(self, log):
                return self.outcome

        nightly.Log = lambda name: type("Log", (), {"path": "log"})
        rows = [
            (nightly.Goal("A", "a", [Step(True, 3, 4)], "kills", 7), True, "7 of 7 kills"),
            (nightly.Goal("A", "a", [Step(True, 3, 4)], "kills", 8), False, "too few"),
            (nightly.Goal("A", "a", [Step(True, 3, 9)], "each", 4, each=True), False, "3 of 4"),
            (nightly.Goal("A", "a", [Step(True)]), True, "1 tests"),
            (nightly.Goal("A", "a", [Step(True), Step(False)]), False, "failed, see log"),
            (nightly.Goal("A", "a", [Step(True)], absent="more"), False, "not there: more"),
        ]
        for goal, met, said in rows:
            with self.subTest(said):
                line, found = goal.run()
                self.assertEqual(found, met)
                self.assertIn(said, line)


if __name__ == "__main__":
    unittest.main()

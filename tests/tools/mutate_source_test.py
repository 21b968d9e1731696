"""Has tools/mutate_source.py put changes into a program, and runs it with each of them."""
import os
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
TOOLS = os.path.abspath(os.path.join(os.path.dirname(__file__), "../../tools"))
sys.path.insert(0, TOOLS)
import mutate_source

# (body of a function, what is changed in it, what it gives, what it gives then); `three`, `list`
# and `text` are there, and a change is made where the text that is to be changed stands first.
ROWS = [
    ("return three < 3 ? 5 : 6;", " < ", 6, 5),
    ("return three <= 3 ? 5 : 6;", " <= ", 5, 6),
    ("return list.size() > 2 ? 5 : 6;", " > ", 6, 5),
    ("return three >= three ? 5 : 6;", " >= ", 5, 6),
    ("const int* none = nullptr; return none == nullptr ? 5 : 6;", " == ", 5, 6),
    ("return text != \"ab\" ? 5 : 6;", " != ", 6, 5),
    ("return 10 - three + 2 * 2;", " + ", 11, 3),
    ("return 10 - three - 1;", " - ", 6, 12),
    ("int sum = 1; sum += three; return sum;", " += ", 4, -2),
    ("for (int i : list) { if (i == 1) continue; return i; } return 0;", "continue;", 2, 0),
    ("int at = 0; return three + at;", " = 0;", 3, 4),
    ("int at = 1; return at;", " = 1;", 1, 0),
    ("return 0;", "return 0;", 0, 1),
    ("bool known = false; return known;", "false", 0, 1),
    ("return list.empty() ? 5 : true;", "true", 1, 0),
    ("if (!list.empty() && three == 3) return 5; return 6;", "(!", 5, 6),
    ("int at = 7; const int was = at++; return 10 * was + at;", "++", 78, 76),
    ("int at = 7; ++at; return at;", "++", 8, 6),
    ("if (three == 3 && list.empty()) return 5; return 6;", " && ", 6, 5),
    ("int at = 7; at += three == 3 && list.empty(); return at;", " && ", 7, 8),
    ("return std::any_of(list.begin(), list.end(), [&](int i) { return i > 1 || i == three; });",
     " || ", 1, 0),
    ("const bool no = three == 3 || (list.empty() && three > 1); return no ? 5 : 6;", " || ", 5, 6),
    ("int calls = 0; const auto call = [&] { ++calls; return true; };"
     " if (list.empty() && call()) return 9; return calls;", " && ", 0, 9),
]
PROGRAM = """#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>
const std::vector<int> list{1, 2};
const std::string text = "ab";
int three(3);
"""


class MutateSource(unittest.TestCase):
    def test_each_change_is_made_where_it_is_switched_on(self):
        text, changes = PROGRAM, []
        for number, (body, old, _, _) in enumerate(ROWS):
            head = f"int row{number}() {{\n    "
            found = [begin for begin, there in mutate_source.sites(head + body + "\n}\n")
                     if there == old]
            changes.append((number, len(text) + found[0]))
            text += head + body + "\n}\n"
        calls = "".join(f'    std::printf("%d ", row{number}());\n' for number in range(len(ROWS)))
        text += f"int main() {{\n{calls}}}\n"
        plain = [row[2] for row in ROWS]
        with tempfile.TemporaryDirectory() as folder:
            source, program = os.path.join(folder, "rows.cpp"), os.path.join(folder, "rows")
            with open(source, "w", encoding="utf-8") as file:
                file.write(mutate_source.mutated(text, changes, os.path.join(TOOLS, "mutants.h")))
            subprocess.run([os.environ.get("CXX", "c++"), "-std=c++20", source, "-o", program],
                           check=True)
            for active in range(-1, len(ROWS)):
                printed = subprocess.run([program], capture_output=True, text=True, check=True,
                                         env={"CUTROOM_MUTANT": str(active)}).stdout
                expected = plain[:]
                if active >= 0:
                    expected[active] = ROWS[active][3]
                self.assertEqual([int(word) for word in printed.split()], expected, active)


if __name__ == "__main__":
    unittest.main()

"""Plants one fault at a time into a small tree and expects tools/check_layers.py to name it."""
import os
import subprocess
import sys
import tempfile
import unittest

CHECK = os.path.join(os.path.dirname(__file__), "../../tools/check_layers.py")
LAYERS = """
layer low
layer middle
layer high
layer out
forbid high/* middle
contract high/iDoor.h low
library zlib zlib.h
use zlib low/Packed.cpp
"""
SOUND = {
    "low/Base.h": '#pragma once\n#include <string>\n',
    "low/Packed.cpp": '#include "low/Base.h"\n#include <zlib.h>\n',
    "middle/Room.h": '#pragma once\n#include "low/Base.h"\n#include "high/iDoor.h"\n',
    "high/iDoor.h": '#pragma once\n#include "low/Base.h"\n',
    "high/iDoor.cpp": '#include "high/iDoor.h"\n',
    "out/Out.cpp": '#include "middle/Room.h"\n',
}
H = "#pragma once\n"
FAULTS = [
    ("upward", {"low/Base.h": H + '#include "middle/Room.h"\n'}, "low/Base.h:2: \"middle/Room.h\" lies"),
    ("contract upward", {"high/iDoor.h": H + '#include "middle/Room.h"\n'}, "lies higher"),
    ("contract's body upward", {"high/iDoor.cpp": '#include "middle/Room.h"\n'}, "lies higher"),
    ("forbidden", {"high/A.cpp": '#include "middle/Room.h"\n'}, "out of bounds"),
    ("library in a header", {"low/A.h": H + "#include <zlib.h>\n"}, "(zlib) in a header"),
    ("library not listed", {"low/A.cpp": "#include <zlib.h>\n"}, "not listed for this file"),
    ("unknown library", {"low/A.cpp": "#include <boost/any.hpp>\n"}, "an unknown library"),
    ("short path", {"low/A.cpp": '#include "Base.h"\n'}, "does not carry a folder"),
    ("missing", {"low/A.cpp": '#include "low/Bass.h"\n'}, "does not exist"),
    ("angle brackets", {"low/A.cpp": "#include <low/Base.h>\n"}, "wants quotes"),
    ("no guard", {"low/Base.h": "#include <string>\n"}, "low/Base.h:1: no #pragma once"),
    ("cycle", {"low/A.h": H + '#include "low/B.h"\n', "low/B.h": H + '#include "low/A.h"\n'},
     "low/A.h -> low/B.h -> low/A.h"),
]


def check(changes):
    """Exit status and output of the check on the sound tree with `changes` laid over it."""
    with tempfile.TemporaryDirectory() as root:
        for path, text in {"tools/layers.txt": LAYERS, **SOUND, **changes}.items():
            os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
            with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                file.write(text)
        run = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True)
        return run.returncode, run.stdout


class CheckLayers(unittest.TestCase):
    def test_a_sound_tree_passes(self):
        self.assertEqual(check({}), (0, "layers: 6 files, 0 faults\n"))

    def test_each_fault_is_named(self):
        for name, changes, expected in FAULTS:
            with self.subTest(name):
                status, output = check(changes)
                self.assertEqual(status, 1)
                self.assertIn(expected, output)


if __name__ == "__main__":
    unittest.main()

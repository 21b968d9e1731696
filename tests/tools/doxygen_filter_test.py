"""Feeds headers to tools/doxygen_filter.py: which comments it marks, and what it escapes."""
import os
import subprocess
import sys
import tempfile
import unittest

FILTER = os.path.join(os.path.dirname(__file__), "../../tools/doxygen_filter.py")
ROWS = [
    ("file", "// About.\n#pragma once", "/// About.\n/// \\file"),
    ("declaration", "#pragma once\n// Does.\nint a();", "/// \\file\n/// Does.\nint a();"),
    ("end of line", "#pragma once\nint a; // what\n       // it is", "/// \\file\nint a; ///< what\n       ///< it is"),
    ("heading", "#pragma once\n    // --- marks ---\nint a();", "/// \\file\n\nint a();"),
    ("escapes", "#pragma once\n// a<b> #1 `<i>` \\n", "/// \\file\n/// a\\<b\\> \\#1 `<i>` \\\\n"),
    ("no comment", '#pragma once\nauto a = "// text";', '/// \\file\nauto a = "// text";'),
    ("closing", "#pragma once\n} // namespace x", "/// \\file\n} // namespace x"),
]


class DoxygenFilter(unittest.TestCase):
    def test_comments_become_documentation(self):
        for name, header, expected in ROWS:
            with self.subTest(name), tempfile.NamedTemporaryFile("w", suffix=".h") as file:
                file.write(header + "\n")
                file.flush()
                run = subprocess.run([sys.executable, FILTER, file.name], capture_output=True,
                                     text=True, check=True)
                self.assertEqual(run.stdout, expected + "\n")


if __name__ == "__main__":
    unittest.main()

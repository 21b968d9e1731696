"""Reads what libcutroom.so exports: nothing of the libraries it uses, nothing that is one file's own,
no plain C name, and what embedders derive from, with its type information.

  symbols_test.py NM LIBRARY
"""
import subprocess
import sys
import unittest

NM, LIBRARY = sys.argv[1:3]
# Of these not even a parameter: who calls such a function needs that library's headers.
FOREIGN = ["sqlite3", "nlohmann", "pugi", "utf8::", "utf8proc", "z_stream", "CLI::", "testing::"]
# Names that only the library's own files or folders use.
OWN = ["(anonymous namespace)::", "cutroom::Sqlite", "cutroom::ProjectDatabase",
       "cutroom::RecordTable", "cutroom::TextArena", "cutroom::SealedJson", "cutroom::OpenProject"]
DERIVED_FROM = ["VobClient", "iCookieContainer", "iEditContainer", "iObject", "EventHandler",
                "Notifiable", "iAssetMetadataExporter", "cutroom::iLogSink", "cutroom::iClock",
                "cutroom::iFileSystem", "cutroom::iUiThread"]


def exported(*options):
    """The exported symbols, by name."""
    run = subprocess.run([NM, "-D", "--defined-only", "--format=posix", *options, LIBRARY],
                         capture_output=True, text=True, check=True)
    # "NAME TYPE VALUE SIZE"; a demangled name holds spaces.
    return [line.rsplit(" ", 3)[0] for line in run.stdout.splitlines()]


class Symbols(unittest.TestCase):
    def test_no_foreign_and_no_inner_name_is_exported(self):
        # The compiler exports templates of the standard library whatever their arguments.
        names = [name for name in exported("-C") if not name.startswith("std::")]
        self.assertGreater(len(names), 1000)
        for hidden in FOREIGN + OWN:
            with self.subTest(hidden):
                self.assertEqual([name for name in names if hidden in name], [])

    def test_every_name_is_a_cpp_name(self):
        self.assertEqual([name for name in exported() if not name.startswith("_Z")], [])

    def test_interfaces_bring_their_type_information(self):
        names = set(exported("-C"))
        for name in DERIVED_FROM:
            with self.subTest(name):
                self.assertIn(f"typeinfo for {name}", names)
                self.assertIn(f"vtable for {name}", names)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

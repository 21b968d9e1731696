"""Completes command lines as bash, zsh and fish do, and reads the manual page.

  completion_test.py CUTROOM SHARE MANUAL

A shell that is not there is skipped; bash always is.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

CUTROOM, SHARE, MANUAL = (os.path.abspath(path) for path in sys.argv[1:4])
EDIT = "Reel 1: the 'final' cut"
EDL = "TITLE: Reel\n\n001  TAPE V C 00:00:00:00 00:00:04:00 01:00:00:00 01:00:04:00\n"

BASH = """
source "$SHARE/bash-completion/completions/cutroom"
compopt() { echo "$2"; }
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_cutroom
printf '%s\\n' "${COMPREPLY[@]}"
"""
# The functions that would show the candidates print them.
ZSH = """
_describe() { print -rl -- "${(@P)${@[-1]}}" }
_files() { print -r -- ${1:+dirnames}${1:-default} }
words=("$@") CURRENT=$# PREFIX=${@[-1]}
source "$SHARE/zsh/site-functions/_cutroom"
"""
FISH = """
source "$SHARE/fish/vendor_completions.d/cutroom.fish"
complete -C (string join ' ' -- $argv)
"""


def run(*words, check=True):
    return subprocess.run(words, capture_output=True, text=True, check=check).stdout


def listed(section, command=()):
    """Words that begin the lines of one section of --help."""
    text = run(CUTROOM, *command, "--help").split(f"\n{section}:\n")[1].split("\n\n")[0]
    return re.findall(r"^  (\S+)", text, re.MULTILINE)


def in_shell(shell, script, typed):
    """Candidates, without meanings, for the last word of a command line."""
    if shell == "fish":
        words = ["fish", "--no-config", "-c", script, *typed]
    else:
        words = [shell, *(["-f"] if shell == "zsh" else []), "-c", script, shell, *typed]
    lines = run(*words).splitlines()
    # zsh escapes a colon in a candidate, and a colon alone ends it.
    ends = r"(?<!\\):" if shell == "zsh" else "\t"
    return [re.split(ends, line)[0].replace("\\:", ":") for line in lines]


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        os.chdir(cls.folder.name)
        os.environ["PATH"] = os.path.dirname(CUTROOM) + ":" + os.environ["PATH"]
        os.environ["SHARE"] = SHARE
        os.environ["HOME"] = cls.folder.name
        with open("reel.edl", "w", encoding="utf-8") as file:
            file.write(EDL)
        cookie = run(CUTROOM, "import", "--rate", "25", "reel.edl").split("\t")[0]
        run(CUTROOM, "rename", cookie, EDIT)
        run(CUTROOM, "bin", "new", "Dailies")

    @classmethod
    def tearDownClass(cls):
        os.chdir("/")
        cls.folder.cleanup()

    def check_shell(self, shell, script, name):
        """`name` is how the shell writes EDIT among its candidates."""
        if not shutil.which(shell):
            self.skipTest(f"{shell} is not installed")
        rows = [
            ([""], listed("Subcommands"), ["markers", "--json"]),
            (["-p", "elsewhere", "ma"], ["marks", "markers"], []),
            (["list", ""], ["edits", "logs", "bins", "groups", "documents", "filters"], ["import"]),
            (["bin", ""], ["new", "show", "sort"], ["import"]),
            (["bin", "show", ""], ["Dailies"], ["show"]),
            (["bin", "add", "Dailies", ""], [name, "Dailies"], []),
            (["filter", "show", ""], ["Documents", "Images"], ["Dailies"]),
            (["filter", "new", "Mine", ""], ["Dailies", "Documents"], [name]),
            (["undo", "x", "--"], ["--times", "--project", "--json"], ["undo"]),
            (["export", "x", "--format", ""], ["srt"], ["import"]),
            (["show", ""], [name], ["import"]),
            (["-p", "elsewhere", "show", ""], [], [name]),
        ]
        for typed, expected, others in rows:
            with self.subTest(shell=shell, typed=typed):
                found = in_shell(shell, script, ["cutroom", *typed])
                self.assertLessEqual(set(expected), set(found))
                self.assertFalse(set(others) & set(found) - set(expected))

    def test_bash(self):
        self.check_shell("bash", BASH, r"Reel\ 1:\ the\ \'final\'\ cut")
        self.assertEqual(in_shell("bash", BASH, ["cutroom", "show", '"Reel']), [EDIT])
        self.assertEqual(in_shell("bash", BASH, ["cutroom", "show", "Reel\\ 2"]), [""])
        self.assertEqual(in_shell("bash", BASH, ["cutroom", "import", "re"])[0], "default")
        self.assertEqual(in_shell("bash", BASH, ["cutroom", "-p", ""])[0], "dirnames")
        equals = ["cutroom", "export", "x", "--format", "=", "sr"]
        self.assertEqual(in_shell("bash", BASH, equals), ["srt"])

    def test_zsh(self):
        self.check_shell("zsh", ZSH, EDIT)
        self.assertEqual(in_shell("zsh", ZSH, ["cutroom", "import", ""]), ["default"])

    def test_fish(self):
        self.check_shell("fish", FISH, EDIT)
        self.assertIn("reel.edl", in_shell("fish", FISH, ["cutroom", "import", "re"]))

    def test_a_meaningless_line_completes_to_nothing(self):
        for words in ([], ["--nonsense", ""], ["show", "a", "b", "c", ""], ["export", "--format"]):
            answer = run(CUTROOM, "__complete", *words).splitlines()
            self.assertEqual(answer[0], ":none")


class Manual(unittest.TestCase):
    def test_every_command_and_option_is_in_the_manual(self):
        with open(MANUAL, encoding="utf-8") as file:
            page = file.read()
        self.assertIn(run(CUTROOM, "__manual").strip(), page, "the page is not of this command")
        page = page.replace("\\-", "-")
        for command in listed("Subcommands"):
            self.assertIn(f"\n.SS {command}\n", page)
            section = page.split(f"\n.SS {command}\n")[1].split("\n.SS ")[0]
            for option in re.findall(r"--[a-z-]+", " ".join(listed("Options", [command]))):
                if option != "--help":
                    self.assertIn(f"\\fB{option}\\fR", section)
        self.assertNotIn("@", re.sub(r"\S+@\S+", "", page), "a place was not filled in")

    def test_the_manual_is_sound(self):
        if not shutil.which("groff"):
            self.skipTest("groff is not installed")
        done = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-z", MANUAL],
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

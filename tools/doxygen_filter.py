#!/usr/bin/env python3
"""Prints a header with its plain comments marked as documentation, as Doxygen's INPUT_FILTER.

  doxygen_filter.py HEADER

The comment that opens the file describes the file; a comment on lines of its own describes the
declaration below it, one at the end of a line the declaration on that line. Lines stay where they
are. Headings between groups of declarations ("--- marks ---") are blanked.
"""
import re
import sys

OWN_LINE = re.compile(r"^(\s*)//(?!/) ?(.*)$")
AT_END = re.compile(r'^((?:[^"/]|"(?:[^"\\]|\\.)*"|/(?!/))*?)(\s*)//(?!/) ?(.*)$')


def escaped(text):
    """Text that means what it says: no commands, tags or links, but `code` stays code."""
    parts = [part if part.startswith("`") else re.sub(r'([\\@<>#%&|"])', r"\\\1", part)
             for part in re.split(r"(`[^`]*`)", text)]
    return "".join(parts)


def marked(lines):
    opening = True  # within the comment that describes the file
    hidden = False  # within a specialisation for the standard library, which Doxygen cannot place
    column = None  # where the comment at the end of the last line begins
    for line in lines:
        own = OWN_LINE.match(line)
        at_end = None if own else AT_END.match(line)
        if opening and own:
            yield "/// " + escaped(own[2])
        elif opening and line == "#pragma once":
            opening = False
            yield "/// \\file"
        elif own and column == len(own[1]):
            yield f"{own[1]}///< {escaped(own[2])}"
            continue
        elif own and re.match(r"-{3,} ", own[2]):
            yield ""
        elif own:
            yield f"{own[1]}/// {escaped(own[2])}"
        elif at_end and not line.lstrip().startswith("#") and at_end[1].strip() != "}":
            yield f"{at_end[1]}{at_end[2]}///< {escaped(at_end[3])}"
        elif line.startswith("template") and "struct std::" in line:
            hidden = True
            yield "/*! \\cond */ " + line
        elif hidden and line == "};":
            hidden = False
            yield "}; /*! \\endcond */"
        else:
            yield line
        column = len(at_end[1] + at_end[2]) if at_end else None


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        print("\n".join(marked(file.read().splitlines())))


if __name__ == "__main__":
    main()

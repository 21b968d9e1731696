"""Finds the functions of C++ source text and where each begins and ends, without a compiler.

It counts on text as clang-format leaves it and on no macro that opens a brace; lambdas belong to the
function that they stand in.
"""
import re
from dataclasses import dataclass

LITERALS = re.compile(
    r'R"([^()\s]*)\((?:.|\n)*?\)\1"'       # raw text
    r"|//[^\n]*|/\*(?:.|\n)*?\*/"          # comments
    r'|"(?:\\.|[^"\\\n])*"'                # text
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'"  # characters, not the marks within numbers
    r"|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*",     # directives
    re.MULTILINE)
TYPE_HEAD = re.compile(r"^(?:typedef )?(?:class|struct|union|enum)\b")
NAMESPACE_HEAD = re.compile(r'^(?:inline )?namespace\b|^extern\s*(?:"")?\s*$')
NAME = re.compile(r"(\boperator\s*[^\s\w(]+|~?\w+)\s*\(")


@dataclass
class Function:
    """One definition: its head without body, and the lines of its braces, both counted."""
    head: str
    first: int
    last: int
    body: str

    @property
    def name(self):
        found = NAME.search(self.head)
        return found.group(1) if found else ""

    @property
    def lines(self):
        return self.last - self.first + 1


def without_literals(text):
    """The text with comments and literals emptied, every line where it was."""
    def emptied(match):
        kept = '""' if match.group()[0] in '"R' else ""
        return kept + "\n" * match.group().count("\n")
    return LITERALS.sub(emptied, text)


def without_template(head):
    """The head of a declaration behind its template parameters."""
    while head.startswith("template"):
        depth = 0
        for place, char in enumerate(head):
            depth += {"<": 1, ">": -1}.get(char, 0)
            if char == ">" and depth == 0:
                break
        else:
            return head
        head = head[place + 1:].lstrip()
    return head


def outside_brackets(head):
    """What of the head lies in no round brackets."""
    while (shorter := re.sub(r"\([^()]*\)", " ", head)) != head:
        head = shorter
    return head


def kind_of(head):
    """What a brace behind this head opens: "scope", "function", "initialiser" or "member", which
    is the initialiser of a member within a constructor's head."""
    head = without_template(re.sub(r"\s+", " ", head).strip())
    head = re.sub(r"^(?:public|private|protected) ?: ?|\[\[[^\]]*\]\] ?", "", head)
    if NAMESPACE_HEAD.match(head) or TYPE_HEAD.match(head):
        return "scope"
    plain = outside_brackets(re.sub(r"\boperator\s*[^\s\w(]+", "operator", head))
    if "(" not in head or "=" in plain:
        return "initialiser"
    if re.search(r"(?<!:):(?!:)", plain) and re.search(r"[\w>]$", head):
        return "member"
    return "function"


def functions(text):
    """Every function defined in the text, in order."""
    found, line, start, opened = [], 1, 0, []
    clean = without_literals(text)
    for place, char in enumerate(clean):
        if char == "\n":
            line += 1
        inside = bool(opened) and opened[-1][0] != "scope"
        if char == "{":
            kind = "inner" if inside else kind_of(clean[start:place])
            opened.append((kind, clean[start:place].strip(), line, place))
            if kind == "scope":
                start = place + 1
        elif char == "}" and opened:
            kind, head, first, begin = opened.pop()
            if kind == "function":
                found.append(Function(head, first, line, clean[begin:place + 1]))
            if kind in ("function", "scope"):
                start = place + 1
            elif kind == "member": # behind it the head goes on, and a body may follow
                clean = clean[:begin] + "(" + " " * (place - begin - 1) + ")" + clean[place + 1:]
        elif char == ";" and not inside:
            start = place + 1
    return found

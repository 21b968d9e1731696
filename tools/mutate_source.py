"""Puts changes into C++ source text so that each can be switched on at run time (tools/mutants.h).

It goes by the text as clang-format leaves it: operators of two sides stand between blanks. What
comes out wrong does not compile; whoever builds it leaves that change out.
"""
import re

import cpp_functions

# What is changed into what.
CHANGES = {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ",
           " != ": " == ", " && ": " || ", " || ": " && ", " + ": " - ", " - ": " + ",
           "++": "--", "true": "false", "false": "true", "(!": "(", " = 0;": " = 1;",
           " = 1;": " = 0;", "return 0;": "return 1;", "continue;": "break;", " += ": " -= "}
SITE = re.compile("|".join(re.escape(text) if not text.isalpha() else rf"\b{text}\b"
                           for text in sorted(CHANGES, key=len, reverse=True)))
MARK = re.compile("\x01(\\d+)\x01")
TRAILING = re.compile("(?:\x01\\d+\x01)?\\s*$")
OPERAND = re.compile(r"\*?[\w.]+(?:->\w+)*")
OPERAND_BEFORE = re.compile(r"[\w.]+(?:->\w+)*$")
# Ends an operand of && and ||, at the depth of brackets where it stands.
STOP = re.compile(r"[;,?{}]|(?<!:):(?!:)|(?<![=!<>])=(?!=)|<<=|>>=|\breturn\b|\bco_yield\b")


def sites(text):
    """(begin, what stands there) of every change that may be made in the bodies of functions."""
    literals = [match.span() for match in cpp_functions.LITERALS.finditer(text)]
    bodies = [(f.first, f.last) for f in cpp_functions.functions(text)]
    for match in SITE.finditer(text):
        line = text.count("\n", 0, match.start()) + 1
        if any(first <= line <= last for first, last in bodies) and \
                not any(begin <= match.start() < end for begin, end in literals):
            yield match.start(), match.group()


def masked(text):
    """The text with literals and comments blotted out, each character in its place."""
    return cpp_functions.LITERALS.sub(
        lambda match: "".join(c if c == "\n" else "_" for c in match.group()), text)


def operands(text, begin, end, operator):
    """Where the left operand of the && or || at begin to end begins, and the right one ends."""
    plain = masked(text)
    before = STOP.pattern + (r"|\|\|" if operator == "&&" else "")
    ends = {stop.end() for stop in re.finditer(before, plain)}
    starts = {stop.start() for stop in re.finditer(before + "|" + re.escape(operator), plain)}
    depth, first = 0, begin
    while first > 0 and not (depth == 0 and first in ends):
        depth += (plain[first - 1] in ")]") - (plain[first - 1] in "([")
        if depth < 0:
            break
        first -= 1
    depth, last = 0, end
    while last < len(plain) and not (depth == 0 and last in starts and plain[last] != "{"):
        depth += (plain[last] in "([{") - (plain[last] in ")]}")
        if depth < 0:
            break
        last += 1
    return first, last


def switched(text, mark):
    """The text with the change at a mark, which stands before what it changes, put in."""
    number, begin, end = mark.group(1), mark.start(), mark.end()
    old = SITE.match(text, end).group()
    after = end + len(old)
    infix, is_made = f"mutants::infix<{number}>", f"mutants::isMade({number})"
    operator = old.strip()
    if operator in ("&&", "||"):
        first, last = operands(text, begin, after, operator)
        left, right = text[first:begin], text[after:last]
        right = right[:TRAILING.search(right).start()] # it belongs to what ends the operand
        blank = left[:len(left) - len(left.lstrip())]
        # By the laws of De Morgan, which turn one operator into the other.
        return (f"{text[:first]}{blank}({is_made} != "
                f"(({is_made} != bool({left.strip()})) {operator} ({is_made} != bool({right}))))"
                f"{text[after + len(right):]}")
    if operator == "++":
        behind, before = OPERAND.match(text, after), OPERAND_BEFORE.search(text[:begin])
        if behind and not before:
            return f"{text[:begin]}mutants::step<{number}>({behind.group()}){text[behind.end():]}"
        if before:
            return (f"{text[:before.start()]}mutants::stepAfter<{number}>({before.group()})"
                    f"{text[after:]}")
        return text[:begin] + text[end:]
    new = {"true": f"!{is_made}", "false": is_made,
           "(!": f"({infix}->*",
           "= 0;": f" = mutants::either({number}, 0, 1);",
           "= 1;": f" = mutants::either({number}, 1, 0);",
           "return 0;": f"return mutants::either({number}, 0, 1);",
           "continue;": f"{{ if ({is_made}) break; continue; }}"}.get(
               operator, f" {operator} {infix} {operator} ")
    return text[:begin] + new + text[after:]


def mutated(text, changes, header):
    """The text with the changes, (number, begin) each, that can be switched on."""
    for number, begin in sorted(changes, key=lambda change: -change[1]):
        text = f"{text[:begin]}\x01{number}\x01{text[begin:]}"
    while mark := MARK.search(text):
        text = switched(text, mark)
    return f'#include "{header}"\n#line 1\n{text}'

#!/usr/bin/env python3
"""Checks that the includes of the tree keep the order that tools/layers.txt lays down.

Includes go downward only, headers have no cycle, headers include no library, .cpp files only the
libraries that are listed for them, project includes are quoted and carry the full folder path,
every header has #pragma once. Prints one line a fault and exits 1 when there is any.

  check_layers.py [ROOT]     ROOT: the tree to check, by default the one that holds this script
"""
import fnmatch
import os
import re
import sys

OWN_ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ROOT = sys.argv[1] if __name__ == "__main__" and len(sys.argv) > 1 else OWN_ROOT
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.MULTILINE)


class Rules:
    """The lines of layers.txt, by kind."""

    def __init__(self, path):
        self.layers, self.forbidden, self.contracts = [], [], {}
        self.libraries, self.uses = {}, {}
        with open(path, encoding="utf-8") as file:
            for number, line in enumerate(file, 1):
                words = line.split("#")[0].split()
                if words:
                    self.take(words, f"{path}:{number}")

    def take(self, words, place):
        kind, rest = words[0], words[1:]
        if kind == "layer" and len(rest) == 1:
            self.layers.append(rest[0])
        elif kind == "forbid" and len(rest) == 2:
            self.forbidden.append(tuple(rest))
        elif kind == "contract" and len(rest) == 2 and rest[1] in self.layers:
            self.contracts[rest[0]] = rest[1]
        elif kind == "library" and len(rest) > 1:
            self.libraries.setdefault(rest[0], []).extend(rest[1:])
        elif kind == "use" and len(rest) > 1 and rest[0] in self.libraries:
            self.uses.setdefault(rest[0], []).extend(rest[1:])
        else:
            sys.exit(f"{place}: not understood: {' '.join(words)}")

    def layer_of(self, path):
        """The layer that a file counts as; the default bodies of a contract count with it."""
        contract = re.sub(r"\.cpp$", ".h", path)
        return self.contracts.get(contract, os.path.dirname(path))

    def library_of(self, header):
        for name, prefixes in self.libraries.items():
            if any(header == p or (p.endswith("/") and header.startswith(p)) for p in prefixes):
                return name
        # Headers of the C++ standard have neither folder nor ending.
        return None if re.fullmatch(r"[a-z0-9_]+", header) else "an unknown library"

    def may_use(self, path, library):
        return any(fnmatch.fnmatch(path, glob) for glob in self.uses.get(library, []))


def source_files(layers):
    for layer in layers:
        folder = os.path.join(ROOT, layer)
        for name in sorted(os.listdir(folder)) if os.path.isdir(folder) else []:
            if name.endswith((".h", ".cpp")):
                yield f"{layer}/{name}"


def check_project_include(rules, path, header, tell):
    folder = os.path.dirname(header)
    if folder not in rules.layers:
        return tell(f'"{header}" does not carry a folder of the house')
    if not os.path.exists(os.path.join(ROOT, header)):
        return tell(f'"{header}" does not exist')
    if rules.layers.index(rules.layer_of(header)) > rules.layers.index(rules.layer_of(path)):
        return tell(f'"{header}" lies higher')
    for glob, forbidden in rules.forbidden:
        if fnmatch.fnmatch(path, glob) and folder == forbidden:
            tell(f'"{header}" is out of bounds here')
    return None


def check_library_include(rules, path, header, tell):
    library = rules.library_of(header)
    if library is None:
        return
    if path.endswith(".h"):
        tell(f"<{header}> ({library}) in a header")
    elif not rules.may_use(path, library):
        tell(f"<{header}> ({library}) is not listed for this file")


def check_file(rules, path, graph):
    """Faults of one file, as lines; enters a header's project includes into `graph`."""
    faults = []
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        text = file.read()
    if path.endswith(".h") and not re.search(r"^#pragma once$", text, re.MULTILINE):
        faults.append(f"{path}:1: no #pragma once")
    for match in INCLUDE.finditer(text):
        line = text.count("\n", 0, match.start(1)) + 1
        tell = lambda what: faults.append(f"{path}:{line}: {what}")
        quote, header = match.groups()
        if quote == "<" and os.path.exists(os.path.join(ROOT, header)):
            tell(f"<{header}> is ours and wants quotes")
        elif quote == "<":
            check_library_include(rules, path, header, tell)
        else:
            check_project_include(rules, path, header, tell)
            if path.endswith(".h"):
                graph.setdefault(path, []).append(header)
    return faults


def find_cycle(graph):
    """One cycle of the graph as a list of its nodes, or None."""
    done = set()

    def visit(node, trail):
        if node in trail:
            return trail[trail.index(node):] + [node]
        if node in done:
            return None
        done.add(node)
        for other in graph.get(node, []):
            cycle = visit(other, trail + [node])
            if cycle:
                return cycle
        return None

    return next((c for c in (visit(node, []) for node in sorted(graph)) if c), None)


def main():
    rules = Rules(os.path.join(ROOT, "tools/layers.txt"))
    graph, faults, count = {}, [], 0
    for path in source_files(rules.layers):
        count += 1
        faults += check_file(rules, path, graph)
    cycle = find_cycle(graph)
    if cycle:
        faults.append(f"{cycle[0]}:1: headers include each other: {' -> '.join(cycle)}")
    print("\n".join(faults), end="\n" if faults else "")
    print(f"layers: {count} files, {len(faults)} faults")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())

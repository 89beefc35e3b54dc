#!/usr/bin/env python3
"""Checks that the source folders' includes point only downward.

src/app is the composition root: the one folder that knows every part, so nothing
else may include from it. Among the other folders the include graph must have no
cycle (a folder reached from itself), and a few edges are named as wrong outright:
the reminders and the screens do not reach into the shell's Qt layer, which sits
above them.
The core files (the top level of each folder) may include no Qt layer at all.
Prints one sentence per offending include and exits 1 when there is any."""
import pathlib
import re
import sys

ROOT_FOLDER = "app"
# Controllers and screens reach the drawer, Quick Add and the tray through ports,
# never through the shell's Qt classes.
FORBIDDEN = {("reminders", "shell"), ("ui", "shell"), ("calendar", "shell"),
             ("voice", "shell"), ("updates", "shell")}
# Known and not yet untangled: `daywyn transcribe` (voice/sphinx) implements a verb
# of the command line, which links the recogniser. An entry here is a debt, not a rule.
KNOWN_CYCLE_EDGES = {("voice", "cli")}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([a-z]+)/([^"]+)"', re.MULTILINE)


def main() -> int:
    src = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "src")
    problems = []
    edges = {}
    for path in sorted(src.rglob("*")):
        if path.suffix not in (".h", ".cpp") or not path.is_file():
            continue
        relative = path.relative_to(src)
        folder = relative.parts[0]
        in_qt = "qt" in relative.parts[1:-1]
        for match in INCLUDE.finditer(path.read_text(encoding="utf-8")):
            target, rest = match.group(1), match.group(2)
            if not (src / target).is_dir():
                continue
            where = f"{relative}: includes {target}/{rest}"
            if target == ROOT_FOLDER and folder != ROOT_FOLDER:
                problems.append(f"{where}, but only the composition root may know {ROOT_FOLDER}/.")
            if (folder, target) in FORBIDDEN and rest.startswith("qt/"):
                problems.append(f"{where}, an upward edge from {folder}/ into {target}/.")
            if not in_qt and "/qt/" in f"/{rest}" and len(relative.parts) == 2:
                problems.append(f"{where}, but a core file may not use the Qt layer.")
            if target != folder and folder != ROOT_FOLDER and (folder, target) not in KNOWN_CYCLE_EDGES:
                edges.setdefault(folder, {}).setdefault(target, where)

    # A cycle between folders: depth-first search for a back edge.
    state = {}

    def visit(folder, trail):
        state[folder] = "open"
        for target, where in sorted(edges.get(folder, {}).items()):
            if state.get(target) == "open":
                cycle = trail[trail.index(target):] + [target] if target in trail else [folder, target]
                problems.append(f"{where}, which closes the cycle {' -> '.join(cycle)}.")
            elif target not in state:
                visit(target, trail + [target])
        state[folder] = "done"

    for folder in sorted(edges):
        if folder not in state:
            visit(folder, [folder])

    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Runs qmllint over the screens' QML module and fails on any warning.

Usage: check-qml.py <build folder>. Builds the module's qmllint target (Qt's own
command line: the module's qmldir and type information, the resources), prints its
warnings counted by kind, and fails when there is one or when qmllint itself does not
exit cleanly."""
import collections
import re
import subprocess
import sys

WARNING = re.compile(r"^Warning: (\S+?):(\d+):(\d+): (.*)$")


def kind(message: str) -> str:
    text = re.sub(r'"[^"]*"', "", message)
    text = re.sub(r"\s+", " ", text).strip()
    for prefix in ("Property not found on type", "Cannot assign binding of type",
                   "Cannot defer property assignment"):
        if text.startswith(prefix):
            return prefix
    return text.rstrip(".")


def main() -> int:
    build = sys.argv[1] if len(sys.argv) > 1 else "build"
    run = subprocess.run(["cmake", "--build", build, "--target", "daywyn_app_qmllint"],
                         capture_output=True, text=True)
    output = run.stdout + run.stderr
    warnings = [line for line in output.splitlines() if WARNING.match(line)]
    counts = collections.Counter(kind(WARNING.match(line).group(4)) for line in warnings)
    for name, count in sorted(counts.items(), key=lambda item: -item[1]):
        print(f"{count:5d}  {name}")
    for line in warnings:
        print(line)
    if run.returncode != 0:
        if not warnings:
            print(output)
        print("qmllint over the screens did not exit cleanly "
              f"(cmake --build {build} --target daywyn_app_qmllint).")
        return 1
    return 1 if warnings else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Python's json module doing what Daywyn does with its state file, for comparison:
load (json.load) and a sorted, two-space pretty dump written and flushed to disk
(json.dump(sort_keys=True, indent=2), write, fsync). Prints the medians in ms.

    bench/python_json_baseline.py <state file> [repetitions]
"""
import json
import os
import statistics
import sys
import time


def main():
    path = sys.argv[1]
    repetitions = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    target = path + ".python-dump"
    loads, dumps = [], []
    for _ in range(repetitions):
        start = time.perf_counter()
        with open(path, encoding="utf-8") as f:
            state = json.load(f)
        loads.append(time.perf_counter() - start)

        start = time.perf_counter()
        with open(target, "w", encoding="utf-8") as f:
            json.dump(state, f, sort_keys=True, indent=2)
            f.flush()
            os.fsync(f.fileno())
        dumps.append(time.perf_counter() - start)
        os.unlink(target)
    print(f"{os.path.basename(path)}: python load median {statistics.median(loads) * 1000:.1f} ms, "
          f"dump+write+fsync median {statistics.median(dumps) * 1000:.1f} ms "
          f"({os.path.getsize(path) / 1e6:.1f} MB, {repetitions} runs)")


if __name__ == "__main__":
    main()

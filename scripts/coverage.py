"""Tells what llvm-cov found of the library's own files: lines and ways of conditions without a test."""

import collections
import json
import os
import sys

FALSE_WAY, TRUE_WAY = "never false", "never true"

lines = {}
ways = collections.defaultdict(int)
for file in json.load(sys.stdin)["data"][0]["files"]:
    name = os.path.relpath(file["filename"])
    if not name.startswith(("includes/", "source/")) or name.endswith(".hpp"):
        continue
    # From each segment's start on its count holds, up to the next one's.
    for here, there in zip(file["segments"], file["segments"][1:]):
        line, _, count, has_count, _, is_gap = here
        if has_count and not is_gap:
            for number in range(line, there[0] + (there[1] > 1)):
                lines[name, number] = max(lines.get((name, number), 0), count)
    source = open(name).read().splitlines()
    # A template has a set of branches for each of its uses.
    for line, column, _, end, is_true, is_false, *_ in file["branches"]:
        if source[line - 1][column - 1:end - 1] == "true":  # of a loop that ends otherwise
            continue
        ways[name, line, column, TRUE_WAY] += is_true
        ways[name, line, column, FALSE_WAY] += is_false

missed = sorted(place for place, count in lines.items() if count == 0)
for name, number in missed:
    print(f"{name}:{number}: never runs")
for (name, line, column, way), count in sorted(ways.items()):
    if count == 0 and lines.get((name, line), 0) > 0:
        print(f"{name}:{line}:{column}: {way}")
taken = sum(count > 0 for count in ways.values())
print(f"{len(lines) - len(missed)} of {len(lines)} lines run, "
      f"{taken} of {len(ways)} ways of conditions ({100 * taken / len(ways):.1f} %)")

"""Adds up gcov's reports, a JSON document a line, of the library's own files."""

import collections
import json
import sys

lines = collections.defaultdict(int)
branches = {}
for report in map(json.loads, sys.stdin):
    for file in report["files"]:
        name = file["file"].split("/./")[-1].removeprefix("/")
        if not name.startswith(("includes/", "source/")) or name.endswith("varmex.hpp"):
            continue
        for line in file["lines"]:
            place = (name, line["line_number"])
            lines[place] += line["count"]
            # A template or an inline function has a set of branches for each of its uses.
            taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
            use = (place, line.get("function_name", ""), len(taken))
            known = branches.setdefault(use, [0] * len(taken))
            branches[use] = [a + b for a, b in zip(known, taken)]

missed = sorted(place for place, count in lines.items() if count == 0)
for name, number in missed:
    print(f"{name}:{number}: never runs")
halves = collections.Counter(
    use[0] for use, taken in branches.items() for count in taken if count == 0 and any(taken))
for (name, number), count in sorted(halves.items()):
    print(f"{name}:{number}: {count} branches never taken")
counts = [count for taken in branches.values() for count in taken]
print(f"{len(lines) - len(missed)} of {len(lines)} lines run; "
      f"{sum(count > 0 for count in counts)} of {len(counts)} branches are taken")

"""Tells what the tests reached, and compares what they did not with the list of what cannot be reached. Called by
scripts/coverage.

    uncovered.py JSON LIST     JSON: what gcovr writes
"""

import collections
import itertools
import json
import sys

from known import read_known


def find_uncovered(report, text_of):
    """{"FILE: text of the line": what of the places with this text was not reached}. `text_of`: the text of a line."""
    uncovered = collections.defaultdict(list)
    for file in report["files"]:
        for number, (count, branches) in _counts(file["lines"]).items():
            if count == 0:
                told = "not run"
            elif 0 in branches:
                told = f"{branches.count(0)} of {len(branches)} branches not taken"
            else:
                continue
            uncovered[f"{file['file']}: {text_of(file['file'], number)}"].append(f"line {number}: {told}")
    return dict(uncovered)


def table(report):
    """Lines of text: for each file and in total how many lines and branches were taken."""
    rows = []
    for file in report["files"]:
        counts = _counts(file["lines"]).values()
        branches = [taken for _, all_of_line in counts for taken in all_of_line]
        rows.append((file["file"], [count for count, _ in counts], branches))
    rows.append(("all", sum((row[1] for row in rows), []), sum((row[2] for row in rows), [])))
    yield f"{'':<40}{'lines':>14}{'branches':>24}"
    for name, *columns in rows:
        cells = []
        for counts in columns:
            taken = sum(1 for count in counts if count)
            share = f"{100 * taken / len(counts):.1f} %" if counts else ""
            cells.append(f"{taken:>6} of {len(counts):>5} {share:>8}")
        yield f"{name:<40}{cells[0]}{cells[1]}"


def _counts(lines):
    """{line: (how often it ran, how often each of its branches was taken)}. Newer versions of gcovr tell of a line
    once for each function that is made of it."""
    counts = {}
    for line in lines:
        if line.get("gcovr/noncode") or line.get("gcovr/excluded"):
            continue
        count, branches = counts.get(line["line_number"], (0, []))
        more = [branch["count"] for branch in line["branches"]]
        counts[line["line_number"]] = (count + line["count"],
                                       [sum(pair) for pair in itertools.zip_longest(branches, more, fillvalue=0)])
    return counts


def compare(uncovered, known):
    """The complaints. `known`: how many places of each text are named."""
    for key, places in uncovered.items():
        if len(places) != known[key]:
            named = f"; {known[key]} named" if known[key] else ""
            yield f"{key}\n    {', '.join(places)}{named}"
    for key in known:
        if key not in uncovered:
            yield f"{key}\n    is named as out of reach, and was reached or is gone"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        report = json.load(file)
    lines = {}

    def text_of(path, number):
        if path not in lines:
            with open(path, encoding="utf-8") as source:
                lines[path] = source.read().split("\n")
        return " ".join(lines[path][number - 1].split())

    print("\n".join(table(report)))
    uncovered = find_uncovered(report, text_of)
    known = collections.Counter(entry[0] for entry in read_known(sys.argv[2], 2))
    complaints = list(compare(uncovered, known))
    for complaint in complaints:
        print(complaint)
    print(f"{sum(known.values())} places are named in {sys.argv[2]}; {len(complaints)} are not as they should be")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

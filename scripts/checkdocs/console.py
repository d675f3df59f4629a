"""Runs the examples of the companion tool in a page, in the current folder, and compares what is printed to the letter.
Called by scripts/check-admin. (Those of docs/qanh.md are among the tests of the tool.)

    python3 console.py QANH PAGE
"""

import shlex
import subprocess
import sys

from blocks import read_blocks


def examples_of(blocks):
    """Each command line behind "> qanh", with what stands below it."""
    examples = []
    for block in blocks:
        if block.kind == "console":
            for part in ("\n" + block.text).split("\n> qanh ")[1:]:
                command, _, printed = part.partition("\n")
                examples.append((command, printed.rstrip("\n")))
    return examples


def main():
    tool, page = sys.argv[1:]
    examples = examples_of(read_blocks(page))
    problems = [] if examples else [f"{page}: no example"]
    for command, expected in examples:
        result = subprocess.run(["wine", tool, *shlex.split(command)], stdout=subprocess.PIPE, encoding="utf-8",
                                check=False)
        printed = result.stdout.replace("\r", "").rstrip("\n")
        if printed != expected:
            problems.append(f"{page}: qanh {command}: printed:\n{printed}")
    sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main()

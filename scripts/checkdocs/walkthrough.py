"""Follows a page word by word in the current folder: writes the files that it says to save, runs its "sh" blocks in one
shell, and looks for every line of a "text" block in what was printed since the one before. Called by
scripts/check-package.

    python3 walkthrough.py PAGE
"""

import re
import subprocess
import sys
import tempfile

from blocks import read_blocks

MARK = "@@ step "


def script_of(blocks):
    """The shell script, and for each of its steps the lines that it must print."""
    script = ["set -euo pipefail", "exec 2>&1"]
    expected = []
    for block in blocks:
        saved = re.search(r"Save this as `([\w.-]+)`:$", block.before)
        if saved:
            script += [f"cat > {saved[1]} << 'END OF FILE'", block.text + "END OF FILE"]
        elif block.kind == "sh":
            script += [f"echo '{MARK}{block.place}'", block.text]
            expected.append([])
        elif block.kind == "text" and expected:
            expected[-1] += block.text.splitlines()
    return "\n".join(script) + "\n", expected


def outputs_of(printed):
    """What each step printed, with its place in front; lines without their blanks at the end."""
    lines = [line.rstrip() for line in printed.replace("\r", "").split("\n")]
    steps = []
    for line in lines:
        if line.startswith(MARK):
            steps.append((line[len(MARK):], []))
        elif steps:
            steps[-1][1].append(line)
    return steps


def missing_lines(steps, expected):
    """Lines of the page that no step since the last such block has printed."""
    missing = []
    printed = []
    for (place, lines), wanted in zip(steps, expected):
        printed += lines
        missing += [f"{place}: not printed: {line}" for line in wanted
                    if not any(line.rstrip() in other for other in printed)]
        if wanted:
            printed = []
    return missing


def main():
    script, expected = script_of(read_blocks(sys.argv[1]))
    # Into a file: programs that stay when the script has ended would keep a pipe open.
    with tempfile.TemporaryFile("w+", encoding="utf-8", errors="replace") as file:
        run = subprocess.run(["bash", "-c", script], stdin=subprocess.DEVNULL, stdout=file, check=False)
        file.seek(0)
        printed = file.read()
    print(printed)
    steps = outputs_of(printed)
    if run.returncode != 0:
        sys.exit(f"{steps[-1][0] if steps else sys.argv[1]}: failed")
    missing = missing_lines(steps, expected)
    if missing or len(steps) != len(expected):
        sys.exit("\n".join(missing) or "not every step was run")


if __name__ == "__main__":
    main()

"""Checks the pages of the project: every link leads somewhere, every code block is what it says, and what the text names
is there. Called by scripts/check-docs."""

import argparse
import glob
import os
import sys

from blocks import read_blocks
from checks import CHECKS, UNCHECKED, NoCompiler, check_csharp, read
from pages import PACKAGE_PAGE, broken_links, pages, unknown_names


def check_links(folder):
    """The links of all pages of a folder, such as an unpacked zip."""
    found = glob.glob(os.path.join(folder, "**", "*.md"), recursive=True)
    return [problem for page in sorted(found) for problem in broken_links(page, os.path.dirname(page), read)]


def check_blocks(page, left_out):
    """Problems of the blocks of a page; adds what no compiler is there for to left_out."""
    problems = []
    try:
        blocks = read_blocks(page)
    except ValueError as error:
        return 0, [str(error)]
    sharp = [block for block in blocks if block.kind == "csharp"]
    jobs = [(block, CHECKS.get(block.kind)) for block in blocks if block.kind not in ("csharp", *UNCHECKED)]
    if sharp:
        jobs.append((sharp[0], lambda _: check_csharp(sharp)))
    for block, check in jobs:
        try:
            result = check(block) if check else f"nobody knows how to check a block of the kind {block.kind}"
        except NoCompiler as missing:
            left_out.append(f"{block.place} ({block.kind}: no {missing})")
            continue
        if result:
            problems.append(f"{block.place}: {result.strip()}")
    return len(blocks), problems


def main():
    parser = argparse.ArgumentParser(prog="scripts/check-docs", allow_abbrev=False)
    parser.add_argument("--links", metavar="FOLDER", help="look at the links of the pages in this folder only")
    arguments = parser.parse_args()
    if arguments.links:
        problems = check_links(arguments.links)
        sys.exit("\n".join(problems) or 0)
    problems = []
    left_out = []
    count = 0
    source = "".join(read(path) for path in glob.glob("src/**/*.cpp", recursive=True))
    for page in pages():
        if page != PACKAGE_PAGE:  # its links are those of the zip
            problems += broken_links(page, os.path.dirname(page), read)
        problems += unknown_names(page, read(page), source)
        number, found = check_blocks(page, left_out)
        count += number
        problems += found
    for place in left_out:
        print(f"not checked: {place}")
    print(f"{count} code blocks on {len(pages())} pages, {len(problems)} problems")
    sys.exit("\n".join(problems) or 0)


if __name__ == "__main__":
    main()

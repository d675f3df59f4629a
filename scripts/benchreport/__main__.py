"""Tells what the bench program has measured. Called by scripts/bench."""

import argparse
import re
import sys

import growth_picture
from figures import grows_too_fast, read_run
from measures import MEASURES
from tables import GROWTH_HEAD, HEAD, figure_rows, growth_rows, markdown_table, text_table

PAGE = "docs/performance.md"
PICTURE = "docs/images/growth.svg"
# Between these two stands what is written anew.
BEGIN, END = "<!-- figures -->\n", "<!-- end of the figures -->\n"


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench", allow_abbrev=False)
    parser.add_argument("samples", help=argparse.SUPPRESS)
    parser.add_argument("--svg", metavar="FILE", help="draw the growth curves")
    parser.add_argument("--markdown", action="store_true", help=f"write the tables of {PAGE} anew, and its picture")
    parser.add_argument("--check", action="store_true", help="fail when something grows faster than n")
    return parser.parse_args()


def write(path, text):
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.write(text)


def draw(run, path):
    picture = growth_picture.draw(run)
    if picture:
        write(path, picture)
    else:
        print(f"{path}: nothing to draw in this run")


def write_page(run):
    tables = "\n\n".join([markdown_table(HEAD, figure_rows(run)), markdown_table(GROWTH_HEAD, growth_rows(run))])
    with open(PAGE, encoding="utf-8") as file:
        page = file.read()
    written = re.sub(f"{BEGIN}.*?{END}", lambda _: f"{BEGIN}\n{tables}\n\n{END}", page, count=1, flags=re.DOTALL)
    write(PAGE, written)
    draw(run, PICTURE)


def main():
    arguments = parse_arguments()
    run = read_run(arguments.samples)
    if not run.figures:
        sys.exit("bench: nothing of that name is measured")
    print("\n" + text_table(HEAD, figure_rows(run)))
    growing = growth_rows(run)
    if growing:
        print("\n" + text_table(GROWTH_HEAD, growing))
    if arguments.svg:
        draw(run, arguments.svg)
    if arguments.markdown:
        write_page(run)
    too_fast = [measure.title for measure in MEASURES
                if grows_too_fast(measure, run.figures.get(measure.name, []))]
    if arguments.check and too_fast:
        sys.exit("\nbench: grows too fast: " + "; ".join(too_fast))


main()

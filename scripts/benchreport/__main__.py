"""Tells what the bench program has measured. Called by scripts/bench."""

import argparse
import re
import sys

import growth_picture
from figures import grows_too_fast, read_run
from measures import MEASURES
from tables import figure_table, growth_table, markdown_table, text_table

PAGE = "docs/performance.md"
PICTURE = "docs/images/growth.svg"
# Between these two stands what is written anew.
BEGIN, END = "<!-- figures -->\n", "<!-- end of the figures -->\n"


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench", allow_abbrev=False)
    parser.add_argument("samples", help=argparse.SUPPRESS)
    parser.add_argument("--before", metavar="FILE", type=read_run, help="an earlier run, for another column")
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


def write_page(run, before):
    tables = "\n\n".join(markdown_table(*table) for table in (figure_table(run, before), growth_table(run, before)))
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
    for table in (figure_table(run, arguments.before), growth_table(run, arguments.before)):
        if table[1]:
            print("\n" + text_table(*table))
    if arguments.svg:
        draw(run, arguments.svg)
    if arguments.markdown:
        write_page(run, arguments.before)
    too_fast = [measure.title for measure in MEASURES
                if grows_too_fast(measure, run.figures.get(measure.name, []))]
    if arguments.check and too_fast:
        sys.exit("\nbench: grows too fast: " + "; ".join(too_fast))


main()

"""The tables of a run, as lists of rows of text: for the terminal and for Markdown."""

from figures import OURS, growth, grows_too_fast, quartiles
from measures import MEASURES

HEAD = ["what", "n", "ours", "baseline", "ratio", "middle half", "of processor time", "goal", "of the goal"]
GROWTH_HEAD = ["what", "over", "ours grows as n to the", "the baseline", "limit"]

# Units of the samples that are no times.
UNITS = {"bytes": "bytes", "KB": "KB", "ms of CPU": "ms of CPU"}


def amount(value, unit):
    if unit != "s":
        return f"{number(value)} {UNITS[unit]}"
    for factor, name in ((1, "s"), (1e3, "ms"), (1e6, "µs")):
        if value * factor >= 1:
            return f"{number(value * factor)} {name}"
    return f"{number(value * 1e9)} ns"


def number(value):
    """Three digits that say something."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.3g}"


def percent(value):
    return f"{value * 100:,.0f} %"


def rows_of(measure, figure):
    """One row for each baseline; the goal stands in that of the measure's."""
    ours = amount(figure.median(), measure.unit)
    goal = measure.goal(figure.size)
    size = f"{figure.size:,}" if measure.sizes else ""
    what = f"{measure.title} ({measure.sizes})" if measure.sizes else measure.title
    baselines = [name for name in figure.samples if name != OURS]
    if not baselines:
        reached = [f"≤ {amount(goal, measure.unit)}", percent(figure.median() / goal)] if goal else ["", ""]
        yield [what, size, ours, "", "", "", "", *reached]
    for name in baselines:
        low, high = quartiles(figure.ratios(name))
        ratio = figure.ratio(name)
        processor_ratio = figure.processor_ratio(name)
        reached = [f"≤ {goal:g} ×", percent(ratio / goal)] if goal and name == measure.baseline else ["", ""]
        yield [what, size, ours, f"{amount(figure.median(name), measure.unit)} {name}", f"{number(ratio)} ×",
               f"{number(low)}–{number(high)}", f"{number(processor_ratio)} ×" if processor_ratio else "", *reached]


def figure_rows(run):
    return [row for measure in MEASURES for figure in run.figures.get(measure.name, [])
            for row in rows_of(measure, figure)]


def growth_rows(run):
    rows = []
    for measure in MEASURES:
        figures = run.figures.get(measure.name, [])
        ours = growth(figures)
        if not measure.largest_growth or ours is None:
            continue
        bare = f"{growth(figures, measure.baseline):.2f} {measure.baseline}" if measure.baseline else ""
        too_fast = ": too fast" if grows_too_fast(measure, figures) else ""
        rows.append([measure.title, f"{figures[0].size:,} to {figures[-1].size:,} {measure.sizes}",
                     f"{ours:.2f}{too_fast}", bare, f"{measure.largest_growth}"])
    return rows


def is_number(text):
    return text[:1].isdigit() or text.startswith("≤")


def text_table(head, rows):
    """For the terminal: the first column stands once for rows that share it."""
    widths = [max(len(row[column]) for row in [head, *rows]) for column in range(len(head))]
    lines = []
    before = None
    for row in [head, *rows]:
        shown = ["" if row[0] == before else row[0], *row[1:]]
        before = row[0]
        lines.append("  ".join(cell.rjust(width) if is_number(cell) else cell.ljust(width)
                               for cell, width in zip(shown, widths)).rstrip())
    return "\n".join(lines)


def markdown_table(head, rows):
    lines = [f"| {' | '.join(head)} |",
             "|" + "|".join("---" if column == 0 else "--:" for column in range(len(head))) + "|"]
    lines += [f"| {' | '.join(row)} |" for row in rows]
    return "\n".join(lines)

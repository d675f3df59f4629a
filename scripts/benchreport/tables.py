"""The tables of a run, as lists of rows of text: for the terminal and for Markdown."""

from figures import OURS, growth, grows_too_fast, quartiles
from measures import MEASURES

HEAD = ["what", "n", "ours", "baseline", "ratio", "middle half", "of processor time", "goal", "of the goal"]
GROWTH_HEAD = ["what", "over", "ours grows as n to the", "the baseline", "limit"]


def amount(value, unit):
    """With a unit: of a time the one that suits it."""
    if unit != "s" or value == 0:
        return f"{number(value)} {unit}"
    for factor, name in ((1, "s"), (1e3, "ms"), (1e6, "µs")):
        if value * factor >= 1:
            return f"{number(value * factor)} {name}"
    return f"{number(value * 1e9)} ns"


def number(value):
    """Three digits that say something."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.3g}"


def of_goal(value, goal):
    """How much of the goal is used up: what is reached has 100 % at the most."""
    if goal == 0:
        return "reached" if value == 0 else "missed"
    return f"{value / goal * 100:,.0f} %"


def rows_of(measure, figure):
    """One row for each baseline; the goal stands in that of the measure's."""
    goal = measure.goal(figure.size)
    start = [f"{measure.title} ({measure.sizes})" if measure.sizes else measure.title,
             f"{figure.size:,}" if measure.sizes else "", amount(figure.median(), measure.unit)]
    baselines = [name for name in figure.samples if name != OURS]
    if not baselines:
        reached = ["", ""] if goal is None else [f"≤ {amount(goal, measure.unit)}", of_goal(figure.median(), goal)]
        yield [*start, "", "", "", "", *reached]
    for name in baselines:
        low, high = quartiles(figure.ratios(name))
        ratio, processor_ratio = figure.ratio(name), figure.processor_ratio(name)
        has_goal = goal is not None and name == measure.baseline
        yield [*start, f"{amount(figure.median(name), measure.unit)} {name}", f"{number(ratio)} ×",
               f"{number(low)}–{number(high)}", f"{number(processor_ratio)} ×" if processor_ratio else "",
               *([f"≤ {goal:g} ×", of_goal(ratio, goal)] if has_goal else ["", ""])]


def figure_table(run, before=None):
    """Head and rows. With an earlier run, a last column tells of that one's figures."""
    head = HEAD + (["before"] if before else [])
    rows = []
    for measure in MEASURES:
        for figure in run.figures.get(measure.name, []):
            earlier = before.figure(measure.name, figure.size) if before else None
            olds = [f"{row[2]} {f'({row[4]})' if row[4] else ''}".strip() for row in rows_of(measure, earlier)] \
                if earlier else []
            for index, row in enumerate(rows_of(measure, figure)):
                rows.append(row + ([olds[index] if index < len(olds) else ""] if before else []))
    return head, rows


def growth_table(run, before=None):
    head = GROWTH_HEAD + (["before"] if before else [])
    rows = []
    for measure in MEASURES:
        figures = run.figures.get(measure.name, [])
        ours = growth(figures)
        if not measure.largest_growth or not figures:
            continue
        old = growth(before.figures.get(measure.name, [])) if before else None
        rows.append([measure.title, f"{figures[0].size:,} to {figures[-1].size:,} {measure.sizes}",
                     exponent(ours) + (": too fast" if grows_too_fast(measure, figures) else ""),
                     f"{exponent(growth(figures, measure.baseline))} {measure.baseline}" if measure.baseline else "",
                     f"{measure.largest_growth}"] + ([exponent(old)] if before else []))
    return head, rows


def exponent(value):
    return "unknown" if value is None else f"{value:.2f}"


def without_repeats(rows):
    """The first column stands once for rows that share it."""
    before = None
    for row in rows:
        yield ["" if row[0] == before else row[0], *row[1:]]
        before = row[0]


def text_table(head, rows):
    """For the terminal."""
    widths = [max(len(row[column]) for row in [head, *rows]) for column in range(len(head))]
    return "\n".join("  ".join(cell.rjust(width) if column else cell.ljust(width)
                               for column, (cell, width) in enumerate(zip(row, widths))).rstrip()
                     for row in [head, *without_repeats(rows)])


def markdown_table(head, rows):
    lines = [f"| {' | '.join(head)} |",
             "|" + "|".join("---" if column == 0 else "--:" for column in range(len(head))) + "|"]
    lines += [f"| {' | '.join(row)} |" for row in without_repeats(rows)]
    return "\n".join(lines)

"""What the samples of a run say: medians, ratios, growth."""

import json
import math
import statistics

OURS = "ours"


class Figure:
    """The samples of one measure at one size, by contender, in the order of the rounds; and the mean processor time of
    a run with its preparation, where the platform has counted any."""

    def __init__(self, line):
        self.size = line["n"]
        self.samples = line["samples"]
        self.processor = line.get("processor", {})

    def median(self, contender=OURS):
        return statistics.median(self.samples[contender])

    def ratios(self, baseline):
        """Ours by the baseline's, of each round: what disturbs a round disturbs both."""
        return [ours / bare for ours, bare in zip(self.samples[OURS], self.samples[baseline])]

    def ratio(self, baseline):
        return statistics.median(self.ratios(baseline))

    def processor_ratio(self, baseline):
        ours, bare = self.processor.get(OURS), self.processor.get(baseline)
        return ours / bare if ours and bare else None


class Run:
    """Figures by measure, each list in the order of the sizes."""

    def __init__(self, lines):
        self.figures = {}
        for line in lines:
            self.figures.setdefault(line["measure"], []).append(Figure(line))
        for figures in self.figures.values():
            figures.sort(key=lambda figure: figure.size)

    def figure(self, name, size):
        return next((figure for figure in self.figures.get(name, []) if figure.size == size), None)


def read_run(path):
    """What the bench program printed, one line of JSON for each figure."""
    with open(path, encoding="utf-8") as file:
        return Run(json.loads(line) for line in file if line.strip())


def quartiles(values):
    if len(values) < 4:
        return min(values), max(values)
    low, _, high = statistics.quantiles(values, n=4)
    return low, high


def undisturbed_times(figures, contender=OURS):
    """Of each size the time that other work on the machine disturbs least: the processor time, or where the platform
    has not counted any for some size, the shortest one."""
    if all(figure.processor.get(contender) for figure in figures):
        return [figure.processor[contender] for figure in figures]
    return [min(figure.samples[contender]) for figure in figures]


def growth(figures, contender=OURS):
    """The exponent of n with which the time grows: least squares over the logarithms. None for fewer than three
    sizes."""
    if len(figures) < 3:
        return None
    sizes = [math.log(figure.size) for figure in figures]
    times = [math.log(time) for time in undisturbed_times(figures, contender)]
    mean_size, mean_time = statistics.fmean(sizes), statistics.fmean(times)
    return (sum((size - mean_size) * (time - mean_time) for size, time in zip(sizes, times))
            / sum((size - mean_size) ** 2 for size in sizes))


def grows_too_fast(measure, figures):
    """Whether the exponent is above the limit, or could not be had because the sizes soon took too long. Memory is
    slower than a cache: that lets the baseline seem to grow too, and only what is beyond it is the library's."""
    if not measure.largest_growth or not figures:
        return False
    ours = growth(figures)
    if ours is None:
        return True
    beyond = growth(figures, measure.baseline) - 1 if measure.baseline else 0
    return ours > measure.largest_growth and ours - max(beyond, 0) > measure.largest_growth

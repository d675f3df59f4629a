"""What the bench program measures, in the order of the tables: what each measure is, what it is compared with, and
what is to be reached."""

from dataclasses import dataclass, field

# A larger exponent fails the check: 1 is linear.
LARGEST_GROWTH = 1.15


@dataclass(frozen=True)
class Measure:
    name: str  # the bench program's
    title: str
    sizes: str  # what n counts
    baseline: str = ""  # the contender that the goal is about; none: the goal is about the figure itself
    unit: str = "s"  # of the samples
    goals: dict = field(default_factory=dict)  # by size; None for all other sizes
    largest_growth: float = 0  # over n; 0: n does not grow, or what is measured need not grow with it

    def goal(self, size):
        return self.goals.get(size, self.goals.get(None))


MEASURES = [
    Measure("load", "Load a catalogue file", "records", "XmlLite", goals={None: 1.15},
            largest_growth=LARGEST_GROWTH),
    Measure("save", "Save it", "records", "XmlLite", goals={None: 1.05}, largest_growth=LARGEST_GROWTH),
    Measure("exclude", "Names to exclude, 5 hits", "records", "scan", goals={1000: 4, 100000: 2},
            largest_growth=LARGEST_GROWTH),
    Measure("exclude-hits", "Names to exclude, of 10,000 records", "hits", "scan", largest_growth=LARGEST_GROWTH),
    Measure("add-shortcuts", "Add the shortcuts of a Start menu", "shortcuts", "hash set", goals={None: 3},
            largest_growth=LARGEST_GROWTH),
]

# What stands beside some measures, without a goal.
BASELINES = {
    "XmlLite": "the platform's XML reader or writer",
    "rapidxml": "a fast XML parser in memory",
    "scan": "a scan of the same names for the wanted one",
    "hash set": "the same folded paths put into a hash set",
}

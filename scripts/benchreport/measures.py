"""What the bench program measures, in the order of the tables: what each measure is, what it is compared with, and
what is to be reached."""

from dataclasses import dataclass, field

# A larger exponent fails the check: 1 is linear.
LARGEST_GROWTH = 1.15


@dataclass(frozen=True)
class Measure:
    name: str  # the bench program's
    title: str
    sizes: str = ""  # what n counts; nothing: n is of no interest
    baseline: str = ""  # the contender that the goal is about; none: the goal is about the figure itself
    unit: str = "s"  # of the samples
    goals: dict = field(default_factory=dict)  # by size; None for all other sizes
    largest_growth: float = 0  # 0: what is measured does not grow with n, or n does not vary

    def goal(self, size):
        return self.goals.get(size, self.goals.get(None))


MEASURES = [
    Measure("load", "Load a catalogue file", "records", "XmlLite", goals={None: 1.15},
            largest_growth=LARGEST_GROWTH),
    Measure("save", "Save it", "records", "XmlLite", goals={None: 1.05}, largest_growth=LARGEST_GROWTH),
    Measure("exclude", "Names to exclude, 5 hits", "records", "scan", goals={1000: 4, 100000: 2},
            largest_growth=LARGEST_GROWTH),
    Measure("exclude-hits", "Names to exclude of 10,000 records", "hits", "scan", largest_growth=LARGEST_GROWTH),
    Measure("add-shortcuts", "Add the shortcuts of a Start menu", "shortcuts", "hash set", goals={None: 3},
            largest_growth=LARGEST_GROWTH),
    Measure("find-packages", "Look all packages up", "packages", "hash map", largest_growth=LARGEST_GROWTH),
    Measure("mark", "Mark what is installed", "records", "array", largest_growth=LARGEST_GROWTH),
    Measure("first-pass", "First pass, 60 packages", "shortcuts", "same calls", goals={300: 1.3},
            largest_growth=LARGEST_GROWTH),
    Measure("first-pass-packages", "First pass, 500 packages", "shortcuts", "same calls", goals={None: 1.3}),
    Measure("log", "A line of the log", baseline="bare appends"),
    Measure("log-off", "The same while the log is off"),
    Measure("memory", "Heap of a record beyond its text", "records", unit="bytes", goals={None: 200}),
    Measure("memory-peak", "The same at the most, while loading", "records", unit="bytes"),
    Measure("file", "The DLL, stripped", unit="KB", goals={None: 350}),
    Measure("start", "QanhInitialize", "records", "bare start"),
    Measure("stop", "QanhFinalize between two passes", baseline="bare stop", goals={None: 2}),
    Measure("idle", "Processor time of the idle library", "seconds", goals={None: 0}),
    Measure("launch", "A launch beyond its pauses", "records"),
]

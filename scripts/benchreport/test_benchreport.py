"""Tests of what is told of samples: a check that never failed would be worthless. Run by scripts/lint."""

import unittest
import xml.dom.minidom

import growth_picture
from figures import Run, growth, grows_too_fast
from measures import LARGEST_GROWTH, MEASURES, Measure
from tables import amount, figure_table, growth_table, markdown_table, of_goal, text_table

SIZES = [300, 1000, 3000, 10000]
MEASURE = Measure("some", "Some work", "things", "bare", goals={300: 2}, largest_growth=LARGEST_GROWTH)


def line(name, size, ours, bare=None, **more):
    samples = {"ours": ours} | ({"bare": bare} if bare else {})
    return {"measure": name, "n": size, "samples": samples} | more


def run_of(ours, bare=lambda size: size * 1e-7, sizes=SIZES):
    """A run of one measure whose times are functions of the size."""
    return Run(line("some", size, [ours(size)] * 5, [bare(size)] * 5) for size in sizes)


class Growth(unittest.TestCase):
    def exponent(self, run, contender="ours"):
        return growth(run.figures["some"], contender)

    def test_is_the_exponent_of_n(self):
        for exponent in (0.5, 1, 2):
            self.assertAlmostEqual(self.exponent(run_of(lambda n, e=exponent: 3e-6 * n ** e)), exponent)

    def test_takes_the_shortest_time(self):
        run = Run(line("some", size, [size, size * 7, size * 9]) for size in SIZES)
        self.assertAlmostEqual(self.exponent(run), 1)

    def test_takes_the_processor_time_where_all_sizes_have_one(self):
        run = Run(line("some", size, [1], [1], processor={"ours": size ** 2, "bare": size if size > 1000 else 0})
                  for size in SIZES)
        self.assertAlmostEqual(self.exponent(run), 2)
        self.assertAlmostEqual(self.exponent(run, "bare"), 0)

    def test_needs_three_sizes(self):
        self.assertIsNone(self.exponent(run_of(lambda n: n, sizes=SIZES[:2])))


class Check(unittest.TestCase):
    def fails(self, *arguments, **more):
        return grows_too_fast(MEASURE, run_of(*arguments, **more).figures["some"])

    def test_passes_what_is_linear(self):
        self.assertFalse(self.fails(lambda n: 1e-6 * n))
        self.assertFalse(self.fails(lambda n: 1e-6 * n ** 1.14))

    def test_fails_what_grows_faster(self):
        self.assertTrue(self.fails(lambda n: 1e-6 * n ** 1.16))
        self.assertTrue(self.fails(lambda n: 1e-9 * n ** 2))

    def test_takes_off_what_the_machine_adds_to_the_baseline(self):
        self.assertFalse(self.fails(lambda n: 1e-6 * n ** 1.2, lambda n: 1e-7 * n ** 1.1))
        self.assertTrue(self.fails(lambda n: 1e-6 * n ** 1.3, lambda n: 1e-7 * n ** 1.1))
        self.assertTrue(self.fails(lambda n: 1e-6 * n ** 1.2, lambda n: 1e-7 * n ** 0.5))

    def test_fails_what_took_too_long_for_three_sizes(self):
        self.assertTrue(self.fails(lambda n: 1e-6 * n, sizes=SIZES[:2]))

    def test_asks_nothing_of_what_was_not_measured_or_has_no_limit(self):
        self.assertFalse(grows_too_fast(MEASURE, []))
        self.assertFalse(grows_too_fast(Measure("some", "", baseline="bare"),
                                        run_of(lambda n: n ** 2).figures["some"]))


class Tables(unittest.TestCase):
    def rows(self, name, *lines, before=None):
        self.assertIn(name, [measure.name for measure in MEASURES])
        return figure_table(Run(lines), before)[1]

    def test_ratios_are_those_of_the_rounds(self):
        samples = {"ours": [2, 40, 6], "XmlLite": [1, 10, 3]}
        row, = self.rows("load", {"measure": "load", "n": 1000, "samples": samples})
        self.assertEqual(row, ["Load a catalogue file (records)", "1,000", "6 s", "3 s XmlLite", "2 ×", "2–4", "",
                               "≤ 1.15 ×", "174 %"])

    def test_the_goal_is_that_of_the_size_and_of_the_measures_baseline(self):
        samples = {"ours": [4], "scan": [1]}
        rows = self.rows("exclude", *({"measure": "exclude", "n": size, "samples": samples}
                                      for size in (3000, 100000, 1000)))
        self.assertEqual([row[1] for row in rows], ["1,000", "3,000", "100,000"])
        self.assertEqual([row[7:] for row in rows], [["≤ 4 ×", "100 %"], ["", ""], ["≤ 2 ×", "200 %"]])
        rows = self.rows("load", {"measure": "load", "n": 1, "samples": {"ours": [1], "rapidxml": [1]}})
        self.assertEqual(rows[0][7:], ["", ""])

    def test_figures_without_a_baseline_are_the_goal_themselves(self):
        row, = self.rows("memory", line("memory", 10, [150]))
        self.assertEqual(row[2:], ["150 bytes", "", "", "", "", "≤ 200 bytes", "75 %"])

    def test_an_earlier_run_makes_a_column(self):
        before = Run([{"measure": "load", "n": 10, "samples": {"ours": [8], "XmlLite": [2]}}])
        rows = self.rows("load", *({"measure": "load", "n": size, "samples": {"ours": [2], "XmlLite": [2]}}
                                   for size in (10, 20)), before=before)
        self.assertEqual([row[-1] for row in rows], ["8 s (4 ×)", ""])

    def test_growth_is_told_with_what_is_too_fast(self):
        run = Run({"measure": "load", "n": size, "samples": {"ours": [size ** 2], "XmlLite": [size]}} for size in SIZES)
        self.assertEqual(growth_table(run, run)[1],
                         [["Load a catalogue file", "300 to 10,000 records", "2.00: too fast", "1.00 XmlLite", "1.15",
                           "2.00"]])

    def test_amounts_have_the_unit_that_suits_them(self):
        self.assertEqual([amount(value, "s") for value in (2, 0.0451, 3.7e-5, 2.9e-9, 0)],
                         ["2 s", "45.1 ms", "37 µs", "2.9 ns", "0 s"])
        self.assertEqual(amount(1234.5, "bytes"), "1,234 bytes")

    def test_a_goal_of_nothing_is_reached_by_nothing(self):
        self.assertEqual([of_goal(0, 0), of_goal(1, 0)], ["reached", "missed"])

    def test_the_first_column_is_not_repeated(self):
        rows = [["a", "1"], ["a", "2"], ["b", "3"]]
        self.assertEqual(text_table(["what", "n"], rows), "what  n\na     1\n      2\nb     3")
        self.assertEqual(markdown_table(["what", "n"], rows),
                         "| what | n |\n|---|--:|\n| a | 1 |\n|  | 2 |\n| b | 3 |")


class Picture(unittest.TestCase):
    def test_shows_what_grows(self):
        run = Run({"measure": name, "n": size, "samples": {"ours": [size * 2e-6], baseline: [size * 1e-6]}}
                  for name, baseline in (("load", "XmlLite"), ("save", "XmlLite")) for size in SIZES)
        svg = xml.dom.minidom.parseString(growth_picture.draw(run))
        self.assertEqual(len(svg.getElementsByTagName("polyline")), 4)

    def test_is_none_of_what_does_not(self):
        self.assertIsNone(growth_picture.draw(Run([line("memory", 10, [150])])))


if __name__ == "__main__":
    unittest.main()

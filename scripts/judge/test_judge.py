"""Tests of what scripts/coverage and scripts/mutate judge by. Run by scripts/lint."""

import tempfile
import unittest
from collections import Counter

from changes import find_changes
from known import read_known
from uncovered import compare, find_uncovered, table


def afters(text, first=1):
    """What the lines of a function are changed into, dropped statements as ""."""
    return {change.after.strip() for change in find_changes("src/a/A.cpp", "void F()\n{\n" + text + "\n}\n")}


class ChangesTest(unittest.TestCase):
    def test_condition_is_negated_and_its_operators_are_exchanged(self):
        self.assertEqual(afters("    if (a == b && !c) {\n    }"),
                         {"if (!(a == b && !c)) {", "if (a != b && !c) {", "if (a == b || !c) {", "if (a == b && c) {"})

    def test_condition_behind_an_initialisation(self):
        self.assertEqual(afters("    if (int a = F(); a < b) {\n    }"),
                         {"if (int a = F(); !(a < b)) {", "if (int a = F(); a <= b) {"})

    def test_result_is_exchanged_once(self):
        self.assertEqual(afters("    if (FAILED(hr)) {\n    }"), {"if (SUCCEEDED(hr)) {"})

    def test_numbers_and_constants(self):
        self.assertEqual(afters("    return 0x10;"), {"return 17;"})
        self.assertEqual(afters("    return E_POINTER;"), {"return E_ABORT;"})
        self.assertEqual(afters("    return a2 + 1.5;"), {"return a2 - 1.5;"})
        self.assertEqual(afters("    return a ? b : c;"), {"return a ? c : b;"})

    def test_nothing_in_comments_and_one_change_in_texts(self):
        self.assertEqual(afters('    // a == b, "c"'), set())
        self.assertEqual(afters('    return L"a == \\"1";  // 2'), {'return L"~a == \\"1";  // 2'})
        self.assertEqual(afters("    return '1';"), set())

    def test_statement_is_dropped_with_all_its_lines(self):
        text = "void F()\n{\n    G(\n        a);\n    H();\n}\n"
        dropped = [change for change in find_changes("src/a/A.cpp", text) if not change.after]
        self.assertEqual([change.apply(text) for change in dropped],
                         ["void F()\n{\n    H();\n}\n", "void F()\n{\n    G(\n        a);\n}\n"])

    def test_declaration_with_a_value_is_not_dropped_and_a_guard_is(self):
        self.assertEqual(afters("    const int a = b;\n    char c[2] = {};"), {"char c[3] = {};"})
        self.assertEqual(afters("    a = b;"), {""})
        self.assertEqual(afters("    const Lock lock(m);"), {""})

    def test_key_has_no_line_number(self):
        change = next(iter(find_changes("src/a/A.cpp", "\n\n    return  true;")))
        self.assertEqual(change.line, 3)
        self.assertEqual(change.key(), ("src/a/A.cpp: return true;", "=> return false;"))


class KnownTest(unittest.TestCase):
    def read(self, text, needed):
        with tempfile.NamedTemporaryFile("w", suffix=".txt", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            return read_known(file.name, needed)

    def test_entries(self):
        self.assertEqual(self.read("# words\n\na: b\n  => c\n  why\n  so\nd: e\n  => f\n  why\n", 3),
                         [("a: b", "=> c", "why", "so"), ("d: e", "=> f", "why")])

    def test_entry_without_a_reason_is_refused(self):
        self.assertRaises(ValueError, self.read, "a: b\n  => c\nd: e\n  => f\n  why\n", 3)
        self.assertRaises(ValueError, self.read, "  why\n", 2)


class UncoveredTest(unittest.TestCase):
    @staticmethod
    def report(*lines):
        return {"files": [{"file": "src/A.cpp",
                           "lines": [{"line_number": number, "count": count,
                                      "branches": [{"count": branch} for branch in branches]}
                                     for number, count, branches in lines]}]}

    def find(self, *lines):
        return find_uncovered(self.report(*lines), lambda path, number: f"text {number}")

    def test_lines_and_branches(self):
        self.assertEqual(self.find((1, 2, [1, 1]), (2, 0, []), (3, 4, [0, 4])),
                         {"src/A.cpp: text 2": ["line 2: not run"],
                          "src/A.cpp: text 3": ["line 3: 1 of 2 branches not taken"]})

    def test_line_of_several_functions_counts_once(self):
        self.assertEqual(self.find((1, 0, [0, 0]), (1, 2, [0, 2]), (1, 2, [2, 0])), {})

    def test_table(self):
        rows = [line.split() for line in table(self.report((1, 2, [1, 0]), (2, 0, []), (2, 1, []), (3, 0, [])))]
        self.assertEqual(rows[1:], [[name, "2", "of", "3", "66.7", "%", "1", "of", "2", "50.0", "%"]
                                    for name in ("src/A.cpp", "all")])

    def test_complaints(self):
        place = "line 1: not run"
        self.assertEqual(list(compare({"a": [place]}, Counter("a"))), [])
        self.assertEqual(len(list(compare({"a": [place]}, Counter()))), 1)
        self.assertEqual(len(list(compare({}, Counter("a")))), 1)
        self.assertEqual(len(list(compare({"a": [place, place]}, Counter("a")))), 1)


if __name__ == "__main__":
    unittest.main()

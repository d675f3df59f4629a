"""Tests of gtest.py and report.py, with a program that plays a GoogleTest program: a runner that overlooked a failure
would make all other tests worthless. Run by scripts/lint."""

import contextlib
import io
import os
import re
import sys
import tempfile
import unittest

import gtest
from gtest import Broken, Outcome, Result, Run, list_tests
from lanes import HEAP_COMPLAINT
from report import Report

PROGRAM = r'''
import os, sys, time
if sys.argv[1] == "--gtest_list_tests":
    print("Running main() from gmock_main.cc\nSuite.\n  Good\n  Bad\nKinds/Suite.\n  Other/0  # GetParam() = 4")
    sys.exit()
tests = open("flags.txt").read().split()[0].split("=", 1)[1].split(":")
failed = False
for test in tests:
    kind = test.split(".")[1]
    if kind == "Forgotten":
        continue
    if kind == "Quit":
        sys.exit(0)
    print(f"[ RUN      ] {test}", flush=True)
    print(f"words of {test}", flush=True)
    if kind == "Crash":
        os.abort()
    if kind == "Exit":
        os._exit(0)
    if kind == "Hang":
        time.sleep(60)
    if kind == "Chatter":
        while True:
            print("still here", flush=True)
            time.sleep(0.01)
    if kind == "Child":
        # Holds the output open when this program has ended.
        os.system("sleep 60 &")
    if kind == "Damaged":
        print("0024:err:heap:validate_used_block invalid block tail")
    if kind == "Freed":
        print("0024:warn:heap:unsafe_block_from_ptr heap 0, ptr 1: not in use")
    if kind == "Found":
        print("a heap is damaged")
    failed = failed or kind == "Bad"
    word = {"Bad": "  FAILED  ", "Skip": "  SKIPPED "}.get(kind, "       OK ")
    where = ", where GetParam() = 4" if kind == "Bad" else ""
    end = "" if kind == "Unended" else "\n"
    print(f"no line end{end}[{word}] {test}{where} (3 ms)", flush=True)
    if kind == "ThenCrash":
        os._exit(7)
sys.exit(1 if failed or "Suite.Late" in tests else 0)
'''


class GtestTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        with open(os.path.join(self.folder, "program.py"), "w", encoding="utf-8") as file:
            file.write(PROGRAM)
        self.command = [sys.executable, os.path.join(self.folder, "program.py")]

    def play(self, *kinds, limit=30.0, again=False):
        """Outcomes of the tests, as (name, result), and the run."""
        run = Run("program", self.command, dict(os.environ), self.folder, ["Suite." + kind for kind in kinds], limit,
                  HEAP_COMPLAINT, again)
        self.outcomes = list(run.outcomes())
        self.run_of = run
        return [(outcome.test[len("Suite."):], outcome.result.name) for outcome in self.outcomes]

    def test_lists_every_test(self):
        self.assertEqual(list_tests(self.command, dict(os.environ), self.folder),
                         ["Suite.Good", "Suite.Bad", "Kinds/Suite.Other/0"])

    def test_program_that_cannot_start_is_no_empty_list(self):
        with self.assertRaises(Broken):
            list_tests(["false"], dict(os.environ), self.folder)

    def test_results_are_told_apart(self):
        self.assertEqual(self.play("Good", "Bad", "Skip", "Unended"),
                         [("Good", "PASSED"), ("Bad", "FAILED"), ("Skip", "SKIPPED"), ("Unended", "PASSED")])
        self.assertEqual(self.outcomes[1].output, "words of Suite.Bad\nno line end\n")
        self.assertEqual(self.run_of.left, [])
        self.assertFalse(self.run_of.crashed)

    def test_crash_names_its_test_and_leaves_the_rest(self):
        for kind in ("Crash", "Exit"):
            self.assertEqual(self.play("Good", kind, "Skip", "Bad"), [("Good", "PASSED"), (kind, "FAILED")])
            self.assertIn("ended", self.outcomes[1].reason)
            self.assertIn(f"words of Suite.{kind}", self.outcomes[1].output)
            self.assertEqual(self.run_of.left, ["Suite.Skip", "Suite.Bad"])
            self.assertTrue(self.run_of.crashed)

    def test_crash_between_tests_counts_against_the_one_before(self):
        self.assertEqual(self.play("ThenCrash", "Good"), [("ThenCrash", "PASSED"), ("ThenCrash", "FAILED")])
        self.assertEqual(self.run_of.left, ["Suite.Good"])

    def test_crash_before_the_first_test_fails_all(self):
        self.command = ["false"]
        self.assertEqual(self.play("Good", "Bad"), [("Good", "FAILED"), ("Bad", "FAILED")])
        self.assertEqual(self.run_of.left, [])

    def test_program_that_ends_before_it_begins_leaves_its_tests_to_another(self):
        self.command = ["false"]
        self.assertEqual(self.play("Good", "Bad", again=True), [])
        self.assertEqual(self.run_of.never_began, "the program ended with 1")
        self.assertEqual(self.run_of.left, ["Suite.Good", "Suite.Bad"])
        # Nor is it begun by what Wine says of a program without a thread yet.
        for words in ("err:virtual:first wine: no place", "wine client error:0: no server"):
            self.command = ["bash", "-c", f"echo '{words}'; exit 1"]
            self.assertEqual(self.play("Good", again=True), [])
            self.assertEqual(self.run_of.never_began, "the program ended with 1")
        # One that has said something has begun, and one that ends well is no program of tests.
        for command in ("echo word; exit 1", "echo 0024:err:heap:words; exit 1", "exit 0"):
            self.command = ["bash", "-c", command]
            self.assertEqual(self.play("Good", again=True), [("Good", "FAILED")])
            self.assertEqual(self.run_of.never_began, "")

    def test_failure_behind_the_last_test_is_seen(self):
        self.assertEqual(self.play("Good", "Late"), [("Good", "PASSED"), ("Late", "PASSED"), ("Late", "FAILED")])

    def test_test_that_never_began_is_not_forgotten(self):
        self.play("Good", "Forgotten")
        self.assertEqual(self.run_of.left, ["Suite.Forgotten"])
        self.assertEqual(self.play("Forgotten"), [("Forgotten", "FAILED")])
        self.play("Good", "Quit", "Bad")
        self.assertEqual(self.run_of.left, ["Suite.Quit", "Suite.Bad"])

    def test_hung_test_is_named_and_killed(self):
        for kind in ("Hang", "Chatter"):
            self.assertEqual(self.play("Good", kind, "Bad", limit=1.0), [("Good", "PASSED"), (kind, "FAILED")])
            self.assertIn("hung", self.outcomes[1].reason)
            self.assertEqual(self.run_of.left, ["Suite.Bad"])

    def test_child_that_holds_the_output_does_not_hold_the_run(self):
        self.assertEqual(self.play("Child", "Good", limit=20.0), [("Child", "PASSED"), ("Good", "PASSED")])

    def test_what_is_written_right_before_the_end_is_read(self):
        real_select = gtest.select.select
        self.addCleanup(setattr, gtest.select, "select", real_select)

        def select_until_the_program_has_ended(*_):
            os.waitid(os.P_ALL, 0, os.WEXITED | os.WNOWAIT)
            gtest.select.select = real_select
            return [], [], []

        gtest.select.select = select_until_the_program_has_ended
        self.assertEqual(self.play("Good"), [("Good", "PASSED")])

    def test_complaint_of_the_runtime_fails_its_test(self):
        self.assertEqual(self.play("Good", "Damaged", "Freed", "Found", "Skip"),
                         [("Good", "PASSED"), ("Damaged", "FAILED"), ("Freed", "FAILED"), ("Found", "FAILED"),
                          ("Skip", "SKIPPED")])


class ReportTest(unittest.TestCase):
    def close(self, *outcomes, expected=None, is_whole=True, started_again=0):
        """The last line and the verdict."""
        with contextlib.redirect_stdout(io.StringIO()) as self.text:
            report = Report({"S.Known": "why"}, io.StringIO())
            report.expect(len(outcomes) if expected is None else expected)
            for name, result in outcomes:
                report.add(Outcome("program", "S." + name, result, output="its output"), "")
            for _ in range(started_again):
                report.start_again("program S.A: the program ended with 1")
            is_good = report.close(is_whole)
        return self.text.getvalue().splitlines()[-1], bool(is_good)

    def test_all_passed(self):
        self.assertEqual(self.close(("A", Result.PASSED), ("B", Result.PASSED)), ("2 passed, 0 failed, 0 skipped", True))

    def test_failure_is_shown_in_full(self):
        self.assertEqual(self.close(("A", Result.PASSED), ("B", Result.FAILED)), ("1 passed, 1 failed, 0 skipped", False))
        self.assertIn("its output", self.text.getvalue())

    def test_known_skip_is_listed_and_unknown_one_fails(self):
        self.assertEqual(self.close(("A", Result.PASSED), ("Known", Result.SKIPPED)),
                         ("1 passed, 0 failed, 1 skipped", True))
        self.assertIn("program S.Known: why", self.text.getvalue())
        self.assertEqual(self.close(("A", Result.PASSED), ("B", Result.SKIPPED)), ("1 passed, 1 failed, 0 skipped", False))

    def test_skipped_here_and_run_there_is_run(self):
        self.assertEqual(self.close(("A", Result.SKIPPED), ("A", Result.PASSED)), ("1 passed, 0 failed, 0 skipped", True))

    def test_what_failed_once_of_three_times_failed(self):
        outcomes = [("A", Result.PASSED), ("A", Result.FAILED), ("A", Result.PASSED)]
        self.assertEqual(self.close(*outcomes), ("0 passed, 1 failed, 0 skipped", False))
        self.assertIn("program S.A: 1 of 3 times", self.text.getvalue())

    def test_starts_that_came_to_nothing_are_listed_and_fail_when_they_are_many(self):
        self.assertTrue(self.close(("A", Result.PASSED), started_again=2)[1])
        self.assertIn("Started again:\n  program S.A: the program ended with 1\n", self.text.getvalue())
        self.assertFalse(self.close(("A", Result.PASSED), started_again=3)[1])

    def test_missing_outcome_fails(self):
        self.assertFalse(self.close(("A", Result.PASSED), expected=2)[1])

    def test_interrupted_or_empty_run_is_no_success(self):
        self.assertFalse(self.close(("A", Result.PASSED), is_whole=False)[1])
        self.assertFalse(self.close()[1])


if __name__ == "__main__":
    unittest.main()

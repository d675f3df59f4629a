"""Tests of what scripts/proof runs and keeps. Run by scripts/lint."""

import contextlib
import io
import os
import pathlib
import queue
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "testrun"))

from fingerprints import programs_under_wine  # noqa: E402
from gtest import Outcome, Result  # noqa: E402
from lanes import watch  # noqa: E402
from native import NativeLane  # noqa: E402
from results import Results, figures_in, progress_in  # noqa: E402


class OutputTest(unittest.TestCase):
    def test_figures(self):
        self.assertEqual(figures_in("words\nfigure: lists asked for = 10000 lists\nfigure: a = b = 1.5\nxfigure: c = 1\n"),
                         [("lists asked for", "10000", "lists"), ("a", "b", "= 1.5")])
        self.assertEqual(figures_in("figure: reports = 0\n"), [("reports", "0", "")])

    def test_progress(self):
        self.assertEqual(progress_in("progress: 5/20"), " 25 %")
        self.assertEqual(progress_in("progress: 0/0"), " 0 %")
        self.assertEqual(progress_in("in progress: 5/20"), "")


class FolderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.printed = io.StringIO()
        redirect = contextlib.redirect_stdout(self.printed)
        redirect.__enter__()
        self.addCleanup(redirect.__exit__, None, None, None)

    def results(self, again=False):
        return Results(self.folder / "kept", "full form", again)

    def last_line(self):
        return self.printed.getvalue().splitlines()[-1]


class FingerprintTest(FolderTest):
    def setUp(self):
        super().setUp()
        for name in ("bin/proof_a.exe", "bin/proof_b.exe", "bin/unit_c.exe", "bin/TestHost.exe", "bin/QanHelper.dll",
                     "bin/QanHelper.pdb", "tests/proof/catalogue-cases"):
            self.write(name, name)
        self.write("test-programs.txt", "proof_b apart\nproof_a apart\nunit_c whole\n")

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def changed_by(self, name, words="full 1"):
        before = programs_under_wine(self.folder, "full 1")
        self.write(name, "other")
        after = programs_under_wine(self.folder, words)
        self.assertEqual(list(after), ["proof_a", "proof_b"])
        return [program for program in after if after[program] != before[program]]

    def test_changes_with_the_program_itself(self):
        self.assertEqual(self.changed_by("bin/proof_a.exe"), ["proof_a"])

    def test_changes_with_what_programs_load_start_and_read(self):
        for name in ("bin/QanHelper.dll", "bin/TestHost.exe", "tests/proof/catalogue-cases"):
            self.assertEqual(self.changed_by(name), ["proof_a", "proof_b"], name)

    def test_other_tests_and_files_do_not_matter(self):
        for name in ("bin/unit_c.exe", "bin/QanHelper.pdb"):
            self.assertEqual(self.changed_by(name), [], name)

    def test_changes_with_form_and_seed(self):
        self.assertEqual(self.changed_by("bin/QanHelper.pdb", "full 2"), ["proof_a", "proof_b"])


class ResultsTest(FolderTest):
    @staticmethod
    def outcome(result, output="", test="S.T"):
        return Outcome("proof_a", test, result, 2.0, output, "" if result is Result.PASSED else "why")

    def test_what_has_passed_is_not_run_again(self):
        results = self.results()
        self.assertTrue(results.expect("proof_a", "S.T", "1"))
        results.add(self.outcome(Result.PASSED, "figure: lists = 3 lists\n"), "")
        again = self.results()
        self.assertFalse(again.expect("proof_a", "S.T", "1"))
        self.assertTrue(again.close(True))
        self.assertEqual(self.last_line(), "1 passed, 0 failed, 0 not run")
        self.assertIn("| S.T | passed | 2 | lists | 3 lists |", again.report())

    def test_what_failed_or_changed_is_run_again(self):
        results = self.results()
        results.expect("proof_a", "S.T", "1")
        results.add(self.outcome(Result.FAILED), "")
        self.assertTrue(self.results().expect("proof_a", "S.T", "1"))
        results.expect("proof_a", "S.U", "1")
        results.add(self.outcome(Result.PASSED, test="S.U"), "")
        self.assertTrue(self.results().expect("proof_a", "S.U", "2"))
        self.assertTrue(self.results(again=True).expect("proof_a", "S.U", "1"))

    def test_failure_and_what_did_not_run_are_no_success(self):
        results = self.results()
        results.expect("proof_a", "S.T", "1")
        results.expect("proof_a", "S.U", "1")
        results.add(self.outcome(Result.FAILED, "its words\n"), "")
        self.assertIn("its words", self.printed.getvalue())
        self.assertFalse(results.close(False))
        self.assertEqual(self.last_line(), "0 passed, 1 failed, 1 not run")
        self.assertIn("| S.T | FAILED why | 2 |", (self.folder / "kept/report.md").read_text(encoding="utf-8"))
        self.assertIn("| S.U | not run |  |", results.report())

    def test_skipped_proof_has_not_passed(self):
        results = self.results()
        results.expect("proof_a", "S.T", "1")
        results.add(self.outcome(Result.SKIPPED), "")
        self.assertFalse(results.close(True))

    def test_failure_stays_when_its_program_ends_well_or_badly(self):
        for first, second in ((Result.PASSED, Result.FAILED), (Result.FAILED, Result.PASSED)):
            results = self.results()
            results.expect("proof_a", "S.T", "1")
            results.add(self.outcome(first), "")
            results.add(self.outcome(second), "")
            self.assertFalse(results.close(True))
            self.assertTrue(self.results().expect("proof_a", "S.T", "1"))

    def test_nothing_is_no_success(self):
        self.assertFalse(self.results().close(True))


class NativeTest(FolderTest):
    def run_all(self, *commands, limit=30.0):
        results = self.results()
        jobs = queue.Queue()
        for number, command in enumerate(commands):
            results.expect("native", str(number), "1")
            jobs.put((str(number), ["bash", "-c", command]))
        environment = dict(os.environ, WORD="figure: words = 1")
        watch([NativeLane(jobs, results, environment, str(self.folder), limit)], results)
        is_good = results.close(True)
        return is_good, results.report()

    def test_exit_code_tells(self):
        is_good, report = self.run_all("echo $WORD", "echo bad; exit 3", "kill -9 $$")
        self.assertFalse(is_good)
        self.assertIn("| 0 | passed | 0 | words | 1 |", report)
        self.assertIn("| 1 | FAILED ended with 3 |", report)
        self.assertIn("| 2 | FAILED ended with -9 |", report)
        self.assertTrue(self.run_all("true")[0])

    def test_hang_is_ended_with_its_children(self):
        self.assertIn("| 0 | FAILED hung", self.run_all("sleep 60 & sleep 60", limit=0.5)[1])

    def test_stopped_program_has_not_run(self):
        results = self.results()
        jobs = queue.Queue()
        results.expect("native", "a", "1")
        jobs.put(("a", ["bash", "-c", "echo begun; sleep 60"]))
        lane = NativeLane(jobs, results, dict(os.environ), str(self.folder), 60)
        lane.start()
        while lane.said() != "begun":
            pass
        lane.stop()
        lane.join()
        self.assertFalse(results.close(False))
        self.assertEqual(self.last_line(), "0 passed, 0 failed, 1 not run")


if __name__ == "__main__":
    unittest.main()

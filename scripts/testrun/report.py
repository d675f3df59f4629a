"""What a run of tests tells: progress, the output of what fails, and the lists at the end."""

import shutil
import sys
import threading
import time

from gtest import Result


class Report:
    """Takes outcomes from several threads. `log` gets the output of every test."""

    def __init__(self, known_skips, log):
        self._expected = 0
        self._known_skips = known_skips
        self._log = log
        self._outcomes = {}  # (program, test): outcomes of all repetitions and surroundings
        self._jobs = 0
        self._started_again = []
        self._done = 0
        self._failed = 0
        self._lock = threading.Lock()
        self._begin = time.monotonic()
        self._told = self._begin
        self._is_terminal = sys.stdout.isatty()

    def expect(self, count):
        """This many more outcomes are to come, of one process."""
        self._expected += count
        self._jobs += 1

    def say(self, text):
        with self._lock:
            self._print(text)

    def start_again(self, text):
        """A process ended before it began, and another one takes its place."""
        with self._lock:
            self._started_again.append(text)
            self._print("started again: " + text)

    def add(self, outcome, surroundings):
        name = f"{outcome.program} {outcome.test}" + (f" ({surroundings})" if surroundings else "")
        with self._lock:
            self._done += 1
            self._outcomes.setdefault((outcome.program, outcome.test), []).append((outcome, surroundings))
            self._log.write(f"== {outcome.result.value} {outcome.seconds:.3f} s {name} {outcome.reason}\n"
                            f"{outcome.output}")
            self._log.flush()
            if outcome.result is Result.FAILED:
                self._failed += 1
                self._print(f"FAILED {name} ({outcome.seconds:.1f} s) {outcome.reason}\n{outcome.output}")

    def tick(self, lanes):
        """To be called every now and then."""
        now = time.monotonic()
        with self._lock:
            failed = f", {self._failed} FAILED" if self._failed else ""
            line = f"{self._done} of {self._expected}{failed}, {now - self._begin:.0f} s"
            if self._is_terminal:
                line += ": " + " ".join(name for lane in lanes if (name := lane.current()))
                sys.stdout.write("\r\x1b[K" + line[: shutil.get_terminal_size().columns - 1])
                sys.stdout.flush()
            elif now - self._told >= 30:
                self._told = now
                self._print("  " + line)

    def close(self, is_whole):
        """Prints the lists and the closing line. Returns whether everything is as it should be. `is_whole`: the run
        was not interrupted."""
        with self._lock:
            return self._close(is_whole)

    def _close(self, is_whole):
        passed, failed, skipped = [], [], []
        for key, outcomes in sorted(self._outcomes.items()):
            results = [outcome.result for outcome, _ in outcomes]
            if Result.FAILED in results:
                where = {place for outcome, place in outcomes if outcome.result is Result.FAILED}
                failed.append(" ".join([*key, *([] if "" in where else sorted(where))]) +
                              f": {results.count(Result.FAILED)} of {len(results)} times")
            elif Result.PASSED in results:
                passed.append(key)
            elif key[1] in self._known_skips:
                skipped.append(f"{' '.join(key)}: {self._known_skips[key[1]]}")
            else:
                failed.append(f"{' '.join(key)}: skipped, which tests/known-skips.txt does not know\n"
                              f"    {' '.join(outcomes[-1][0].output.split())}")
        if self._expected == 0:
            self._print("No test has such a name.")
        if self._done < self._expected:
            failed.append(f"{self._expected - self._done} tests did not run")
        self._print(f"Ran {self._done} of {self._expected} in {time.monotonic() - self._begin:.0f} s")
        # Wine is known to do so now and then. More often it is the program.
        if len(self._started_again) > 2 + self._jobs // 1000:
            failed.append(f"{len(self._started_again)} of {self._jobs} processes ended before they began")
        self._list("Started again:", self._started_again)
        self._list("Skipped:", skipped)
        self._list("Failed:", failed)
        self._print(f"{len(passed)} passed, {len(failed)} failed, {len(skipped)} skipped")
        return is_whole and not failed and passed

    def _list(self, title, lines):
        if lines:
            self._print("\n  ".join([title] + lines))

    def _print(self, text):
        if self._is_terminal:
            sys.stdout.write("\r\x1b[K")
        print(text.rstrip("\n"), flush=True)


def read_known_skips(path):
    """A line is "Suite.Test: reason"; a line that begins with "#" is a comment."""
    with open(path, encoding="utf-8") as file:
        lines = [line.strip() for line in file]
    return dict(line.split(": ", 1) for line in lines if line and not line.startswith("#"))

"""Runs GoogleTest programs: which tests they hold, and what became of each, also when the program crashes or hangs."""

import enum
import os
import re
import select
import subprocess
import time
from dataclasses import dataclass


class Result(enum.Enum):
    PASSED = "passed"
    FAILED = "FAILED"
    SKIPPED = "skipped"


@dataclass
class Outcome:
    """What became of one test. `output` is what was written while it ran; `reason` stands for what it cannot tell."""

    program: str
    test: str
    result: Result
    seconds: float = 0.0
    output: str = ""
    reason: str = ""


class Broken(Exception):
    """A program that cannot even list its tests."""


def list_tests(command, environment, folder):
    """Names of all tests of a program, "Suite.Test"."""
    for _ in range(3):  # see `again` below
        done = subprocess.run(command + ["--gtest_list_tests"], env=environment, cwd=folder, timeout=60,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if done.stdout or done.returncode == 0:
            break
    text = done.stdout.decode("utf-8", "replace").replace("\r", "")
    tests = []
    suite = ""
    for line in text.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            tests.append(suite + name.strip())
        elif name.endswith("."):
            suite = name
    if done.returncode != 0 or not tests:
        raise Broken(f"lists no tests (exit code {done.returncode})\n{text}{done.stderr.decode('utf-8', 'replace')}")
    return tests


# How Wine's own complaints begin as long as it has no thread to name.
_BEFORE_ANY_THREAD = ("err:", "wine client error:0:")
_begin = re.compile(r"\[ RUN      \] (\S+)")
_end = re.compile(r"\[(       OK |  FAILED  |  SKIPPED )\] ([^\s,]+)(?:, where .*)? \(\d+ ms\)")
_results = {"       OK ": Result.PASSED, "  FAILED  ": Result.FAILED, "  SKIPPED ": Result.SKIPPED}


class Run:
    """One process of a program, from its start to its end.

    `complaint`: a regular expression; a test that passes and whose output holds it counts as failed.
    `again`: when it ends with a failure before it has said a word, its tests are left to another process: about once
    in ten thousand starts Wine gives a program up before it has begun (`wine-prefix.sh` tells why).
    """

    def __init__(self, program, command, environment, folder, tests, limit, complaint=None, again=False):
        self.crashed = False  # ended in the middle, or killed: what it was in the midst of may linger
        self.never_began = ""  # or how it ended
        self._again = again
        self._has_spoken = False
        self._program = program
        self._tests = tests
        self._limit = limit
        self._complaint = complaint
        self._current = None
        self._started = time.monotonic()
        self._output = []
        self._said = ""
        self._last = None
        self._has_failed = False
        self._hung = False
        # A command line would be too long for all names.
        flags = os.path.join(folder, "flags.txt")
        with open(flags, "w", encoding="utf-8") as file:
            # Nothing is left out in silence: a test that is not to be run is skipped, or is no test.
            file.write("--gtest_filter=" + ":".join(tests) + "\n--gtest_also_run_disabled_tests\n--gtest_color=no\n")
        # A session of its own: an interrupt is for whoever runs this, who ends the program.
        self._process = subprocess.Popen(command + ["--gtest_flagfile=flags.txt"], env=environment, cwd=folder,
                                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                         start_new_session=True)

    def current(self):
        return self._current

    def said(self):
        """The last line that the program has written."""
        return self._said

    def kill(self):
        self._process.kill()

    def outcomes(self):
        """Yields what became of each test as soon as it is known. When the program broke off, the tests that it did
        not come to are in `left` afterwards."""
        missing = dict.fromkeys(self._tests)
        for line in self._lines():
            self._has_spoken = self._has_spoken or not line.startswith(_BEFORE_ANY_THREAD)
            self._said = line
            outcome = self._read(line)
            if outcome:
                missing.pop(outcome.test, None)
                yield outcome
        code = self._process.wait()
        self.left = []
        if self._current:
            self.crashed = True
            missing.pop(self._current, None)
            self.left = list(missing)
            yield self._finish(Result.FAILED, self._why(code))
        elif not self._last and self._again and code != 0 and not self._has_spoken and not self._hung:
            self.crashed = True
            self.never_began = self._why(code)
            self.left = list(missing)
        elif not self._last:
            self.crashed = True
            for test in missing:
                yield Outcome(self._program, test, Result.FAILED, 0.0, self._take_output(),
                              self._why(code) + " before its first test")
        elif missing or (code != 0 and not self._has_failed):
            self.crashed = True
            self.left = list(missing)
            yield Outcome(self._program, self._last, Result.FAILED, 0.0, self._take_output(),
                          self._why(code) + " after this test")

    def _why(self, code):
        if self._hung:
            return f"hung: killed after {self._limit} s"
        return f"the program ended with {code}" if code >= 0 else f"the program was ended by signal {-code}"

    def _read(self, line):
        begin = _begin.match(line)
        end = _end.search(line)
        if begin:
            self._current = begin.group(1)
            self._started = time.monotonic()
            self._output = []
        elif end and end.group(2) == self._current:
            self._output.append(line[: end.start()])
            return self._finish(_results[end.group(1)])
        else:
            self._output.append(line + "\n")
        return None

    def _finish(self, result, reason=""):
        output = self._take_output()
        if result is Result.PASSED and self._complaint and self._complaint.search(output):
            result, reason = Result.FAILED, "it passed, but the runtime complains"
        outcome = Outcome(self._program, self._current, result, time.monotonic() - self._started, output, reason)
        self._last = self._current
        self._current = None
        self._started = time.monotonic()
        self._has_failed = self._has_failed or result is Result.FAILED
        return outcome

    def _take_output(self):
        output = "".join(self._output)
        self._output = []
        return output

    def _lines(self):
        """Lines of the program's output until its end. Processes that it started may hold the output open longer."""
        pipe = self._process.stdout.fileno()
        rest = b""
        while True:
            if not self._hung and time.monotonic() - self._started > self._limit:
                self._hung = True
                self._process.kill()
            # Asked first: what it wrote before it ended is in the pipe then.
            has_ended = self._process.poll() is not None
            if select.select([pipe], [], [], 0.2)[0]:
                data = os.read(pipe, 65536)
                if not data:
                    break
                *lines, rest = (rest + data).split(b"\n")
                for line in lines:
                    yield line.decode("utf-8", "replace").rstrip("\r")
            elif has_ended:
                break
        if rest:
            yield rest.decode("utf-8", "replace")
        self._process.stdout.close()

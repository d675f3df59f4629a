"""Lanes: each runs one program at a time in a Wine prefix of its own, since tests share the registry, the clipboard and
the keyboard of their prefix."""

import os
import queue
import re
import shutil
import subprocess
import threading
import time
import traceback
from dataclasses import dataclass, field

from gtest import Run

# What the runtime says of a freed place that is no block in use, and of damage; the tests' host says when it finds some.
HEAP_COMPLAINT = re.compile(r"^[0-9a-f]+:(warn:heap:unsafe_block_from_ptr|err:heap:)|^a heap is damaged", re.MULTILINE)


@dataclass
class Surroundings:
    """What a lane's programs run in."""

    name: str  # "" for the usual ones
    folder: str  # of the programs
    covers: str = ""  # only tests whose "program Suite.Test" begins with this regular expression
    user: int = 0  # the number of another user to run as
    variables: dict = field(default_factory=dict)


@dataclass
class Settings:
    """What is the same for all lanes."""

    folder: str  # where the prefixes go
    template: str  # the prefix that they are copied from
    functions: str  # text of the shell functions that handle prefixes
    limit: float  # seconds that one test may take
    heap: bool  # whether programs check their heaps


@dataclass
class Job:
    """One process: these tests of a program."""

    program: str
    tests: list


class Prefix:
    """A copy of the template, and its server."""

    _numbers = iter(range(1, 1000000))

    def __init__(self, settings, surroundings):
        self.folder = os.path.join(settings.folder, f"prefix{next(Prefix._numbers)}")
        self.work = os.path.join(self.folder, "work")
        self.environment = dict(os.environ, WINEPREFIX=self.folder, **surroundings.variables)
        self._as_user = []
        self._settings = settings
        self._programs = surroundings.folder
        self._shell("copy_prefix", settings.template, self.folder)
        os.mkdir(self.work)
        if surroundings.user:
            number = str(surroundings.user)
            self._shell("give_prefix", self.folder, number)
            self._as_user = ["setpriv", "--reuid=" + number, "--regid=" + number, "--clear-groups"]
            self.environment["HOME"] = self.work
        self._shell("start_prefix")
        if settings.heap:
            self._shell("check_heaps")
            self.environment["WINEDEBUG"] = "-all,err+all,warn+heap"

    def command(self, program):
        return self._as_user + ["wine", os.path.join(self._programs, program + ".exe")]

    def remove(self):
        self._shell("end_prefix")
        shutil.rmtree(self.folder, ignore_errors=True)

    def _shell(self, *call):
        # The text, not the file: another user may not be able to read it.
        text = "set -o pipefail\n" + self._settings.functions + '\n"$@"'
        done = subprocess.run(self._as_user + ["bash", "-c", text, "bash", *call], env=self.environment,
                              cwd=self._settings.folder, timeout=120, start_new_session=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if done.returncode != 0:
            raise RuntimeError(f"{' '.join(call)} failed for {self.folder}")


class Lane(threading.Thread):
    """Takes jobs from a queue until it is empty. What its tests show goes to the report."""

    def __init__(self, settings, surroundings, jobs, report, prefix=None):
        super().__init__(daemon=True)
        self._settings = settings
        self._surroundings = surroundings
        self._jobs = jobs
        self._report = report
        self._prefix = prefix
        self._run = None
        self._is_stopped = False

    def current(self):
        """The test that runs now, for the progress line."""
        return self._run.current() if self._run else None

    def said(self):
        """The last line of that test."""
        run = self._run
        return run.said() if run else ""

    def stop(self):
        """To be called until the lane is no longer alive."""
        self._is_stopped = True
        if self._run:
            self._run.kill()

    def run(self):
        try:
            while not self._is_stopped:
                self._do(self._jobs.get_nowait())
        except queue.Empty:
            pass
        except Exception:  # whatever it was: its tests are missing then, which fails the run
            self._report.say("A lane of the tests broke:\n" + traceback.format_exc())
        finally:
            self._replace_prefix()

    def _do(self, job):
        tests = job.tests
        complaint = HEAP_COMPLAINT if self._settings.heap else None
        starts = 3  # of a program that ends before it begins
        while tests and not self._is_stopped:
            if not self._prefix:
                self._prefix = Prefix(self._settings, self._surroundings)
            self._run = Run(job.program, self._prefix.command(job.program), self._prefix.environment,
                            self._prefix.work, tests, self._settings.limit, complaint, again=starts > 1)
            for outcome in self._run.outcomes():
                if not self._is_stopped:
                    self._report.add(outcome, self._surroundings.name)
            tests = self._run.left
            if self._run.never_began:
                starts -= 1
                self._report.start_again(f"{job.program} {tests[0]}: {self._run.never_began}")
            if self._run.crashed:
                self._replace_prefix()
            self._run = None

    def _replace_prefix(self):
        if self._prefix:
            self._prefix.remove()
            self._prefix = None


def watch(lanes, report):
    """Until the lanes are done. False: interrupted."""
    try:
        for lane in lanes:
            lane.start()
        while any(lane.is_alive() for lane in lanes):
            time.sleep(0.5)
            report.tick(lanes)
        return True
    except KeyboardInterrupt:
        while any(lane.is_alive() for lane in lanes):
            for lane in lanes:
                lane.stop()
            time.sleep(0.1)
        return False

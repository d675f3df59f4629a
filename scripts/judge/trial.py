"""Tries changes: a copy of the project that is built and tested with each of them, in Wine prefixes of its own."""

import enum
import os
import pathlib
import re
import signal
import subprocess
import time

from lanes import Prefix, Surroundings

# The most that a changed program may allocate.
LARGEST_DATA = 4 << 30
# Most system tests wait most of the time: so many processes share them.
SYSTEM_SHARDS = 6


class Verdict(enum.Enum):
    NOTICED = "noticed"
    REFUSED = "refused by the compiler"
    SURVIVED = "survived"


class Unusable(Exception):
    """The library as it is does not build or pass its tests."""


class Trial:
    """`prepare` comes first; then `judge` as often as wanted, with `restore` before the next file."""

    def __init__(self, tree, settings, is_quick):
        self._tree = tree.resolve()
        self._settings = settings
        self._is_quick = is_quick
        self._prefixes = []
        self._limits = {}  # program: seconds that it may take
        self._texts = {}  # path: the file without a change

    def prepare(self, paths):
        """Copies the project. The copy is kept for the next time: then only what changed is built."""
        listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], check=True,
                                stdout=subprocess.PIPE).stdout.decode()
        names = {name for name in listed.split("\0") if name and os.path.isfile(name)}
        for name in names:
            _write_when_other(self._tree / name, pathlib.Path(name))
        for folder in ("src", "tests", "standin"):
            for path in list((self._tree / folder).rglob("*")):
                if path.is_file() and str(path.relative_to(self._tree)) not in names:
                    path.unlink()
        self._texts = {path: (self._tree / path).read_text(encoding="utf-8") for path in paths}
        done = self._run(["cmake", "--preset", "release", "-DQANHELPER_BUILD_EXAMPLES=OFF"])
        if done.returncode != 0:
            raise Unusable(done.stdout)

    def judge(self, change):
        """The verdict, and how it came about."""
        programs = ["unit_" + pathlib.Path(change.path).parts[1]]
        if not self._is_quick:
            # Slow, and only asked when the nearer ones noticed nothing.
            programs.append("system_tests")
        begin = time.monotonic()
        for program in programs:
            if program not in self._limits:
                self.restore(change.path)
                self._learn(program)
                begin = time.monotonic()
            changed = change.apply(self._texts[change.path])
            (self._tree / change.path).write_text(changed, encoding="utf-8")
            if self._build(program).returncode != 0:
                return Verdict.REFUSED, f"{time.monotonic() - begin:.1f} s"
            built = time.monotonic()
            failure = self._failure(program)
            if failure:
                return Verdict.NOTICED, f"{failure} ({built - begin:.1f} + {time.monotonic() - built:.1f} s)"
        return Verdict.SURVIVED, f"{time.monotonic() - begin:.1f} s"

    def restore(self, path):
        (self._tree / path).write_text(self._texts[path], encoding="utf-8")

    def close(self):
        while self._prefixes:
            self._prefixes.pop().remove()

    def _learn(self, program):
        """Makes sure that the program passes without a change, and how long that takes."""
        built = self._build(program)
        if built.returncode != 0:
            raise Unusable(built.stdout)
        begin = time.monotonic()
        self._limits[program] = 1200
        failure = self._failure(program)
        if failure:
            raise Unusable(f"{failure} fails without a change")
        self._limits[program] = 15 + 5 * (time.monotonic() - begin)

    def _build(self, program):
        return self._run(["cmake", "--build", "--preset", "release", "--target", program])

    def _failure(self, program):
        """Why the program fails; None when it does not."""
        failure, test = self._attempt(program)
        if failure and not test:
            # It hung, crashed, or Wine gave it up before it began: only what comes again is the change's doing.
            failure, test = self._attempt(program)
        return test or failure

    def _attempt(self, program):
        """Why the program fails, and the test that failed; None for what there is not."""
        shards = SYSTEM_SHARDS if program == "system_tests" else 1
        while len(self._prefixes) < shards:
            surroundings = Surroundings("", str(self._tree / "build/release/bin"))
            self._prefixes.append(Prefix(self._settings, surroundings))
        runs = []
        for number, prefix in enumerate(self._prefixes[:shards]):
            environment = dict(prefix.environment, GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(number))
            command = ["prlimit", f"--data={LARGEST_DATA}", *prefix.command(program), "--gtest_brief=1",
                       "--gtest_fail_fast"]
            runs.append(_Run(command, prefix.work, environment, self._log(number)))
        end = time.monotonic() + self._limits[program]
        while True:
            codes = [run.code() for run in runs]
            failed = next((run for run in runs if run.code()), None)
            if failed or time.monotonic() > end:
                break
            if None not in codes:
                return None, None
            time.sleep(0.02)
        for run in runs:
            run.kill()
        # What they left behind must not make the next ones fail.
        self.close()
        if not failed:
            return f"{program} hung", None
        output = failed.output()
        test = re.search(r"\[  FAILED  \] ([\w/]+\.[\w/]+)", output)
        return f"{program} ended with {failed.code()}: {output[-200:].strip()}", test and test.group(1)

    def _run(self, command):
        run = _Run(command, self._tree, os.environ, self._log(0))
        while run.code() is None:
            time.sleep(0.02)
        return subprocess.CompletedProcess(command, run.code(), run.output())

    def _log(self, number):
        return self._tree.with_name(f"{self._tree.name}-{number}.log")


class _Run:
    """A process. Its output goes into a file: programs that it leaves behind would hold a pipe open."""

    def __init__(self, command, folder, environment, log):
        self._log = log
        with open(log, "wb") as output:
            self._process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                             stdout=output, stderr=subprocess.STDOUT, start_new_session=True)

    def code(self):
        """None as long as it runs."""
        return self._process.poll()

    def output(self):
        return self._log.read_text(encoding="utf-8", errors="replace")

    def kill(self):
        if self.code() is None:
            os.killpg(self._process.pid, signal.SIGKILL)
            self._process.wait()


def _write_when_other(target, source):
    """What stays the same is not built anew."""
    if not target.exists() or target.read_bytes() != source.read_bytes():
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(source.read_bytes())
    target.chmod(source.stat().st_mode)

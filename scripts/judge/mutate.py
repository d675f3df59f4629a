"""Changes the library in small ways, one at a time, and sees whether a test notices. Called by scripts/mutate."""

import argparse
import collections
import fcntl
import os
import pathlib
import queue
import random
import re
import signal
import sys
import threading
import time
import traceback

from changes import find_changes
from known import read_known
from lanes import Settings
from trial import Trial, Unusable, Verdict

FOLDER = pathlib.Path("build/mutate")
KNOWN = "tests/known-survivors.txt"
# What no unit program holds.
LEFT_OUT = {pathlib.Path("src/api/DllMain.cpp")}


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutate", allow_abbrev=False)
    parser.add_argument("folder", help=argparse.SUPPRESS)
    parser.add_argument("places", nargs="*", default=["src"], metavar="PLACE", help="folders and files below src/")
    parser.add_argument("-n", type=int, default=300, metavar="N", help="how many changes")
    parser.add_argument("--seed", type=int, default=1, metavar="S", help="which ones")
    parser.add_argument("--only", metavar="TEXT", type=re.compile, default=re.compile(""),
                        help="only changes whose place or text matches this regular expression")
    parser.add_argument("--jobs", type=int, default=len(os.sched_getaffinity(0)), metavar="N",
                        help="how many at a time")
    parser.add_argument("--quick", action="store_true", help="without the system tests")
    parser.add_argument("--list", action="store_true", help="prints the changes and makes none")
    return parser.parse_intermixed_args()


def choose_changes(places, only, count, seed):
    """The sample, and how many there are to choose from."""
    changes = []
    for place in map(pathlib.Path, places):
        for path in sorted(place.rglob("*.cpp")) if place.is_dir() else [place]:
            if path not in LEFT_OUT:
                found = find_changes(str(path), path.read_text(encoding="utf-8"))
                changes += [change for change in found if only.search(" ".join(change.key()))]
    chosen = random.Random(seed).sample(changes, min(count, len(changes)))
    return chosen, len(changes)


class Results:
    """Takes verdicts from several threads, and prints and writes what is to be told."""

    def __init__(self, expected, known):
        self.counts = collections.Counter()
        self.unknown = []  # survivors that the list does not name
        self.stale = []  # noticed changes that it does name
        self.broken = False
        self._expected = expected
        self._known = known
        self._lock = threading.Lock()
        self._begin = self._told = time.monotonic()
        self._report = open(FOLDER / "report.txt", "w", encoding="utf-8")

    def add(self, change, verdict, reason):
        with self._lock:
            self.counts[verdict] += 1
            is_known = change.key() in self._known
            if verdict is Verdict.SURVIVED and not is_known:
                self.unknown.append(change)
                self.say(f"survived: {change}")
            elif verdict is Verdict.NOTICED and is_known:
                self.stale.append(change)
            self._write(f"{verdict.value}{' (known)' if is_known else ''}: {change}\n    {reason}")

    def break_off(self, text):
        with self._lock:
            self.broken = True
            self.say(text)

    def tick(self):
        now = time.monotonic()
        with self._lock:
            line = f"{sum(self.counts.values())} of {self._expected}, {self.summary()}, {now - self._begin:.0f} s"
            if sys.stdout.isatty():
                print(f"\r\x1b[K{line}", end="", flush=True)
            elif now - self._told >= 60:
                self._told = now
                print(f"  {line}", flush=True)

    def say(self, text):
        print(("\r\x1b[K" if sys.stdout.isatty() else "") + text, flush=True)

    def summary(self):
        return ", ".join(f"{self.counts[verdict]} {verdict.value}" for verdict in Verdict)

    def close(self):
        if self.stale:
            self.say(f"\nNoticed, though {KNOWN} names them:")
            for change in self.stale:
                self.say(str(change))
        if self.unknown:
            self.say(f"\nSurvived, and {KNOWN} does not name them:")
            for change in sorted(self.unknown, key=lambda change: (change.path, change.line)):
                self.say(str(change))
        self._write(self.summary())
        self.say(f"\n{self.summary()}; see {FOLDER}/report.txt")
        return 3 if self.broken else 1 if self.unknown or self.stale else 0

    def _write(self, text):
        self._report.write(text + "\n")
        self._report.flush()


class Worker(threading.Thread):
    """Takes files from a queue and tries all changes of a file behind each other: then only that file is built anew."""

    def __init__(self, trial, files, results):
        super().__init__(daemon=True)
        self._trial = trial
        self._files = files
        self._results = results

    def run(self):
        try:
            while True:
                changes = self._files.get_nowait()
                for change in changes:
                    self._results.add(change, *self._trial.judge(change))
                self._trial.restore(changes[0].path)
        except queue.Empty:
            pass
        except Unusable as error:
            self._results.break_off(f"The library as it is does not pass:\n{error}")
        except Exception:  # whatever it was: its changes are not tried then
            self._results.break_off("A worker broke:\n" + traceback.format_exc())
        finally:
            self._trial.close()


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    chosen, total = choose_changes(arguments.places, arguments.only, arguments.n, arguments.seed)
    if arguments.list:
        for change in chosen:
            print(change)
        print(f"{len(chosen)} of {total} possible changes")
        return 0
    if not chosen:
        print("There is nothing to change.")
        return 2
    by_file = collections.defaultdict(list)
    for change in chosen:
        by_file[change.path].append(change)
    files = queue.Queue()
    for changes in sorted(by_file.values(), key=len, reverse=True):
        files.put(sorted(changes, key=lambda change: change.line))

    FOLDER.mkdir(parents=True, exist_ok=True)
    lock = open(FOLDER / "lock", "w", encoding="utf-8")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        print("Another run is at work.")
        return 2
    with open("scripts/wine-prefix.sh", encoding="utf-8") as file:
        settings = Settings(arguments.folder, os.path.abspath("build/wine-prefix"), file.read(), 0, False)
    known = {entry[:2] for entry in read_known(KNOWN, 3)}
    results = Results(len(chosen), known)
    workers = []
    for number in range(1, min(arguments.jobs, len(by_file)) + 1):
        trial = Trial(FOLDER / f"tree{number}", settings, arguments.quick)
        trial.prepare(by_file)
        workers.append(Worker(trial, files, results))
    for worker in workers:
        worker.start()
    while any(worker.is_alive() for worker in workers):
        time.sleep(0.5)
        results.tick()
    return results.close()


try:
    sys.exit(main())
except Unusable as error:
    print(f"The library as it is cannot be built:\n{error}")
    sys.exit(3)
except KeyboardInterrupt:
    sys.exit(130)

"""What the proofs came to: kept from one run to the next, and told of in a report."""

import json
import re
import shutil
import sys
import threading
import time

from gtest import Result

_figure = re.compile(r"^figure: (.+?) = (\S+)(?: (.*))?$", re.MULTILINE)
_progress = re.compile(r"^progress: (\d+)/(\d+)")


def figures_in(output):
    """(name, value, unit) of each figure that a test told."""
    return [match.groups("") for match in _figure.finditer(output)]


def progress_in(line):
    """How far a test is by its last line, in hundredths; "" when that is no word of progress."""
    match = _progress.match(line)
    return f" {100 * int(match[1]) // max(1, int(match[2]))} %" if match else ""


class Results:
    """Takes outcomes from several threads. The folder keeps them, what each test wrote, and the report, all as they are
    after each outcome: a run may end at any moment. `what` names the run, for the report."""

    def __init__(self, folder, what, again):
        self._folder = folder
        self._what = what
        self._again = again
        self._file = folder / "results.json"
        self._kept = json.loads(self._file.read_text(encoding="utf-8")) if self._file.exists() else {}
        self._shown = {}  # "program test": its entry in what is kept, or None as long as there is none
        self._identities = {}
        self._to_do = 0
        self._done = 0
        self._failed = 0
        self._lock = threading.Lock()
        self._begin = self._told = time.monotonic()
        folder.mkdir(parents=True, exist_ok=True)

    def expect(self, program, test, identity):
        """Whether the test has to run. `identity` changes when what it proves is another thing."""
        name = f"{program} {test}"
        entry = self._kept.get(name)
        is_done = bool(entry) and entry["identity"] == identity and entry["passed"] and not self._again
        self._shown[name] = entry if is_done else None
        self._identities[name] = identity
        self._to_do += not is_done
        return not is_done

    def say(self, text):
        with self._lock:
            self._print(text)

    def add(self, outcome, _):
        name = f"{outcome.program} {outcome.test}"
        passed = outcome.result is Result.PASSED
        with self._lock:
            # A program that fails behind its last test has two outcomes.
            before = self._shown.get(name)
            if before and not before["passed"]:
                return
            entry = {"identity": self._identities[name], "passed": passed, "seconds": round(outcome.seconds, 1),
                     "reason": outcome.reason, "figures": figures_in(outcome.output)}
            self._shown[name] = self._kept[name] = entry
            self._done += 1
            self._failed += not passed
            (self._folder / (re.sub(r"[^\w.]", "-", name) + ".log")).write_text(outcome.output, encoding="utf-8")
            self._write()
            word = "passed" if passed else "FAILED"
            self._print(f"{word} {name} ({outcome.seconds:.0f} s) {outcome.reason}" +
                        ("" if passed else "\n" + outcome.output[-4000:]))

    def tick(self, lanes):
        """To be called every now and then."""
        now = time.monotonic()
        running = [name + progress_in(lane.said()) for lane in lanes if (name := lane.current())]
        with self._lock:
            failed = f", {self._failed} FAILED" if self._failed else ""
            line = f"{self._done} of {self._to_do}{failed}, {now - self._begin:.0f} s: " + ", ".join(running)
            if sys.stdout.isatty():
                sys.stdout.write("\r\x1b[K" + line[: shutil.get_terminal_size().columns - 1])
                sys.stdout.flush()
            elif now - self._told >= 60:
                self._told = now
                self._print("  " + line)

    def close(self, is_whole):
        """Prints the closing lines. Returns whether everything has passed, now or before."""
        with self._lock:
            self._write()
            counts = self._counts()
            if not self._shown:
                self._print("No test has such a name.")
            if not is_whole:
                self._print("Stopped. The next run goes on where this one was.")
            for name, entry in sorted(self._shown.items()):
                if entry and not entry["passed"]:
                    self._print(f"FAILED {name}: {entry['reason']}")
            self._print(f"{self._folder}/report.md has the figures.")
            self._print("{} passed, {} failed, {} not run".format(*counts))
            return bool(self._shown) and counts[1:] == (0, 0)

    def _counts(self):
        entries = list(self._shown.values())
        passed = sum(1 for entry in entries if entry and entry["passed"])
        not_run = entries.count(None)
        return passed, len(entries) - passed - not_run, not_run

    def _write(self):
        # By way of another name: the file is whole whenever the run ends.
        for path, text in ((self._file, json.dumps(self._kept, indent=1)), (self._folder / "report.md", self.report())):
            new = path.with_suffix(".new")
            new.write_text(text, encoding="utf-8")
            new.replace(path)

    def report(self):
        lines = ["# Proof", "", f"The {self._what}: {{}} passed, {{}} failed, {{}} not run.".format(*self._counts())]
        program = None
        for name, entry in sorted(self._shown.items()):
            if name.split()[0] != program:
                program = name.split()[0]
                lines += ["", f"## {program}", "", "| test | result | seconds | figure | value |", "|---|---|---|---|---|"]
            result = "not run" if not entry else "passed" if entry["passed"] else f"FAILED {entry['reason']}"
            figures = entry["figures"] if entry else []
            first = [name.split(" ", 1)[1], result, f"{entry['seconds']:.0f}" if entry else ""]
            for figure in figures or [("", "", "")]:
                lines.append("| " + " | ".join([*first, figure[0], f"{figure[1]} {figure[2]}".strip()]) + " |")
                first = ["", "", ""]
        return "\n".join(lines) + "\n"

    def _print(self, text):
        if sys.stdout.isatty():
            sys.stdout.write("\r\x1b[K")
        print(text.rstrip("\n"), flush=True)

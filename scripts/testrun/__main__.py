"""Runs the test programs of a build folder under Wine, several at once, and names every test that fails, crashes,
hangs or is skipped. Called by scripts/test."""

import argparse
import os
import queue
import re
import shutil
import signal
import sys

from gtest import list_tests
from lanes import Job, Lane, Prefix, Settings, Surroundings, watch
from report import Report, read_known_skips


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/test [PRESET]", allow_abbrev=False)
    parser.add_argument("build", help=argparse.SUPPRESS)
    parser.add_argument("folder", help=argparse.SUPPRESS)
    parser.add_argument("-R", metavar="NAME", default="",
                        help="only tests whose Suite.Test matches this regular expression")
    parser.add_argument("--heap", action="store_true", help="with the runtime's heap checks")
    parser.add_argument("--repeat", metavar="N", type=int, default=1, help="everything N times")
    parser.add_argument("--lanes", metavar="N", type=int, default=3 * len(os.sched_getaffinity(0)),
                        help="this many prefixes at once (three for each processor: most tests wait most of the time)")
    parser.add_argument("--limit", metavar="SECONDS", type=float, default=120, help="a test that takes longer hangs")
    return parser.parse_args()


def read_programs(build):
    """Names of the test programs, and how each is run: "whole", or "apart", each test in a process of its own."""
    with open(os.path.join(build, "test-programs.txt"), encoding="utf-8") as file:
        return dict(line.split() for line in file)


def all_surroundings(programs, folder):
    """The usual ones first, then those that show what the usual ones hide."""
    yield Surroundings("", programs)
    if os.geteuid() == 0:
        # A user for whom "read-only" and "denied" mean something, and who may not be able to reach the build folder.
        copies = os.path.join(folder, "bin")
        shutil.copytree(programs, copies, ignore=shutil.ignore_patterns("system_tests.exe"))
        yield Surroundings("as an ordinary user", copies, covers="unit_", user=65534)
    # With the name of a Japanese locale the runtime takes code page 932; the contents do not matter to it.
    locales = os.path.join(folder, "locales")
    os.mkdir(locales)
    os.symlink("/usr/lib/locale/C.utf8", os.path.join(locales, "ja_JP.UTF-8"))
    yield Surroundings("in code page 932", programs, covers="unit_common (NarrowFormat|DiagnosticLog)",
                       variables={"LC_ALL": "ja_JP.UTF-8", "LOCPATH": locales, "EXPECTED_CODE_PAGE": "932"})


def jobs_of(programs, tests, surroundings):
    """Whole programs first: they take long, and the short jobs fill the lanes up at the end."""
    jobs = []
    for program in sorted(programs, key=lambda name: programs[name], reverse=True):
        covered = [test for test in tests[program] if re.match(surroundings.covers, f"{program} {test}")]
        if programs[program] == "whole":
            jobs += [Job(program, covered)] if covered else []
        else:
            jobs += [Job(program, [test]) for test in covered]
    return jobs


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    root = os.getcwd()
    with open("scripts/wine-prefix.sh", encoding="utf-8") as file:
        functions = file.read()
    settings = Settings(arguments.folder, os.path.join(root, "build/wine-prefix"), functions, arguments.limit,
                        arguments.heap)
    surroundings = list(all_surroundings(os.path.join(root, arguments.build, "bin"), arguments.folder))
    programs = read_programs(arguments.build)

    first = Prefix(settings, surroundings[0])
    tests = {program: [test for test in list_tests(first.command(program), first.environment, first.work)
                       if re.search(arguments.R, test)]
             for program in programs}

    with open(arguments.build + "/tests.log", "w", encoding="utf-8") as log:
        report = Report(read_known_skips("tests/known-skips.txt"), log)
        lanes = []
        for place in surroundings:
            jobs = queue.Queue()
            for job in jobs_of(programs, tests, place) * arguments.repeat:
                jobs.put(job)
                report.expect(len(job.tests))
            # The special surroundings have little to do.
            for _ in range(min(jobs.qsize(), 1 if place.name else arguments.lanes)):
                lanes.append(Lane(settings, place, jobs, report, None if lanes else first))
        is_whole = watch(lanes, report)
        return 0 if report.close(is_whole) else 1


try:
    sys.exit(main())
except KeyboardInterrupt:
    sys.exit(130)

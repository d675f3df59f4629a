"""Runs every test of the proofs in its full form, several at once, keeps what has passed for the next time and writes a
report with every figure. Called by scripts/proof."""

import argparse
import os
import pathlib
import queue
import re
import shlex
import signal
import subprocess
import sys

from fingerprints import fingerprint, programs_under_wine
from gtest import list_tests
from lanes import Job, Lane, Prefix, Settings, Surroundings, watch
from native import NativeLane
from results import Results

BUILD = pathlib.Path("build/release")
NATIVE = pathlib.Path("build/proof/native")


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/proof", allow_abbrev=False)
    parser.add_argument("folder", help=argparse.SUPPRESS)
    parser.add_argument("-R", metavar="NAME", default="",
                        help='only tests whose "program Suite.Test" matches this regular expression')
    parser.add_argument("--short", action="store_true", help="the short form of everything")
    parser.add_argument("--again", action="store_true", help="also what has passed")
    parser.add_argument("--seed", metavar="S", type=int, default=1, help="where random choices start")
    parser.add_argument("--lanes", metavar="N", type=int, default=len(os.sched_getaffinity(0)),
                        help="this many at once")
    parser.add_argument("--limit", metavar="SECONDS", type=float, default=6 * 3600, help="what takes longer hangs")
    return parser.parse_args()


def native_commands(words):
    """A line of the list is a name and a command. Name: the command, and the fingerprint of the files in it."""
    commands = {}
    for line in (NATIVE / "programs.txt").read_text(encoding="utf-8").splitlines():
        name, *command = shlex.split(line)
        commands[name] = command, fingerprint([word for word in command if os.path.isfile(word)], words)
    return commands


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    form = "short" if arguments.short else "full"
    words = f"{form} {arguments.seed}"
    variables = {"QANHELPER_PROOF": form, "QANHELPER_PROOF_SEED": str(arguments.seed)}
    commit = subprocess.run(["git", "describe", "--always", "--dirty"], stdout=subprocess.PIPE, check=False).stdout
    results = Results(pathlib.Path("build/proof") / form,
                      f"{form} form, seed {arguments.seed}, of {commit.decode().strip() or 'an unknown commit'}",
                      arguments.again)

    with open("scripts/wine-prefix.sh", encoding="utf-8") as file:
        settings = Settings(arguments.folder, os.path.abspath("build/wine-prefix"), file.read(), arguments.limit, False)
    place = Surroundings("", str((BUILD / "bin").resolve()), variables=variables)
    first = Prefix(settings, place)
    windows = queue.Queue()
    for program, identity in programs_under_wine(BUILD, words).items():
        for test in list_tests(first.command(program), first.environment, first.work):
            if re.search(arguments.R, f"{program} {test}") and results.expect(program, test, identity):
                windows.put(Job(program, [test]))
    natives = queue.Queue()
    for name, (command, identity) in native_commands(words).items():
        if re.search(arguments.R, f"native {name}") and results.expect("native", name, identity):
            natives.put((name, command))

    # Native ones have a lane of their own, the first one the prefix that is there.
    most = arguments.lanes - 1 if natives.qsize() else arguments.lanes
    lanes = [Lane(settings, place, windows, results, None if number else first)
             for number in range(max(1, min(windows.qsize(), most)))]
    lanes += [NativeLane(natives, results, dict(os.environ, **variables), arguments.folder, arguments.limit)
              for _ in range(min(natives.qsize(), max(1, arguments.lanes - len(lanes))))]
    return 0 if results.close(watch(lanes, results)) else 1


try:
    sys.exit(main())
except KeyboardInterrupt:
    sys.exit(130)

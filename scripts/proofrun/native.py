"""Runs the native proofs: programs that tell of a failure by their exit code."""

import os
import queue
import signal
import subprocess
import tempfile
import threading
import time

from gtest import Outcome, Result


class NativeLane(threading.Thread):
    """Takes (name, command) from a queue until it is empty. The working folder of each is a new one, deleted then."""

    def __init__(self, jobs, report, environment, folder, limit):
        super().__init__(daemon=True)
        self._jobs = jobs
        self._report = report
        self._environment = environment
        self._folder = folder
        self._limit = limit
        self._current = None
        self._said = ""
        self._process = None
        self._is_stopped = False

    def current(self):
        return self._current

    def said(self):
        return self._said

    def stop(self):
        self._is_stopped = True
        self._kill()

    def run(self):
        try:
            while not self._is_stopped:
                self._do(*self._jobs.get_nowait())
        except queue.Empty:
            pass

    def _do(self, name, command):
        begin = time.monotonic()
        output = []
        hung = threading.Event()
        self._said = ""
        self._current = name
        with tempfile.TemporaryDirectory(dir=self._folder) as folder:
            # A session of its own: an interrupt is for whoever runs this, and its children end with it.
            self._process = subprocess.Popen(command, cwd=folder, env=self._environment, stdin=subprocess.DEVNULL,
                                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
            watchdog = threading.Timer(self._limit, lambda: (hung.set(), self._kill()))
            watchdog.start()
            with self._process.stdout as stdout:
                for line in stdout:
                    self._said = line.decode("utf-8", "replace").rstrip()
                    output.append(self._said + "\n")
            code = self._process.wait()
            watchdog.cancel()
            self._kill()
        self._process = None
        self._current = None
        if self._is_stopped:
            return
        reason = f"hung: killed after {self._limit} s" if hung.is_set() else f"ended with {code}" if code else ""
        self._report.add(Outcome("native", name, Result.FAILED if reason else Result.PASSED, time.monotonic() - begin,
                                 "".join(output), reason), "")

    def _kill(self):
        process = self._process
        if process:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

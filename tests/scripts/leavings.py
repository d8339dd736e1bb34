"""Finds what a command has left behind."""

import glob
import os
import signal
import tempfile
import time
import uuid


def processes_with(mark):
    """The living processes whose environment has the mark, as they had it when they started."""
    found = []
    for folder in glob.glob("/proc/[0-9]*"):
        try:
            with open(folder + "/environ", "rb") as file:
                has_mark = mark.encode() in file.read()
            with open(folder + "/stat", "rb") as file:
                state = file.read().rpartition(b")")[2].split()[0]
        except OSError:
            continue
        if has_mark and state not in (b"Z", b"X"):
            found.append(int(folder.rpartition("/")[2]))
    return found


def command_of(pid):
    try:
        with open(f"/proc/{pid}/cmdline", "rb") as file:
            return file.read().replace(b"\0", b" ").decode(errors="replace")
    except OSError:
        return "?"


def display_locks():
    """The X servers' marks in the system's temporary folder, with the server's process id."""
    locks = {}
    for name in glob.glob("/tmp/.X*-lock"):
        try:
            with open(name, encoding="ascii") as file:
                locks[name] = int(file.read())
        except (OSError, ValueError):
            continue
    return locks


class Room:
    """A temporary folder and a mark in the environment of everything that is started there."""

    def __init__(self):
        # Below nohup and in a script's background they are ignored, and would be by all started here.
        for one in (signal.SIGINT, signal.SIGHUP):
            if signal.getsignal(one) == signal.SIG_IGN:
                signal.signal(one, signal.SIG_DFL)
        self.folder = tempfile.TemporaryDirectory(prefix="quorvel-scripts-")
        self.mark = "QUORVEL_TEST_MARK=" + uuid.uuid4().hex
        name, _, value = self.mark.partition("=")
        self.environment = {**os.environ, name: value, "TMPDIR": self.folder.name}
        # Those of a surrounding command mean that one.
        for name in ("QUORVEL_FOLDER", "QUORVEL_CONTAINED", "QUORVEL_TEMPORARY"):
            self.environment.pop(name, None)
        self.seen = set()

    def look(self):
        """Notes who lives here now."""
        self.seen.update(processes_with(self.mark))

    def leavings(self, ignoring=()):
        """What is still there but for these files, in words; empty when nothing is."""
        self.look()
        left = [f"process {pid}: {command_of(pid)}" for pid in processes_with(self.mark)]
        left += [f"file {name}" for name in os.listdir(self.folder.name) if name not in ignoring]
        left += [f"file {name}" for name, pid in display_locks().items() if pid in self.seen]
        return left

    def wait_until_empty(self, seconds, ignoring=()):
        """The leavings after that time at most."""
        end = time.monotonic() + seconds
        while left := self.leavings(ignoring):
            if time.monotonic() > end:
                return left
            time.sleep(0.1)
        return []

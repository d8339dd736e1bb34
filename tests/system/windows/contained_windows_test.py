"""A private Windows with a desktop and a program in it ends at any moment, and leaves nothing.

Needs what scripts/windows/run-tests sets.
"""

import os
import random
import signal
import subprocess
import sys
import time
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../../.."))
sys.path.insert(0, os.path.join(ROOT, "tests/scripts"))
sys.dont_write_bytecode = True

from leavings import Room  # noqa: E402

# In the place of a system test: a Windows program that does not end by itself.
PROGRAM = """#!/bin/sh
$QUORVEL_LAUNCHER cmd /c start /b ping -n 1000 127.0.0.1 >/dev/null
echo ready
exec $QUORVEL_LAUNCHER cmd /c "ping -n 1000 127.0.0.1" >/dev/null
"""


class ContainedWindowsTest(unittest.TestCase):
    def setUp(self):
        self.room = Room()
        self.addCleanup(self.room.folder.cleanup)
        self.private = os.path.dirname(os.environ["QUORVEL_WINDOWS_TEMPLATE"])

    def fresh_windows(self):
        """Those of this test: others may run at the same time."""
        return {os.path.join(self.private, name) for name in os.listdir(self.private)
                if name.startswith("quorvel.")}

    def start(self):
        tools = os.path.join(self.room.folder.name, "tools")
        os.makedirs(tools, exist_ok=True)
        program = os.path.join(tools, "program")
        with open(program, "w", encoding="ascii") as file:
            file.write(PROGRAM)
        os.chmod(program, 0o755)
        self.room.environment["QUORVEL_NATIVE_TOOLS"] = tools
        process = subprocess.Popen(
            [os.path.join(ROOT, "scripts/with-display"),
             os.path.join(ROOT, "scripts/windows/run-in-fresh-windows"), "program"],
            env=self.room.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
            start_new_session=True)
        self.addCleanup(process.stdout.close)
        return process

    def our_windows(self):
        """The folders of the Windows that processes of this test use."""
        self.room.look()
        found = set()
        for pid in self.room.seen:
            try:
                with open(f"/proc/{pid}/environ", "rb") as file:
                    for entry in file.read().split(b"\0"):
                        if entry.startswith(b"QUORVEL_FOLDER=" + os.fsencode(self.private)):
                            found.add(os.fsdecode(entry.partition(b"=")[2]))
            except OSError:
                continue
        return found

    def expect_nothing_left(self, windows, what):
        left = self.room.wait_until_empty(40, ignoring=("tools",))
        self.assertEqual(left, [], what)
        self.assertEqual(windows & self.fresh_windows(), set(), what)

    def test_it_ends_while_a_program_runs(self):
        for how in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(how=how):
                process = self.start()
                self.assertEqual(process.stdout.readline(), "ready\n")
                windows = self.our_windows()
                self.assertEqual(len(windows), 1)
                process.send_signal(how)
                process.wait(60)
                self.expect_nothing_left(windows, how)

    def test_it_ends_while_it_starts(self):
        choose = random.Random(int(os.environ.get("QUORVEL_TEST_SEED", "1")))
        for how in (signal.SIGINT, signal.SIGKILL):
            process = self.start()
            delay = choose.uniform(0.5, 6)
            windows, end = set(), time.monotonic() + delay
            while time.monotonic() < end:
                windows |= self.our_windows()
                time.sleep(0.05)
            with self.subTest(how=how, delay=delay):
                os.killpg(process.pid, how)
                process.wait(60)
                self.expect_nothing_left(windows, (how, delay))


if __name__ == "__main__":
    unittest.main(verbosity=2)

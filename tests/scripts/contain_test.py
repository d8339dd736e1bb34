"""scripts/contain and scripts/with-display: whatever ends them, nothing stays behind."""

import ctypes
import os
import random
import signal
import subprocess
import sys
import time
import unittest

from leavings import Room

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
CONTAIN = os.path.join(ROOT, "scripts/contain")
IPC_RMID = 0
WITH_DISPLAY = os.path.join(ROOT, "scripts/with-display")
# Children of many kinds: plain, detached, in a session of its own, stopped, and one that keeps
# making others.
FAMILY = """
sleep 1001 &
(sleep 1002 &)
setsid sleep 1003 &
(kill -STOP $BASHPID; sleep 1004) &
(while :; do (sleep 0.3 &); sleep 0.1; done) &
touch "$TMPDIR/file"
mkdir -p "$TMPDIR/folder/below"
echo ready
"""
# It does not end when it is asked to.
DEAF = "(trap '' INT TERM HUP; setsid sh -c 'while :; do sleep 0.2; done') &"
MANY_FILES = """
mkdir -p "$QUORVEL_FOLDER"/folder/{1..20}
chmod 0 "$QUORVEL_FOLDER/folder/1"
touch "$QUORVEL_FOLDER"/folder/{2..20}/{1..2000}
ln -s / "$QUORVEL_FOLDER/folder/system"
"""


class ContainTest(unittest.TestCase):
    def setUp(self):
        self.room = Room()

    def tearDown(self):
        for pid in self.room.leavings() and self.room.seen:
            try:
                os.kill(pid, signal.SIGKILL)
            except OSError:
                pass
        self.room.folder.cleanup()

    def run_contained(self, *command):
        return subprocess.run([CONTAIN, *command], env=self.room.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)

    def start(self, *command):
        process = subprocess.Popen(command, env=self.room.environment, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        self.addCleanup(process.stdout.close)
        return process

    def expect_empty(self, what, seconds=60):
        self.assertEqual(self.room.wait_until_empty(seconds), [], what)

    def test_exit_code_and_output_pass_through(self):
        for code in (0, 1, 7, 126, 255):
            result = self.run_contained("sh", "-c", f"echo out; echo err >&2; exit {code}")
            self.assertEqual((result.returncode, result.stdout, result.stderr),
                             (code, "out\n", "err\n"))

    def test_a_command_ended_by_a_signal_counts_as_in_a_shell(self):
        self.assertEqual(self.run_contained("sh", "-c", "kill -9 $$").returncode, 137)

    def test_a_command_that_does_not_exist_is_named(self):
        result = self.run_contained("quorvel-no-such-command")
        self.assertEqual(result.returncode, 127)
        self.assertIn("quorvel-no-such-command", result.stderr)
        self.expect_empty("no command")

    def test_signals_mean_to_the_command_what_they_always_do(self):
        result = self.run_contained("sh", "-c", "grep SigIgn /proc/$$/status")
        ignored = int(result.stdout.split()[1], 16)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE):
            self.assertEqual(ignored >> (number - 1) & 1, 0, number)

    def test_what_the_command_leaves_is_gone_when_it_has_ended(self):
        result = self.run_contained("bash", "-c", FAMILY)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(self.room.leavings(), [])

    def test_the_folder_lies_where_it_was_wanted(self):
        inner = os.path.join(self.room.folder.name, "here")
        os.mkdir(inner)
        result = self.run_contained("--in", inner, "sh", "-c", 'echo "$QUORVEL_FOLDER:$TMPDIR"')
        folder, _, temporary = result.stdout.strip().partition(":")
        self.assertEqual(os.path.dirname(folder), inner)
        self.assertEqual(temporary, self.room.folder.name)
        self.assertEqual(os.listdir(inner), [])
        os.rmdir(inner)

    def test_folders_within_another_do_not_grow_in_length(self):
        result = self.run_contained(CONTAIN, CONTAIN, "sh", "-c", 'echo "$TMPDIR"')
        self.assertEqual(os.path.dirname(result.stdout.strip()), self.room.folder.name)

    def test_the_single_instance_marks_of_the_folder_are_removed(self):
        make = """
import ctypes, os, sys
name = os.environ["QUORVEL_FOLDER"] + "/qipc_mark"
open(name, "w").close()
libc = ctypes.CDLL(None)
key = ctypes.c_int(os.stat(name).st_ino)
print(libc.shmget(key, 1, 0o1600), libc.semget(key, 1, 0o1600))
# What other programs may have, whose key is like this one but for the upper bits.
other = ctypes.c_int(key.value ^ 1 << 24)
print(libc.shmget(other, 1, 0o1600), libc.semget(other, 1, 0o1600))
"""
        result = self.run_contained(sys.executable, "-c", make)
        self.assertEqual(result.returncode, 0, result.stderr)
        libc = ctypes.CDLL(None)
        ours, others = ([int(number) for number in line.split()]
                        for line in result.stdout.splitlines())
        self.addCleanup(libc.shmctl, others[0], IPC_RMID, None)
        self.addCleanup(libc.semctl, others[1], 0, IPC_RMID)
        for kind, our, other in zip(("shm", "sem"), ours, others, strict=True):
            self.assertGreaterEqual(our, 0)
            # Not the key: that of a removed file soon belongs to another program's.
            with open(f"/proc/sysvipc/{kind}", encoding="ascii") as file:
                numbers = [line.split()[1] for line in file]
            self.assertNotIn(str(our), numbers)
            self.assertIn(str(other), numbers)

    def end(self, process, how):
        """Ends it as a user, a shell or a time-out does."""
        if how == "terminal":
            os.killpg(process.pid, signal.SIGINT)
        elif how == "impatient user":
            for _ in range(3):
                os.killpg(process.pid, signal.SIGINT)
                time.sleep(random.uniform(0, 0.1))
        elif how == "group":
            os.killpg(process.pid, signal.SIGKILL)
        else:
            process.send_signal(how)

    ENDS = ("terminal", "impatient user", "group", signal.SIGINT, signal.SIGTERM, signal.SIGHUP,
            signal.SIGKILL)

    def test_a_family_ends_however_it_is_ended(self):
        for how in self.ENDS:
            with self.subTest(how=how):
                process = self.start(CONTAIN, "bash", "-c",
                                     DEAF + FAMILY + "exec sleep 1000")
                self.assertEqual(process.stdout.readline(), "ready\n")
                self.room.look()
                self.assertGreater(len(self.room.seen), 5)
                self.end(process, how)
                code = process.wait(60)
                if isinstance(how, signal.Signals):
                    self.assertEqual(code, -how)
                self.expect_empty(how)

    def test_the_callers_death_ends_it(self):
        caller = self.start("bash", "-c", '"$@"; true', "bash", CONTAIN, "bash", "-c",
                            FAMILY + "exec sleep 1000")
        self.assertEqual(caller.stdout.readline(), "ready\n")
        caller.kill()
        caller.wait()
        self.expect_empty("caller")

    def test_one_within_another_ends_as_well(self):
        for how in (signal.SIGTERM, signal.SIGKILL):
            # The inner one still has much to remove when the outer has lost its patience.
            process = self.start(CONTAIN, CONTAIN, "--in", self.room.folder.name,
                                 "bash", "-c", DEAF + MANY_FILES + FAMILY + "exec sleep 1000")
            self.assertEqual(process.stdout.readline(), "ready\n")
            self.end(process, how)
            process.wait(60)
            self.expect_empty(how)

    def test_a_desktop_ends_at_any_moment(self):
        seed = int(os.environ.get("QUORVEL_TEST_SEED", "1"))
        print(f"QUORVEL_TEST_SEED={seed}", file=sys.stderr)
        rounds = int(os.environ.get("QUORVEL_TEST_ROUNDS", "2"))
        choose = random.Random(seed)
        for how in self.ENDS * rounds:
            delay = choose.choice((choose.uniform(0, 0.3), choose.uniform(0.3, 1.5)))
            with self.subTest(how=how, delay=delay):
                process = self.start(WITH_DISPLAY, "bash", "-c", FAMILY + "exec sleep 1000")
                end = time.monotonic() + delay
                while time.monotonic() < end:
                    self.room.look()
                    time.sleep(0.01)
                self.end(process, how)
                process.wait(60)
                self.expect_empty((how, delay))


if __name__ == "__main__":
    unittest.main(verbosity=2)

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
# What may not be entered, and what leads elsewhere.
FILES = """
mkdir -p "$QUORVEL_FOLDER"/folder/{1..3}
touch "$QUORVEL_FOLDER"/folder/{1..3}/{1..200}
chmod 0 "$QUORVEL_FOLDER/folder/1"
ln -s "$KEPT" "$QUORVEL_FOLDER/folder/elsewhere"
"""
ENDS = ("terminal", "impatient user", "group", signal.SIGINT, signal.SIGTERM, signal.SIGHUP,
        signal.SIGKILL)


class Running:
    """A command in a room of its own."""

    def __init__(self, test, what, *command, **variables):
        self.what = what
        self.room = Room()
        test.addCleanup(self.clean_up)
        self.process = subprocess.Popen(command, env={**self.room.environment, **variables},
                                        text=True, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, start_new_session=True)

    def clean_up(self):
        for pid in self.room.leavings() and self.room.seen:
            try:
                os.kill(pid, signal.SIGKILL)
            except OSError:
                pass
        self.process.wait()
        self.process.stdout.close()
        self.room.folder.cleanup()

    def end(self, how):
        """As a user, a shell or a time-out does."""
        # Who was born between both looks was there for the second: nobody ends at once.
        self.room.look()
        if how == "terminal":
            os.killpg(self.process.pid, signal.SIGINT)
        elif how == "impatient user":
            for pause in (0.03, 0.1, 0):
                os.killpg(self.process.pid, signal.SIGINT)
                time.sleep(pause)
        elif how == "group":
            os.killpg(self.process.pid, signal.SIGKILL)
        else:
            self.process.send_signal(how)
        self.room.look()


class ContainTest(unittest.TestCase):
    def setUp(self):
        self.room = Room()
        self.addCleanup(self.room.folder.cleanup)

    def run_contained(self, *command):
        return subprocess.run([CONTAIN, *command], env=self.room.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)

    def expect_ready(self, running):
        self.assertEqual(running.process.stdout.readline(), "ready\n", running.what)

    def expect_gone(self, running):
        code = running.process.wait(60)
        self.assertEqual(running.room.wait_until_empty(60), [], running.what)
        return code

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

    def start_families(self):
        """Of each way to end: how, and the family that is to be ended so."""
        kept = {"KEPT": self.room.folder.name}
        script = DEAF + FILES + FAMILY + "exec sleep 1000"
        for how in ENDS:
            yield how, Running(self, how, CONTAIN, "bash", "-c", script, **kept)
        # The inner one ends the deaf when the outer has lost its patience with all others.
        for how in (signal.SIGTERM, signal.SIGKILL):
            yield how, Running(self, ("inner", how), CONTAIN, CONTAIN, "bash", "-c", script, **kept)
        # A caller that dies without a word.
        yield signal.SIGKILL, Running(self, "caller", "bash", "-c", '"$@"; true', "bash", CONTAIN,
                                      "bash", "-c", script, **kept)

    def test_a_family_ends_however_it_is_ended(self):
        kept = self.room.folder.name
        os.mkdir(os.path.join(kept, "below"))
        os.chmod(kept, 0o750)
        # All at once: most of the time is patience with the deaf.
        families = list(self.start_families())
        for how, family in families:
            self.expect_ready(family)
            family.end(how)
            self.assertGreater(len(family.room.seen), 5)
        for how, family in families:
            with self.subTest(what=family.what):
                code = self.expect_gone(family)
                if isinstance(how, signal.Signals):
                    self.assertEqual(code, -how)
        self.assertEqual((os.listdir(kept), os.stat(kept).st_mode & 0o777), (["below"], 0o750),
                         "a link was followed")

    def test_a_desktop_ends_at_any_moment(self):
        seed = int(os.environ.get("QUORVEL_TEST_SEED", "1"))
        print(f"QUORVEL_TEST_SEED={seed}", file=sys.stderr)
        choose = random.Random(seed)
        for _ in range(int(os.environ.get("QUORVEL_TEST_ROUNDS", "1"))):
            began = time.monotonic()
            desktops = []
            for how in ENDS:
                delay = choose.choice((choose.uniform(0, 0.5), choose.uniform(0.5, 2.5)))
                desktops.append((delay, how, Running(self, (how, delay), WITH_DISPLAY, "bash", "-c",
                                                     FAMILY + "exec sleep 1000")))
            for delay, how, desktop in sorted(desktops, key=lambda each: each[0]):
                time.sleep(max(0, began + delay - time.monotonic()))
                desktop.end(how)
            for _, _, desktop in desktops:
                self.expect_gone(desktop)


if __name__ == "__main__":
    unittest.main(verbosity=2)

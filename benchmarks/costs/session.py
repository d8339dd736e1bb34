"""A private folder with a simulated interface in it, and what the process table tells."""

import contextlib
import os
import pathlib
import signal
import statistics
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = ROOT / "build/release/bin"


def tool(name):
    return str(BIN / name)


def median(values):
    return statistics.median(values) if values else None


class Session:
    """Folders for one program's settings and its simulator, with a KA2 plugged in on request."""

    def __init__(self, ka2=False):
        self.folder = tempfile.TemporaryDirectory(prefix="cost.")
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", QT_FORCE_STDERR_LOGGING="1")
        for variable, name in (("HOME", "home"), ("XDG_DATA_HOME", "data"),
                               ("XDG_CONFIG_HOME", "config"), ("XDG_CACHE_HOME", "cache"),
                               ("TMPDIR", "tmp"), ("QUORVEL_RUNTIME_DIR", "run")):
            path = os.path.join(self.folder.name, name)
            os.mkdir(path, 0o700)
            self.environment[variable] = path
        self.write_keepassxc_settings()
        self.simulator = None
        if ka2:
            self.simulator = subprocess.Popen([tool("quorvel-simulator")], env=self.environment,
                                              stdout=subprocess.PIPE)
            self.simulator.stdout.readline()
            self.control("plug", "ka2")

    def write_keepassxc_settings(self):
        """Without them it shows a window and no icon."""
        folder = os.path.join(self.environment["XDG_CONFIG_HOME"], "keepassxc")
        os.mkdir(folder)
        with open(os.path.join(folder, "keepassxc.ini"), "w", encoding="ascii") as file:
            file.write("[General]\nUpdateCheckMessageShown=true\n"
                       "[GUI]\nCheckForUpdates=false\nMinimizeOnStartup=true\n"
                       "MinimizeToTray=true\nShowTrayIcon=true\n")

    def control(self, *words):
        subprocess.run([tool("quorvel-simctl"), *words], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)

    def run(self, command, **more):
        """The command's standard output and error output."""
        done = subprocess.run(command, env=dict(self.environment, **more), check=True, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        return done.stdout, done.stderr

    @contextlib.contextmanager
    def program(self, command, stderr=subprocess.DEVNULL):
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                              stderr=stderr, text=True) as process:
            try:
                yield process
            finally:
                if process.poll() is None:
                    process.send_signal(signal.SIGTERM)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.simulator is not None:
            self.simulator.terminate()
            self.simulator.communicate()
        self.folder.cleanup()


def memory(pid):
    """PSS, private memory and what of it was written to, in MiB."""
    sizes = {}
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        for line in file:
            words = line.split()
            if len(words) == 3 and words[2] == "kB":
                sizes[words[0]] = int(words[1])
    private = sizes["Private_Clean:"] + sizes["Private_Dirty:"]
    return sizes["Pss:"] / 1024, private / 1024, sizes["Private_Dirty:"] / 1024


def activity(pid):
    """Nanoseconds on a processor, and how often its threads have gone to sleep by themselves."""
    busy = sleeps = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        busy += int((task / "schedstat").read_text().split()[0])
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches:"):
                sleeps += int(line.split()[1])
    return busy, sleeps


def activity_during(pids, seconds):
    before = {pid: activity(pid) for pid in pids}
    time.sleep(seconds)
    after = {pid: activity(pid) for pid in pids}
    return {pid: tuple((b - a) * 60 / seconds for a, b in zip(before[pid], after[pid]))
            for pid in pids}

"""The Windows program under Wine: start, memory, a step, quit. Runs beside the private Windows that
scripts/windows/run-beside-windows has made, on whose display its icons are."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import time

from costs import counting
from costs.resident import icon_click
from costs.session import ROOT, median, tool

BIN = ROOT / "build/windows/bin"
PAGE = os.sysconf("SC_PAGE_SIZE")
PAGE_IN_USE = 3 << 62  # in memory or swapped out
SETTLING = 6  # seconds
STEPS = 100


def wine(name, *arguments):
    return ["wine", str(BIN / f"{name}.exe"), *arguments]


PROGRAMS = {"program": wine("QuorvelDriver"), "bare": wine("benchmark-bare"),
            "bare-controls": wine("benchmark-bare", "--controls")}


def output_of(command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL).stdout


def forget_settings():
    users = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c/users"
    folders = list(users.glob("*/AppData/Roaming"))
    if not folders:
        raise RuntimeError(f"no user of {users} has a folder for settings")
    for folder in folders:
        for name in ("QuorvelDriver", "benchmark-step"):
            shutil.rmtree(folder / name, ignore_errors=True)


def prepare(ka2):
    """No settings of an earlier run, and the interface as wanted."""
    forget_settings()
    output_of(wine("quorvel-simctl", "reset"))
    if ka2:
        output_of(wine("quorvel-simctl", "plug", "ka2"))


@contextlib.contextmanager
def running(command):
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        try:
            yield process
        finally:
            if process.poll() is None:
                process.terminate()


def starts(rounds):
    """Milliseconds from exec of Wine to the tray icon, and those of a program that does nothing."""
    # While somebody is on the Windows desktop, its notification area stays.
    with running(["wine", "notepad"]):
        subprocess.run(["xdotool", "search", "--sync", "--name", "Notepad"], check=True,
                       stdout=subprocess.DEVNULL)
        found = {"program": [], "bare": [], "nothing": []}
        for _ in range(rounds + 1):
            for name in ("program", "bare"):
                prepare(ka2=False)
                found[name].append(float(output_of([tool("benchmark-start-clock"),
                                                    *PROGRAMS[name]])))
            began = time.monotonic()
            output_of(wine("quorvel-simctl", "--help"))
            found["nothing"].append((time.monotonic() - began) * 1000)
    # The first round has brought the files into memory.
    return {name: median(values[1:]) for name, values in found.items()}


def memory(process, program):
    """MiB that the Windows program has for itself, without the files that its memory shows: Wine
    loads those as private memory, Windows does not."""
    used = 0
    regions = output_of(wine("benchmark-windows-regions", program)).splitlines()
    with open(f"/proc/{process.pid}/pagemap", "rb", buffering=0) as pages:
        for line in regions:
            first, size = (int(word, 16) for word in line.split())
            entries = os.pread(pages.fileno(), size // PAGE * 8, first // PAGE * 8)
            used += sum(int.from_bytes(entries[at:at + 8], "little") & PAGE_IN_USE != 0
                        for at in range(0, len(entries), 8))
    if used == 0:
        raise RuntimeError(f"{program} has no memory of its own")
    return used * PAGE / 2**20


def memories(rounds):
    """A KA2 attached, the window hidden."""
    found = {name: [] for name in PROGRAMS}
    for _ in range(rounds):
        for name, command in PROGRAMS.items():
            prepare(ka2=True)
            with running(command) as process:
                time.sleep(SETTLING)
                found[name].append(memory(process, pathlib.Path(command[1]).name))
    return {name: median(values) for name, values in found.items()}


def steps(rounds):
    """Microseconds."""
    kinds = [kind for pair in counting.STEP_PAIRS for kind in pair]
    found = {kind: [] for kind in kinds}
    for _ in range(rounds):
        for kind in kinds:
            prepare(ka2=True)
            lines = output_of(wine("benchmark-step", kind, str(STEPS))).splitlines()
            found[kind].append(float(lines[-1]))
    return {kind: median(values) for kind, values in found.items()}


def windows_on_display():
    tree = subprocess.run(["xwininfo", "-root", "-children"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    return tree.count("0x")


def open_menu():
    """Returns whether the icon's menu has come."""
    before = windows_on_display()
    icon_click("3")
    for _ in range(50):
        time.sleep(0.1)
        if windows_on_display() > before:
            time.sleep(1)
            return True
    return False


def quit_once(command, ups):
    """Milliseconds; None when menu or keyboard did not get as far, as may happen in Wine."""
    prepare(ka2=True)
    with running(command) as process:
        time.sleep(SETTLING)
        if not open_menu():
            return None
        subprocess.run(["xdotool", "key", *["Up"] * ups], check=True)
        time.sleep(0.3)
        began = time.monotonic()
        subprocess.run(["xdotool", "key", "Return"], check=True)
        try:
            code = process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            return None
        if code != 0:
            raise RuntimeError(f"{command[1]} ended with {code}")
        return (time.monotonic() - began) * 1000


def quits(rounds):
    """Milliseconds from the key that chooses the menu's entry to the end of the process."""
    found = {"program": [], "bare": []}
    missed = 0
    # "Quit" is the sixth from below in the program's menu and the first in the other.
    while min(map(len, found.values())) < rounds:
        for name, ups in (("program", 6), ("bare", 1)):
            took = quit_once(PROGRAMS[name], ups)
            if took is not None:
                found[name].append(took)
                continue
            missed += 1
            if missed > rounds:
                raise RuntimeError("the menus do not open")
    return {name: median(values) for name, values in found.items()}

"""What it costs to be there: start, memory, idle, arrival, quit, growth."""

import re
import subprocess
import time

from costs.session import ROOT, Session, activity_during, median, memory, tool

PROGRAM = tool("QuorvelDriver")
BARE = tool("benchmark-bare")
PEERS = {"qasmixer": ["qasmixer", "-n", "-t"], "keepassxc": ["keepassxc"]}
SETTLING = 8  # seconds


def starts(rounds):
    """Milliseconds from exec to the tray icon, medians of alternating runs; None: shows none."""
    commands = {"program": [PROGRAM], "bare": [BARE], **PEERS}
    found = {name: [] for name in commands}
    for _ in range(rounds + 1):
        for name, command in commands.items():
            if found[name] is None:
                continue
            with Session() as session:
                try:
                    out = session.run([tool("benchmark-start-clock"), *command])[0]
                    found[name].append(float(out))
                except subprocess.CalledProcessError:
                    found[name] = None
    # The first round has brought the files into memory.
    return {name: values and median(values[1:]) for name, values in found.items()}


def memories(rounds):
    """PSS and private memory, hidden, a KA2 attached: one program at a time, since those that run
    together share pages."""
    commands = {"program": [PROGRAM], "bare": [BARE], "bare-controls": [BARE, "--controls"],
                **PEERS}
    rows = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            with Session(ka2=True) as session, session.program(command) as process:
                time.sleep(SETTLING / 2)
                if process.poll() is None:
                    rows[name].append(memory(process.pid))
    return medians(rows)


def idle(seconds, rounds):
    """Nanoseconds on a processor and goings to sleep a minute, a KA2 attached."""
    rows = {"program": [], "reads": []}
    for _ in range(rounds):
        with Session(ka2=True) as session:
            with session.program([PROGRAM]) as program, \
                    session.program([tool("benchmark-reads")]) as reads:
                time.sleep(SETTLING)
                active = activity_during([program.pid, reads.pid], seconds)
                rows["program"].append(active[program.pid])
                rows["reads"].append(active[reads.pid])
    return medians(rows)


def medians(rows):
    return {name: tuple(median(column) for column in zip(*values)) if values else (None, None, None)
            for name, values in rows.items()}


def shown(rounds):
    """Memory with the window on the screen, likewise one program at a time."""
    commands = {"program": [PROGRAM], "bare": [BARE, "--controls", "--shown"]}
    rows = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            with Session(ka2=True) as session, session.program(command) as process:
                time.sleep(SETTLING / 2)
                if name == "program":
                    icon_click("1")
                    subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name",
                                    "^Quorvel KA2"], check=True, timeout=20,
                                   stdout=subprocess.DEVNULL)
                time.sleep(SETTLING / 2)
                rows[name].append(memory(process.pid))
    return medians(rows)


def icon_place():
    tree = subprocess.run(["xwininfo", "-root", "-tree"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    after = tree[tree.index('"SystemTray"'):]
    icon = re.search(r"\n\s+0x\w+ .*?(\d+)x(\d+)\+-?\d+\+-?\d+\s+\+(\d+)\+(\d+)", after)
    width, height, x, y = map(int, icon.groups())
    return str(x + width // 2), str(y + height // 2)


def icon_click(button):
    subprocess.run(["xdotool", "mousemove", *icon_place(), "click", button], check=True)


def quits(rounds):
    """Milliseconds from the key that chooses the menu's entry to the end of the process."""
    found = {"program": [], "bare": []}
    # "Quit" is the sixth from below in the program's menu and the first in the other.
    for _ in range(rounds):
        for name, command, ups in (("program", PROGRAM, 6), ("bare", BARE, 1)):
            with Session(ka2=True) as session, session.program([command]) as process:
                time.sleep(SETTLING / 2)
                icon_click("3")
                time.sleep(1.5)
                subprocess.run(["xdotool", "key", *["Up"] * ups], check=True)
                time.sleep(0.3)
                began = time.monotonic()
                subprocess.run(["xdotool", "key", "Return"], check=True)
                process.wait(timeout=20)
                found[name].append((time.monotonic() - began) * 1000)
    return {name: median(values) for name, values in found.items()}


def arrivals(count):
    """Milliseconds from the detection to the painted panel."""
    with Session(ka2=True) as session:
        lines = session.run([tool("benchmark-arrival"), str(count)])[1].splitlines()
    return median([float(line.split()[1]) for line in lines if line.startswith("arrival ")])


def drag(moves=200, interval=0.008):
    """The latest move and how many arrived, with the pointer moved 125 times a second."""
    with Session(ka2=True) as session:
        with session.program([tool("benchmark-drag")], stderr=subprocess.PIPE) as process:
            place = None
            while place is None:
                words = process.stderr.readline().split()
                if words[:1] == ["ready"]:
                    place = int(words[1]), int(words[2])
            steps = ["mousemove", str(place[0]), str(place[1] + 20), "sleep", "0.5",
                     "mousedown", "1"]
            for number in range(moves):
                steps += ["mousemove", str(place[0]), str(place[1] + 19 - number % 40),
                          "sleep", str(interval)]
            subprocess.run(["xdotool", *steps, "mouseup", "1"], check=True)
            late = [int(line.split()[1]) for line in process.stderr if line.startswith("move ")]
    return max(late), len(late)


def growth():
    """Bytes on the heap after 1000 arrivals and after a day."""
    with Session() as session:
        lines = session.run([tool("benchmark-growth")])[0].splitlines()
    return {words[0]: int(words[1]) for words in map(str.split, lines) if len(words) == 3}


def package_parts():
    """MiB of each file of the package, when there is one."""
    folder = ROOT / "dist/windows/QuorvelDriver"
    files = [file for file in folder.rglob("*") if file.is_file()]
    return {file.relative_to(folder).as_posix(): file.stat().st_size / 2**20 for file in files}

"""What ./benchmark runs on a desktop of its own."""

import json
import subprocess
import sys

from costs import counting, resident
from costs.counts import check_counts, counts, keep_counts
from costs.session import ROOT
from costs.table import Table, machine, publish

ROUNDS = 7
STARTS = 31


def say(text):
    print(f"==> {text}", flush=True)


def starts():
    """On a display whose notification area is the measuring program's own."""
    done = subprocess.run([ROOT / "scripts/with-display", "--bare", sys.executable, "-B", __file__,
                           "--starts"], check=True, text=True, stdout=subprocess.PIPE)
    return json.loads(done.stdout.splitlines()[-1])


def leanest(found, column):
    values = [found[peer][column] for peer in resident.PEERS if found[peer][column] is not None]
    return min(values, default=None)


def add_start(table):
    say("Start")
    found = starts()
    peers = [found[peer] for peer in resident.PEERS if found[peer] is not None]
    table.add("exec to tray icon, ms", found["program"], "bare", found["bare"], 1.10, 1)
    table.add("exec to tray icon, ms", found["program"], "fastest peer", min(peers, default=None),
              0.6, 1)


def add_memory(table):
    say("Memory")
    found = resident.memories(3)
    shown = resident.shown(3)
    for column, name in enumerate(("PSS", "private memory")):
        ours = found["program"][column]
        table.add(f"{name}, hidden, MiB", ours, "bare", found["bare-controls"][column], 1.15)
        table.add(f"{name}, hidden, MiB", ours, "leanest peer", leanest(found, column), 0.5)
        table.add(f"{name}, shown, MiB", shown["program"][column], "bare", shown["bare"][column],
                  1.3)
    for name, rows, limit in (("hidden", found, "bare-controls"), ("shown", shown, "bare")):
        table.add(f"private memory written to, {name}, MiB", rows["program"][2], "bare",
                  rows[limit][2], None)


def add_idle(table):
    say("Idle")
    found = resident.idle(60, 3)
    table.add("processor time a minute idle, ms", found["program"][0] / 1e6, "raw reads",
              found["reads"][0] / 1e6, 1.3, 1)
    table.add("going to sleep a minute", found["program"][1], "raw reads", found["reads"][1], 1.1,
              0, "")


def add_steps(table, exact):
    say("Steps")
    times = counting.durations("benchmark-step", [kind for pair in counting.STEP_PAIRS
                                                  for kind in pair], ROUNDS)
    for kind, limit in counting.STEP_PAIRS:
        goal = None if kind == "file" else 1.2
        table.add(f"step, {kind}, instructions", exact["instructions"][kind], limit,
                  exact["instructions"][limit], goal, 0)
        table.add(f"step, {kind}, µs", times[kind], limit, times[limit], goal, 0)
        table.add(f"step, {kind}, system calls", exact["calls"][kind], limit,
                  exact["calls"][limit], None, 1)


def add_paint(table, exact):
    say("Painting")
    times = counting.durations("benchmark-paint", [kind for pair in counting.PAINT_PAIRS
                                                   for kind in pair], ROUNDS)
    for (kind, limit), goal in zip(counting.PAINT_PAIRS, (2.0, 1.5)):
        table.add(f"{kind}, changed and painted, instructions", exact["instructions"][kind], limit,
                  exact["instructions"][limit], goal, 0)
        table.add(f"{kind}, changed and painted, µs", times[kind], limit, times[limit], goal, 0)


def add_latencies(table):
    say("Drag, arrival, quit, growth")
    latest, arrived = resident.drag()
    table.add("drag of 200 moves, latest, ms", latest, "allowed", 16, 1.0, 0,
              f"{arrived} of 200 arrived")
    table.add("arrival to painted panel without Sleep(100), ms", resident.arrivals(9) - 100,
              "allowed", 100, 1.0, 1)
    found = resident.quits(5)
    table.add("quit from the menu to process gone, ms", found["program"], "allowed", 150, 1.0, 0,
              f"bare {found['bare']:.0f}")
    grown = resident.growth()
    table.say("growth over 1000 arrivals", f"{grown['arrivals']} bytes", "none")
    table.say("growth over a day of idle", f"{grown['day']} bytes", "none")


def add_package(table):
    parts = resident.package_parts()
    if not parts:
        table.say("package", "-", "", "not packed: ./package")
    for name, size in sorted(parts.items(), key=lambda part: -part[1]):
        table.say(f"package: {name}", f"{size:.2f} MiB")


def measure():
    table = Table()
    described = machine()
    add_start(table)
    add_memory(table)
    add_idle(table)
    say("Counting")
    exact = counts()
    add_steps(table, exact)
    add_paint(table, exact)
    add_latencies(table)
    add_package(table)
    publish("The last table", described, table)


if __name__ == "__main__":
    ways = {"--starts": lambda: print(json.dumps(resident.starts(STARTS))),
            "--short": check_counts, "--keep": keep_counts}
    sys.exit(ways[sys.argv[1]]() if len(sys.argv) > 1 else measure())

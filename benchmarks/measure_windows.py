"""What ./benchmark --windows runs: the Windows program under Wine, each part on a desktop and
beside a private Windows of its own."""

import json
import subprocess
import sys

from costs import counting, windows
from costs.session import ROOT
from costs.table import Table, machine, publish

ROUNDS = 15


def say(text):
    print(f"==> {text}", flush=True)


def on_a_desktop(part, *options):
    done = subprocess.run([ROOT / "scripts/with-display", *options,
                           ROOT / "scripts/windows/run-beside-windows",
                           sys.executable, "-B", __file__, part],
                          check=True, text=True, stdout=subprocess.PIPE)
    print(done.stdout, end="", flush=True)
    return json.loads(done.stdout.splitlines()[-1])


def residents():
    return {"memory": windows.memories(3), "quit": windows.quits(5), "steps": windows.steps(5)}


def measure():
    table = Table()
    described = machine(under_wine=True)
    say("Start")
    # With a notification area of the measuring program's own.
    found = on_a_desktop("--starts", "--bare")
    table.add("exec to tray icon, ms", found["program"], "bare", found["bare"], 1.10, 1,
              f"Wine alone {found['nothing']:.0f}")
    say("Memory, quit, steps")
    found = on_a_desktop("--residents")
    for limit, name in (("bare-controls", "bare, equal window"), ("bare", "bare")):
        table.add("private memory, hidden, MiB", found["memory"]["program"], name,
                  found["memory"][limit], 1.15 if limit == "bare-controls" else None)
    for kind, limit in counting.STEP_PAIRS:
        table.add(f"step, {kind}, µs", found["steps"][kind], limit, found["steps"][limit],
                  None if kind == "file" else 1.2, 0)
    table.add("quit from the menu to process gone, ms", found["quit"]["program"], "allowed", 150,
              1.0, 0, f"bare {found['quit']['bare']:.0f}")
    publish("The last table under Wine", described, table, "-wine")


if __name__ == "__main__":
    ways = {"--starts": lambda: windows.starts(ROUNDS), "--residents": residents}
    if len(sys.argv) > 1:
        print(json.dumps(ways[sys.argv[1]]()))
    else:
        measure()

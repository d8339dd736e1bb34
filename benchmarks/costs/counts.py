"""The counts that are the same each time, and the ones that are kept."""

import json

from costs import counting, resident
from costs.session import ROOT
from costs.table import qt_version

KEPT = ROOT / "benchmarks/baseline.json"
TOLERANCE = 1.1
# Each of the timers' 330 reads a minute wakes the program twice, for the timer and for the answer;
# timers that fall together save some.
MOST_WAKE_UPS = 660


def counts():
    steps = [kind for pair in counting.STEP_PAIRS for kind in pair]
    painted = [kind for pair in counting.PAINT_PAIRS for kind in pair]
    return {"instructions": counting.instructions("benchmark-step", steps) |
                            counting.instructions("benchmark-paint", painted),
            "calls": counting.calls("benchmark-step", steps)}


def read_kept():
    """All kept counts, by the minor version of the toolkit that they were counted with, and ours."""
    return json.loads(KEPT.read_text(encoding="ascii")), ".".join(qt_version().split(".")[:2])


def keep_counts():
    kept, ours = read_kept()
    kept[ours] = counts() | {"wake-ups": {"idle": MOST_WAKE_UPS}}
    KEPT.write_text(json.dumps(kept, indent=4) + "\n", encoding="ascii")
    print(f"Written to {KEPT.relative_to(ROOT)}")


def check_counts():
    """Compares with the kept counts of this version of the toolkit, or else of the newest; returns the
    exit code. What its limit has grown by as well, on another machine or with another version of
    the toolkit, is not the program's."""
    every, ours = read_kept()
    version = ours if ours in every else max(every, key=lambda name: int(name.split(".")[1]))
    print(f"Qt {ours}, compared with the counts of Qt {version}")
    kept = every[version]
    found = counts()
    found["wake-ups"] = {"idle": resident.idle(20, 1)["program"][1]}
    limits = dict(counting.STEP_PAIRS + counting.PAINT_PAIRS)
    code = 0
    for kind, values in kept.items():
        for name, before in values.items():
            if name in limits.values():
                continue
            allowed = before * TOLERANCE
            if name in limits:
                limit = limits[name]
                allowed *= max(1, found[kind][limit] / values[limit])
            now = found[kind][name]
            grown = now > allowed
            print(f"{'GROWN ' if grown else '      '}{kind} {name}: {now:.0f}, kept {before:.0f}, "
                  f"allowed {allowed:.0f}")
            code = 1 if grown else code
    return code

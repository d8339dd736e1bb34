"""Exact counts of what a step takes: a run with many steps less a run with none."""

import re

from costs.session import Session, median, tool

OFFSCREEN = {"QT_QPA_PLATFORM": "offscreen"}
STEPS = 100
# What the panel does, and what it would do at least.
STEP_PAIRS = (("mixer-knob", "mixer-raw"), ("packet-knob", "packet-raw"), ("file", "file-raw"))
PAINT_PAIRS = (("knob", "dial"), ("button", "pushbutton"))
# Instructions are counted without those that not every processor has, so that the kept counts hold
# on all of them.
COMMON = {"QT_NO_CPU_FEATURE": "avx avx2 avx512f bmi bmi2 f16c fma"}
# Their number depends on how other processes get on, or on the allocator's mood.
UNSTEADY = {"futex", "brk", "mmap", "munmap", "restart_syscall", "sched_yield", "madvise"}


def instructions_of(session, command):
    collected = session.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                             *command], **OFFSCREEN, **COMMON)[1]
    return int(re.search(r"Collected : (\d+)", collected).group(1))


def calls_of(session, command):
    trace = session.run(["strace", "-f", "-c", "-U", "name,calls", *command], **OFFSCREEN)[1]
    counts = {}
    for line in trace.splitlines():
        words = line.split()
        if len(words) == 2 and words[1].isdigit() and words[0] not in UNSTEADY | {"total"}:
            counts[words[0]] = int(words[1])
    return counts


def once(program, kind, steps, count):
    """In a folder of its own: what an earlier run has saved would be restored, and counted too."""
    with Session(ka2=True) as session:
        return count(session, [tool(program), kind, str(steps)])


def per_step(program, kinds, count):
    """What `count` tells of each kind of step, as (with steps, without). The steps of
    benchmark-step differ in nothing else, so that one run without any serves for all."""
    without = None
    for kind in kinds:
        if without is None or program != "benchmark-step":
            without = once(program, kind, 0, count)
        yield kind, once(program, kind, STEPS, count), without


def instructions(program, kinds):
    return {kind: round((some - none) / STEPS)
            for kind, some, none in per_step(program, kinds, instructions_of)}


def calls(program, kinds):
    found = {}
    for kind, some, none in per_step(program, kinds, calls_of):
        counts = {name: (some[name] - none.get(name, 0)) / STEPS for name in some}
        found[kind] = round(sum(count for count in counts.values() if count >= 0.5), 1)
    return found


def duration(program, kind, count=300):
    """Microseconds."""
    with Session(ka2=True) as session:
        lines = session.run([tool(program), kind, str(count)], **OFFSCREEN)[0].splitlines()
    return float(lines[-1])


def durations(program, kinds, rounds):
    """Medians of alternating runs, in microseconds."""
    found = {kind: [] for kind in kinds}
    for _ in range(rounds):
        for kind in kinds:
            found[kind].append(duration(program, kind))
    return {kind: median(values) for kind, values in found.items()}

"""The table, and the machine that it was made on."""

import os
import platform
import re
import subprocess
import time

from costs.session import ROOT


class Table:
    def __init__(self):
        self.rows = []

    def add(self, figure, value, limit_name, limit, goal, digits=2, note=""):
        """A figure beside its limit; `goal` is the ratio that it may have, None: none is set."""
        if value is None or limit is None or limit == 0:
            self.rows.append((figure, text(value, digits), f"{limit_name} {text(limit, digits)}",
                              "", "" if goal is None else f"≤ {goal:g}", note or "not measured"))
            return
        ratio = value / limit
        verdict = "" if goal is None else ("met" if ratio <= goal else "missed")
        self.rows.append((figure, text(value, digits), f"{limit_name} {text(limit, digits)}",
                          f"{ratio:.2f}", "" if goal is None else f"≤ {goal:g}",
                          ", ".join(filter(None, (verdict, note)))))

    def say(self, figure, value, goal="", note=""):
        self.rows.append((figure, value, "", "", goal, note))

    def markdown(self):
        heads = ("Figure", "Measured", "Limit", "Ratio", "Goal", "")
        lines = [heads, ("---",) * len(heads), *self.rows]
        return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def text(value, digits):
    return "-" if value is None else f"{value:.{digits}f}"


def machine(under_wine=False):
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        cpu = re.search(r"model name\s*: (.*)", file.read())
    with open("/proc/meminfo", encoding="ascii") as file:
        memory = int(re.search(r"MemTotal:\s*(\d+)", file.read()).group(1)) / 1024 / 1024
    with open("/etc/os-release", encoding="utf-8") as file:
        system = re.search(r'PRETTY_NAME="(.*)"', file.read()).group(1)
    return (f"- processor: {cpu.group(1) if cpu else platform.machine()}, {os.cpu_count()} used\n"
            f"- memory: {memory:.0f} GiB\n- system: {system}, Linux {platform.release().split('-')[0]}\n"
            f"- {wine_programs() if under_wine else native_programs()}\n"
            f"- load when it began: {os.getloadavg()[0]:.2f}\n")


def native_programs():
    return (f"Qt {qt_version()}, qasmixer {package_version('qasmixer')}, "
            f"keepassxc {package_version('keepassxc')}")


def wine_programs():
    return f"Wine {package_version('wine')}, Qt for Windows built from {qt_version()}"


def qt_version():
    return package_version("qt6-base-dev")


def package_version(name):
    done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", name], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return done.stdout or "unknown"


def publish(heading, described, table, suffix=""):
    """Prints the table, keeps it, and puts it below that heading of the page about performance."""
    result = f"Measured {time.strftime('%Y-%m-%d')}\n\n{described}\n{table.markdown()}"
    print(result)
    file = ROOT / "benchmarks/results" / f"{time.strftime('%Y-%m-%d-%H%M')}{suffix}.md"
    file.write_text(result, encoding="utf-8")
    page = ROOT / "docs/performance.md"
    text_before = page.read_text(encoding="utf-8")
    head, mark, after = text_before.partition(f"## {heading}\n\n")
    if not mark:
        raise RuntimeError(f"{page} has no place for {heading}")
    _, next_mark, tail = after.partition("\n## ")
    page.write_text(head + mark + result + next_mark + tail, encoding="utf-8")
    print(f"==> Written to {file.relative_to(ROOT)} and {page.relative_to(ROOT)}", flush=True)

#!/usr/bin/env python3
"""Every link of the documents leads somewhere, and every path they name is there.

Links are those of Markdown, with their anchors; paths are what stands in backticks and begins with
a folder or a command of this project. Names with a placeholder or a wildcard must match something.
Commands are run by .ci/run, scripts/checks/commands or scripts/checks/release, or stand below with the reason why not.
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Made by the commands, or in the user's own folders.
MADE = ("build/", "dist/")
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
NAMED = re.compile(r"`([^`\n]+)`")
BLOCK = re.compile(r"^ *```\n(.*?)^ *```$", re.MULTILINE | re.DOTALL)
STEP = re.compile(r'^    "(.*)"$', re.MULTILINE)
# Those that ctest or another check runs with what they need around them.
RUN_ELSEWHERE = {
    "./run MODEL": "scripts/checks/demonstration",
    "./test NAME": "scripts/checks/commands, with another name",
    "./test --windows NAME": "./test --windows, all of them",
    "scripts/make-pictures": "scripts/checks/demonstration",
    "scripts/contain COMMAND": "every command",
    "scripts/with-display COMMAND": "every system test",
    "tests/support/run-whole": "every test",
    "QUORVEL_TEST_SCALE=1.5 build/debug/bin/shell_tests window_scale_test": "ctest, as window_scale_test_at_150",
    ".ci/run": "itself",
    "ASAN_OPTIONS=detect_leaks=0 build/fuzz/bin/TARGET_fuzz FILE": "./test --fuzz",
    "scripts/windows/collect-program": "./package",
    "scripts/windows/qt-for-windows-recipe": "./package",
    "scripts/windows/run-in-free-windows": "./test --windows",
    "scripts/windows/run-in-fresh-windows": "./test --windows",
}
BY_HAND = {
    "./benchmark --keep": "renews what ./benchmark --short compares with",
    "scripts/checks/release": "a day's work, before a release",
    "QUORVEL_SIGN=/path/to/sign-it ./package": "needs the publisher's program",
}


def documents():
    return [path for path in sorted(ROOT.rglob("*.md"))
            if not str(path.relative_to(ROOT)).startswith(MADE)]


def anchors(path):
    """As they are made from headings: lower case, blanks as hyphens, other signs left out."""
    headings = re.findall(r"^#+ (.*)$", path.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def first_names():
    return {path.name for path in ROOT.iterdir()} - {".git"}


def is_path(text):
    first = text.split("/")[0] if "/" in text else ""
    return first in first_names() or text.startswith("./") and len(text) > 2


def leads_somewhere(text):
    text = text.removeprefix("./").rstrip("/")
    if (text + "/").startswith(MADE):
        return True
    pattern = re.sub(r"<[^>]*>|…", "*", text)
    return any(ROOT.glob(pattern))


def commands(document):
    """What a document tells to type, without comments; on Windows nothing of this is there."""
    text = document.read_text()
    lines = "".join(BLOCK.findall(text)).splitlines() + NAMED.findall(BLOCK.sub("", text))
    for line in lines if document.name != "building-on-windows.md" else ():
        line = re.sub(r"\s+#.*", "", line).strip()
        words = [word for word in line.split() if not re.match(r"[A-Z_]+=", word)]
        if words and (words[0] in ("cmake", "ctest") and len(words) > 1 or is_command(words[0])):
            yield line


def is_command(word):
    if word.startswith("build/"):
        return "/bin/" in word
    path = ROOT / word
    return is_path(word) and path.is_file() and path.stat().st_mode & 0o111


def shape(line):
    """Its words; what stands in brackets may be missing."""
    return re.sub(r" \[[^\]]*\]", "", line).split()


def is_open(word):
    """A number, or a placeholder such as NAME or FILE..."""
    return re.fullmatch(r"[A-Z]+(\.\.\.)?|\d+(\.\d+)?", word) is not None


def same(word, other):
    name, _, value = word.rpartition("=")
    other_name, _, other_value = other.rpartition("=")
    return word == other or name == other_name and (is_open(value) or is_open(other_value))


def is_run_by(line, step):
    """More may follow in what is run."""
    words, others = shape(line), shape(step)
    return len(words) <= len(others) and all(map(same, words, others))


class DocumentsTest(unittest.TestCase):
    def test_there_are_documents(self):
        self.assertGreaterEqual(len(documents()), 8)

    def test_links(self):
        for document in documents():
            for target in LINK.findall(document.read_text()):
                if target.startswith(("https://", "http://")):
                    continue
                with self.subTest(document=document.name, link=target):
                    name, _, anchor = target.partition("#")
                    path = (document.parent / name).resolve() if name else document
                    self.assertTrue(path.exists(), "leads nowhere")
                    if anchor:
                        self.assertIn(anchor, anchors(path))

    def test_named_paths(self):
        for document in documents():
            for name in NAMED.findall(document.read_text()):
                word = name.split()[0].rstrip(":,") if name.split() else ""
                if is_path(word):
                    with self.subTest(document=document.name, path=word):
                        self.assertTrue(leads_somewhere(word), "is not there")

    def test_commands(self):
        for document in documents():
            for line in "".join(BLOCK.findall(document.read_text())).splitlines():
                words = [word for word in line.split() if "=" not in word]
                if words and is_path(words[0]) and not words[0].startswith(MADE):
                    with self.subTest(document=document.name, command=words[0]):
                        self.assertTrue((ROOT / words[0]).is_file(), "is not there")

    def test_commands_are_run(self):
        known = [step for script in (".ci/run", "scripts/checks/commands", "scripts/checks/release")
                 for step in STEP.findall((ROOT / script).read_text())]
        self.assertGreater(len(known), 20)
        known += [*RUN_ELSEWHERE, *BY_HAND]
        for document in documents():
            for line in commands(document):
                with self.subTest(document=document.name, command=line):
                    self.assertTrue(any(is_run_by(line, step) for step in known),
                                    "nothing runs it")


if __name__ == "__main__":
    sys.exit(unittest.main())

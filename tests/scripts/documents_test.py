#!/usr/bin/env python3
"""Every link of the documents leads somewhere, and every path they name is there.

Links are those of Markdown, with their anchors; paths are what stands in backticks and begins with
a folder or a command of this project. Names with a placeholder or a wildcard must match something.
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
            blocks = re.findall(r"^ *```\n(.*?)^ *```$", document.read_text(),
                                re.MULTILINE | re.DOTALL)
            for line in "".join(blocks).splitlines():
                words = [word for word in line.split() if "=" not in word]
                if words and is_path(words[0]) and not words[0].startswith(MADE):
                    with self.subTest(document=document.name, command=words[0]):
                        self.assertTrue((ROOT / words[0]).is_file(), "is not there")


if __name__ == "__main__":
    sys.exit(unittest.main())

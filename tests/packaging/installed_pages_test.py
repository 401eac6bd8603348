#!/usr/bin/env python3
"""Follows every link of the installed pages that leads to a file.

Usage: installed_pages_test.py BUILD_FOLDER
Installs the build's files, as they were configured, into a throw-away root.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PAGES = {"clients.md", "contract.md", "files.md", "operating.md", "porting.md"}
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")


def without_code(text):
    """Without what is shown as it stands."""
    text = re.sub(r"^```.*?^```", "", text, flags=re.DOTALL | re.MULTILINE)
    return re.sub(r"^ {4}.*$", "", text, flags=re.MULTILINE)


def anchors_of(text):
    """As they are made of headings: lower case, without punctuation, spaces as hyphens."""
    headings = re.findall(r"^#+ (.*)$", without_code(text), flags=re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


class InstalledPages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.root = pathlib.Path(folder.name)
        for component in ("daemon", "tools", "dev"):
            subprocess.run(["cmake", "--install", BUILD, "--component", component], check=True, capture_output=True,
                           env={**os.environ, "DESTDIR": str(cls.root)})
        cls.pages = {page.relative_to(cls.root): page.read_text(encoding="utf-8") for page in cls.root.rglob("*.md")}

    def test_are_those_of_use_without_the_source(self):
        names = [page.name for page in self.pages if page.parent.name == "tornel"]
        self.assertEqual(sorted(PAGES), sorted(names))

    def test_lead_to_installed_files_and_their_headings(self):
        followed = 0
        for page, text in self.pages.items():
            for link in LINK.findall(without_code(text)):
                if re.match(r"\w+:", link):
                    continue
                followed += 1
                name, _, anchor = link.partition("#")
                # As from /: an absolute link leaves the root otherwise.
                target = self.root / os.path.normpath(f"/{page.parent}/{name}" if not name.startswith("/") else name)[1:]
                target = target if name else self.root / page
                self.assertTrue(target.exists(), f"{page}: {link}")
                if anchor:
                    self.assertIn(anchor, anchors_of(target.read_text(encoding="utf-8")), f"{page}: {link}")
        self.assertGreater(followed, 10)


if __name__ == "__main__":
    BUILD = sys.argv[1]
    unittest.main(argv=sys.argv[:1])

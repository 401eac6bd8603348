#!/usr/bin/env python3
"""Compares what packaging/changelog.py makes of pages, and its newest release with the version of the programs.

Usage: changelog_test.py TORNEL TORNELCTL VERSION
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = """\
# Changelog

Words that are in no release.

## Unreleased

- What nobody has yet.

## 1.2 - 2026-02-01

### Fixed
- A long item, which goes on so far that it does not fit on a line of eighty
  columns and is broken anew.
- A short one.

## 1.1 - 2025-12-31

- The first.
"""
DEBIAN = """\
tornel (1.2) unstable; urgency=medium

  [ Fixed ]
  * A long item, which goes on so far that it does not fit on a line of eighty
    columns and is broken anew.
  * A short one.

 -- A Maintainer <a@example.org>  Sun, 01 Feb 2026 12:00:00 +0000

tornel (1.1) unstable; urgency=medium

  * The first.

 -- A Maintainer <a@example.org>  Wed, 31 Dec 2025 12:00:00 +0000
"""


def said_by(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Changelog(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for name in ("packaging", "debian"):
            (self.root / name).mkdir()
        shutil.copy(SOURCE / "packaging/changelog.py", self.root / "packaging")
        (self.root / "debian/control").write_text("Source: tornel\nMaintainer: A Maintainer <a@example.org>\n")

    def run_on(self, page, option):
        (self.root / "CHANGELOG.md").write_text(page, encoding="utf-8")
        return subprocess.run([self.root / "packaging/changelog.py", option], capture_output=True, text=True,
                              env={**os.environ, "TZ": "Asia/Tokyo"})

    def test_becomes_debians_without_what_is_not_released(self):
        self.assertEqual(DEBIAN, self.run_on(PAGE, "--debian").stdout)

    def test_gives_version_and_noon_of_the_newest_release(self):
        self.assertEqual("1.2\n", self.run_on(PAGE, "--version").stdout)
        self.assertEqual("1769947200\n", self.run_on(PAGE, "--timestamp").stdout)

    def test_says_what_is_wrong_with_the_page(self):
        for page, words in (
                ("# Changelog\n", "no release"),
                ("## 1.0 - 2026-01-01\n\n", "1.0: nothing changed"),
                ("## 1.0\n- One\n", "neither \"## VERSION - YYYY-MM-DD\" nor \"## Unreleased\": ## 1.0"),
                ("## 1.0 - 2026-02-30\n- One\n", "1.0: there is no day 2026-02-30"),
                ("## 1.0 - 2026-01-01\nOne\n", "1.0: neither section nor item: One")):
            ended = self.run_on(page, "--version")
            self.assertEqual((1, ""), (ended.returncode, ended.stdout))
            self.assertIn(words, ended.stderr)

    def test_is_of_the_version_that_was_built(self):
        self.assertEqual(VERSION, said_by(SOURCE / "packaging/changelog.py", "--version").strip())
        self.assertEqual(VERSION, said_by(DAEMON, "--version").strip())
        self.assertEqual(f"tornelctl {VERSION}", said_by(CLIENT, "--version").strip())


if __name__ == "__main__":
    DAEMON, CLIENT, VERSION = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])

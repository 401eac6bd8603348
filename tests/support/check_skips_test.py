#!/usr/bin/env python3
"""Has scripts/check-skips read reports as CTest writes them.

Usage: check_skips_test.py CHECK_SKIPS
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

PASSED = '<testcase name="Suite.Passes" status="run"/>'
LISTED = '<testcase name="DaemonResources.AreTwoThreads" status="notrun"><skipped message="SKIP"/></testcase>'
UNLISTED = '<testcase name="Suite.Skipped" status="notrun"><skipped message="SKIP"/></testcase>'
PROGRAM = '<testcase name="program" status="run"><system-out>[  SKIPPED ] {}\n</system-out></testcase>'


class Skips(unittest.TestCase):
    def check(self, *cases, preset="clang"):
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder) / "tests.xml"
            report.write_text(f"<testsuite>{''.join(cases)}</testsuite>", encoding="utf-8")
            done = subprocess.run([PROGRAM_UNDER_TEST, preset, report], capture_output=True, text=True, check=False)
            return done.returncode, done.stdout

    def test_of_a_test_that_the_list_names_for_the_build_pass(self):
        self.assertEqual((0, "skips: 1, each with its reason in tests/skips.txt\n"), self.check(PASSED, LISTED))

    def test_of_a_test_that_it_names_for_another_build_fail(self):
        status, said = self.check(PASSED, LISTED, preset="release")
        self.assertEqual(1, status)
        self.assertIn("DaemonResources.AreTwoThreads", said)

    def test_of_a_test_that_it_does_not_name_fail(self):
        status, said = self.check(PASSED, UNLISTED)
        self.assertEqual(1, status)
        self.assertIn("Suite.Skipped", said)

    def test_inside_a_program_are_seen(self):
        for name in ("Suite.Skipped", "Suite.Skipped (12 ms)", "Types/Suite/0.Skipped, where TypeParam = int (0 ms)"):
            status, said = self.check(PASSED, PROGRAM.format(name))
            self.assertEqual(1, status, name)
            self.assertIn("Skipped was skipped", said)

    def test_cannot_be_told_from_a_report_without_a_test(self):
        self.assertEqual(1, self.check()[0])


if __name__ == "__main__":
    PROGRAM_UNDER_TEST = sys.argv.pop(1)
    unittest.main()

#!/usr/bin/env python3
"""Compares docs/clients.md with the programs that it links, with what they print and with the interface definition.

Usage: page_test.py SOURCE_FOLDER
"""

import pathlib
import re
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
LINK = re.compile(r"\]\(clients/([^)]*)\)")


def problems_of(page, files):
    """Where `page` does not link exactly `files`."""
    linked = set(LINK.findall(page))
    return ([f"{name} is not linked" for name in sorted(files - linked)]
            + [f"{name} is linked and does not exist" for name in sorted(linked - files)])


def calls_of(idl, service):
    body = re.search(rf"^service {service} {{\n(.*?)^}}", idl, re.MULTILINE | re.DOTALL).group(1)
    return set(re.findall(r"^  (?:oneway )?[\w.<>, ]+ (\w+)\(", body, re.MULTILINE))


def indented(text):
    return "".join(f"    {line}\n" for line in text.splitlines())


class Page(unittest.TestCase):
    def test_links_every_program(self):
        programs = {path.name for path in (ROOT / "docs/clients").iterdir() if path.is_file()}
        self.assertGreaterEqual(len(programs), 5)
        self.assertEqual([], problems_of(PAGE, programs))

    def test_shows_what_the_programs_print(self):
        for name in ("expected_notifications.txt", "expected_output.txt"):
            self.assertIn(indented((HERE / name).read_text(encoding="utf-8")), PAGE)

    def test_names_every_call_and_every_notification(self):
        idl = (ROOT / "idl/in_module.thrift").read_text(encoding="utf-8")
        calls, notifications = calls_of(idl, "im_SIControlSrv"), calls_of(idl, "im_SINotifySrv")
        self.assertEqual((13, 11), (len(calls), len(notifications)), "the interface cannot be read")
        self.assertEqual([], [name for name in sorted(calls | notifications) if f"`{name}" not in PAGE])

    def test_gives_each_call_a_row(self):
        idl = (ROOT / "idl/in_module.thrift").read_text(encoding="utf-8")
        rows = re.findall(r"^\| (`[^|]*`) \|.*\|.*\|.*\|$", PAGE, re.MULTILINE)
        named = {name for row in rows for name in re.findall(r"`(\w+)`", row)}
        self.assertEqual(set(), calls_of(idl, "im_SIControlSrv") - named)


class Comparison(unittest.TestCase):
    """The comparison itself finds what is wrong."""

    def test_finds_nothing_where_page_and_files_agree(self):
        self.assertEqual([], problems_of("[a](clients/a.py), [it](clients/a.py)", {"a.py"}))

    def test_finds_a_file_that_is_not_linked(self):
        self.assertEqual(["b.py is not linked"], problems_of("[a](clients/a.py)", {"a.py", "b.py"}))

    def test_finds_a_link_to_nowhere(self):
        self.assertEqual(["a.py is linked and does not exist"], problems_of("[a](clients/a.py)", set()))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    ROOT = pathlib.Path(sys.argv[1])
    PAGE = (ROOT / "docs/clients.md").read_text(encoding="utf-8")
    unittest.main(argv=sys.argv[:1])

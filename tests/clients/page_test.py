#!/usr/bin/env python3
"""Compares docs/clients.md with the programs that it shows, with what they print and with the interface definition.

Usage: page_test.py SOURCE_FOLDER             tests
       page_test.py --update SOURCE_FOLDER    puts the programs as they are into the page
"""

import pathlib
import re
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
SHOWN = re.compile(r"^`([\w.]+)`:\n\n```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
FENCE = re.compile(r"^```\w", re.MULTILINE)


def programs(root):
    return {path.name: path.read_text(encoding="utf-8") for path in (root / "docs/clients").iterdir()
            if path.is_file()}


def problems_of(page, files):
    """Where `page` does not show exactly `files`, word for word."""
    shown = {name: text for name, _, text in SHOWN.findall(page)}
    found = [f"{name} is not shown" for name in sorted(files.keys() - shown.keys())]
    found += [f"{name} is shown and does not exist" for name in sorted(shown.keys() - files.keys())]
    found += [f"{name} differs" for name in sorted(files.keys() & shown.keys()) if files[name] != shown[name]]
    if len(FENCE.findall(page)) != len(shown):
        found.append("a fenced block is no file of docs/clients")
    return found


def updated(page, files):
    return SHOWN.sub(lambda match: f"`{match[1]}`:\n\n```{match[2]}\n{files[match[1]]}```", page)


def calls_of(idl, service):
    body = re.search(rf"^service {service} {{\n(.*?)^}}", idl, re.MULTILINE | re.DOTALL).group(1)
    return set(re.findall(r"^  (?:oneway )?[\w.<>, ]+ (\w+)\(", body, re.MULTILINE))


def indented(text):
    return "".join(f"    {line}\n" for line in text.splitlines())


class Page(unittest.TestCase):
    def test_shows_every_program_word_for_word(self):
        self.assertGreaterEqual(len(programs(ROOT)), 5)
        self.assertEqual([], problems_of(PAGE, programs(ROOT)))

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

    PAGE = "Text.\n\n`a.py`:\n\n```python\nprint(1)\n```\n"

    def test_finds_nothing_where_page_and_files_agree(self):
        self.assertEqual([], problems_of(self.PAGE, {"a.py": "print(1)\n"}))

    def test_finds_a_changed_word(self):
        self.assertEqual(["a.py differs"], problems_of(self.PAGE, {"a.py": "print(2)\n"}))

    def test_finds_a_file_that_is_not_shown(self):
        self.assertEqual(["b.py is not shown"], problems_of(self.PAGE, {"a.py": "print(1)\n", "b.py": ""}))

    def test_finds_a_program_that_is_no_file(self):
        self.assertEqual(["a.py is shown and does not exist"], problems_of(self.PAGE, {}))
        self.assertEqual(["a fenced block is no file of docs/clients"],
                         problems_of(self.PAGE + "\n```cpp\nint x;\n```\n", {"a.py": "print(1)\n"}))

    def test_an_update_leaves_nothing_to_find(self):
        files = {"a.py": "print(r'\\1')\n"}
        self.assertEqual([], problems_of(updated(self.PAGE, files), files))


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    ROOT = pathlib.Path(sys.argv[-1])
    PATH = ROOT / "docs/clients.md"
    PAGE = PATH.read_text(encoding="utf-8")
    if sys.argv[1] == "--update":
        PATH.write_text(updated(PAGE, programs(ROOT)), encoding="utf-8")
    else:
        unittest.main(argv=sys.argv[:1])

#!/usr/bin/env python3
"""Compares the man pages with the help of the programs that were built.

Usage: man_pages_test.py TORNEL TORNELCTL PACKAGING_FOLDER
Every option that a help shows must be defined in the page: one of a tornelctl command in the command's own section or in
one of the sections "... OPTIONS". What such a section of a command defines, the command must know. Sections of commands
that the program lacks are not looked at.
"""

import pathlib
import re
import subprocess
import sys
import unittest

OPTION = r"--?[A-Za-z][\w-]*"


def sections_of(page):
    """{heading: text} of a page in scdoc's language."""
    parts = re.split(r"^# (.+)$", page, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def defined_in(section):
    """The options that a section explains: those at the head of a definition."""
    heads = re.findall(r"^(\*-.*)\n\t\S", section, flags=re.MULTILINE)
    return {option for head in heads for option in re.findall(rf"\*({OPTION})\*", head)}


def options_of_daemon(text):
    heads = re.findall(r"^   \[ -.*$", text, flags=re.MULTILINE)
    return {option for head in heads for option in re.findall(rf"\[ ({OPTION}) \]", head)}


def options_of_tool(text):
    heads = re.findall(rf"^  ({OPTION}(?:,{OPTION})*)(?: |$)", text, flags=re.MULTILINE)
    return {option for head in heads for option in head.split(",")}


def commands_of_tool(text):
    listed = re.search(r"^Commands:\n((?:  .*\n)+)", text, flags=re.MULTILINE)
    return re.findall(r"^  ([a-z][a-z-]*)", listed.group(1), flags=re.MULTILINE) if listed else []


def problems_of_daemon(page, text):
    shown, defined = options_of_daemon(text), defined_in(sections_of(page).get("OPTIONS", ""))
    return ([f"tornel.8 does not explain {option}" for option in sorted(shown - defined)] +
            [f"tornel knows no {option}" for option in sorted(defined - shown)])


def problems_of_tool(page, help_of):
    """`help_of(command)` gives a command's help, that of the program for None."""
    sections = sections_of(page)
    shared = set().union(*(defined_in(text) for name, text in sections.items() if name.endswith(" OPTIONS")))
    general = defined_in(sections.get("GENERAL OPTIONS", ""))
    found = [f"tornelctl.1 does not explain {option}"
             for option in sorted(options_of_tool(help_of(None)) - general)]
    for command in commands_of_tool(help_of(None)):
        if command.upper() not in sections:
            found.append(f"tornelctl.1 has no section {command.upper()}")
        shown, own = options_of_tool(help_of(command)), defined_in(sections.get(command.upper(), ""))
        found += [f"tornelctl.1 does not explain {option} of {command}" for option in sorted(shown - own - shared)]
        found += [f"tornelctl {command} knows no {option}" for option in sorted(own - shown)]
    return found


class ManPages(unittest.TestCase):
    def test_the_daemons_page_explains_what_its_help_shows(self):
        text = run(DAEMON, "--help")
        self.assertGreaterEqual(len(options_of_daemon(text)), 12, "the help cannot be read")
        self.assertEqual([], problems_of_daemon(page("tornel.8"), text))

    def test_the_tools_page_explains_what_its_helps_show(self):
        help_of = lambda command: run(TOOL, *([command] if command else []), "--help")
        commands = commands_of_tool(help_of(None))
        self.assertLessEqual({"feed", "output", "extract", "listen"}, set(commands), "the help cannot be read")
        self.assertTrue(all("--help" in options_of_tool(help_of(command)) for command in commands))
        self.assertEqual([], problems_of_tool(page("tornelctl.1"), help_of))

    def test_the_readers_of_files_are_told_where_the_files_are(self):
        self.assertLessEqual({"PORTS", "ENVIRONMENT", "FILES", "EXIT STATUS"}, set(sections_of(page("tornel.8"))))


class Comparison(unittest.TestCase):
    """The comparison itself finds what is wrong."""

    PAGE = "# GENERAL OPTIONS\n\n*-h*, *--help*\n\tHelp.\n\n# FEED\n\nLike *--loop*.\n\n*--fast* _N_\n\tSpeed.\n"
    FEED = "Options:\n  -h,--help     Help\n  --fast INT    Speed\n"
    TOOL = "Options:\n  -h,--help     Help\n\nCommands:\n  feed          Feed\n\nExit"

    def problems(self, page_text, feed):
        return problems_of_tool(page_text, lambda command: feed if command else self.TOOL)

    def test_finds_nothing_where_page_and_help_agree(self):
        self.assertEqual([], self.problems(self.PAGE, self.FEED))

    def test_finds_an_option_that_is_named_but_not_explained(self):
        self.assertEqual(["tornelctl.1 does not explain --loop of feed"],
                         self.problems(self.PAGE, self.FEED + "  --loop        Again\n"))

    def test_finds_an_option_that_the_program_does_not_know(self):
        self.assertEqual(["tornelctl feed knows no --fast"], self.problems(self.PAGE, "  -h,--help     Help\n"))

    def test_finds_a_command_without_a_section(self):
        self.assertIn("tornelctl.1 has no section FEED", self.problems(self.PAGE.replace("# FEED", "# EAT"), self.FEED))

    def test_finds_what_the_daemons_page_lacks(self):
        self.assertEqual(["tornel.8 does not explain --set"],
                         problems_of_daemon("# OPTIONS\n\n*-s* _N_\n\tSet.\n", "   [ -s ] [ --set ] (type)"))


def page(name):
    return (PACKAGING / f"{name}.scd").read_text(encoding="utf-8")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=30).stdout


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    DAEMON, TOOL, PACKAGING = *sys.argv[1:3], pathlib.Path(sys.argv[3])
    unittest.main(argv=sys.argv[:1])

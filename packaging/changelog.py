#!/usr/bin/env python3
"""Says what a packager asks of CHANGELOG.md.

Usage: changelog.py --debian | --timestamp | --version

--debian     all releases as a Debian changelog, by the maintainer of debian/control
--timestamp  the date of the newest release, in seconds since 1970
--version    the newest release
A release is a line "## VERSION - YYYY-MM-DD" with a list below it, in sections that begin with "### ".
"""

import datetime
import email.utils
import pathlib
import re
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
RELEASE = re.compile(r"## (\d[\d.]*) - (\d{4}-\d\d-\d\d)")


class Fault(Exception):
    """What is wrong with the page."""


class Release:
    def __init__(self, version, day):
        self.version = version
        try:
            date = datetime.date.fromisoformat(day)
        except ValueError as fault:
            raise Fault(f"{version}: there is no day {day}") from fault
        self.time = datetime.datetime.combine(date, datetime.time(12), datetime.timezone.utc)
        self.items = []

    def add(self, line):
        if line.startswith("### "):
            self.items.append(f"[ {line[4:]} ]")
        elif line.startswith("- "):
            self.items.append(f"* {line[2:]}")
        elif line.startswith("  ") and self.items:
            self.items[-1] += " " + line.strip()
        elif line:
            raise Fault(f"{self.version}: neither section nor item: {line}")

    def debian(self, maintainer):
        lines = [textwrap.fill(item, 78, initial_indent="  ", subsequent_indent="    ", break_long_words=False,
                               break_on_hyphens=False) for item in self.items]
        return "\n".join([f"tornel ({self.version}) unstable; urgency=medium", "", *lines, "",
                          f" -- {maintainer}  {email.utils.format_datetime(self.time)}", ""])


def releases_in(page):
    """The releases, in the order of the page."""
    found, current = [], None
    for line in page.splitlines():
        if line.startswith("## "):
            heading = RELEASE.fullmatch(line)
            if heading is None and line != "## Unreleased":
                raise Fault(f"neither \"## VERSION - YYYY-MM-DD\" nor \"## Unreleased\": {line}")
            current = Release(*heading.groups()) if heading else None
            found += [current] if heading else []
        elif current is not None:
            current.add(line)
    if not found:
        raise Fault("no release")
    for release in found:
        if not any(item.startswith("* ") for item in release.items):
            raise Fault(f"{release.version}: nothing changed")
    return found


def maintainer_in(control):
    return re.search(r"^Maintainer: (.*)$", control, re.MULTILINE).group(1)


def main():
    if len(sys.argv) != 2 or sys.argv[1] not in ("--debian", "--timestamp", "--version"):
        sys.exit(__doc__)
    page = ROOT / "CHANGELOG.md"
    try:
        releases = releases_in(page.read_text(encoding="utf-8"))
    except Fault as fault:
        sys.exit(f"{page}: {fault}")
    if sys.argv[1] == "--timestamp":
        print(int(releases[0].time.timestamp()))
    elif sys.argv[1] == "--version":
        print(releases[0].version)
    else:
        maintainer = maintainer_in((ROOT / "debian/control").read_text(encoding="utf-8"))
        print("\n".join(release.debian(maintainer) for release in releases), end="")


if __name__ == "__main__":
    main()

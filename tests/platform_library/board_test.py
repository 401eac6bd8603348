#!/usr/bin/env python3
"""Checks a daemon that was linked with board.cpp in the host platform's place.

Usage: board_test.py [--static] TORNEL
With --static it must do without shared libraries.
It is asked for no output: its files would lie in /etc/tevra/conf, a device's configuration root.
"""

import os
import subprocess
import sys
import tempfile
import time
import unittest

# What would mislead a daemon that still had the host platform.
ENVIRONMENT = {**os.environ, "TEVRA_MODULE_TYPE": "5", "TEVRA_MODULE_SLOT": "9", "TEVRA_CONF_ROOT": "/nonexistent"}
PATIENCE = 20


def started_lines(*arguments, last):
    """What the daemon says until it says `last`; the process is ended."""
    with tempfile.TemporaryFile("w+") as log:
        with subprocess.Popen([DAEMON, *arguments], stderr=log, env=ENVIRONMENT) as daemon:
            deadline = time.monotonic() + PATIENCE
            text = ""
            while last not in text and daemon.poll() is None and time.monotonic() < deadline:
                time.sleep(0.05)
                log.seek(0)
                text = log.read()
            daemon.kill()
    return text.splitlines()


class Board(unittest.TestCase):
    def test_prints_the_version_through_the_board(self):
        ended = subprocess.run([DAEMON, "--version"], capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual((0, "0.9.1\n"), (ended.returncode, ended.stdout))

    def test_takes_log_module_and_watchdog_from_the_board(self):
        lines = started_lines("--set", "1", "--level", "4", last="board kick")
        self.assertEqual(["board 4 [MPTS1] Tornel listening on port [9225]",
                          "board 4 [MPTS1] notifying to port [9257]"],
                         [line for line in lines if line.startswith("board 4 [MPTS1]")])
        self.assertIn("board 4 IN mod slot [4] PID poll [1300/1699]", lines)
        self.assertEqual(["board started", "board 4 Tornel 1 started ...", "board kick 7"], lines[-3:])

    @unittest.skipIf(os.path.exists("/etc/tevra/conf"), "this machine has a device's configuration root")
    def test_looks_for_its_files_where_a_device_has_them(self):
        lines = started_lines("--set", "1", last="board kick")
        self.assertIn("board 3 [MPTS1] Error reading file: /etc/tevra/conf/Tornel/TableStoreFile1", lines)

    def test_has_the_boards_number_of_multiplexes(self):
        ended = subprocess.run([DAEMON, "--set", "2"], capture_output=True, text=True, env=ENVIRONMENT,
                               timeout=PATIENCE)
        self.assertEqual((0, "board 3 Tornel: MPTSid [2] not supported.\n"), (ended.returncode, ended.stderr))

    def test_needs_no_library_that_it_should_not(self):
        headers = subprocess.run(["objdump", "-p", DAEMON], check=True, capture_output=True, text=True).stdout
        needed = [line.split()[1] for line in headers.splitlines() if "NEEDED" in line]
        if STATIC:
            self.assertEqual([], needed)
        else:
            self.assertTrue(any(name.startswith("libthrift") for name in needed), needed)
            self.assertFalse(any(name.startswith("libsystemd") for name in needed), needed)


if __name__ == "__main__":
    STATIC = sys.argv[1:2] == ["--static"]
    if len(sys.argv) != 2 + STATIC:
        sys.exit(__doc__)
    DAEMON = sys.argv[-1]
    unittest.main(argv=sys.argv[:1])

#!/usr/bin/env python3
"""What the daemon takes on 32-bit ARM: size, memory and instructions, found out under emulation.

Usage: bench/armhf.py   after scripts/armhf; needs ports 9224 and 9256.

Memory is that of the emulated program alone: the emulator puts the program's whole address space at GUEST_BASE, and the
kernel tells how much of each mapping there is resident, code of shared libraries included, as it would on a board.
"""

import pathlib
import re
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SYSROOT = ROOT / "build/armhf-sysroot/root"
DAEMON = ROOT / "build/armhf/bin/tornel"
STATIC = ROOT / "build/armhf-static"
CLIENT = ROOT / "build/armhf/bin/tornelctl"
BENCH = ROOT / "build/armhf/bin/tornel_bench"
EMULATOR = ["qemu-arm", "-L", SYSROOT]
GUEST_BASE = 1 << 32
GUEST_END = 2 << 32
PORT = 9224
REQUESTS = 200
PATIENCE = 60  # seconds


def run(program, *arguments):
    return subprocess.run([*EMULATOR, program, *arguments], check=True, capture_output=True, text=True).stdout


class Daemon:
    """The emulated daemon while the context lasts."""

    def __init__(self, *options):
        self.options = options
        self.root = tempfile.TemporaryDirectory()
        self.process = None

    def __enter__(self):
        self.process = subprocess.Popen([*EMULATOR, *self.options, "-E", f"TEVRA_CONF_ROOT={self.root.name}", DAEMON,
                                         "--level", "3"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            try:
                socket.create_connection(("127.0.0.1", PORT), timeout=1).close()
                return self
            except OSError:
                if self.process.poll() is not None:
                    break
                time.sleep(0.05)
        raise RuntimeError("the daemon does not listen: is its port taken?")

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.root.cleanup()

    def resident(self):
        """Resident kilobytes of the emulated program."""
        total, within = 0, False
        for line in pathlib.Path(f"/proc/{self.process.pid}/smaps").read_text(encoding="utf-8").splitlines():
            mapping = re.match(r"([0-9a-f]+)-[0-9a-f]+ ", line)
            if mapping:
                within = GUEST_BASE <= int(mapping[1], 16) < GUEST_END
            elif within and line.startswith("Rss:"):
                total += int(line.split()[1])
        return total


def sizes():
    print(f"daemon, stripped: {stripped_size(DAEMON):,} bytes")
    libraries = subprocess.run([*EMULATOR, "-E", "LD_TRACE_LOADED_OBJECTS=1", DAEMON], check=True,
                               capture_output=True, text=True).stdout
    files = [SYSROOT / path.lstrip("/") for path in re.findall(r"(/\S+) \(", libraries)]
    for file in sorted(files, key=lambda file: -file.stat().st_size):
        print(f"  {file.name}: {file.stat().st_size:,} bytes")
    print(f"its {len(files)} shared libraries: {sum(file.stat().st_size for file in files):,} bytes")


def static_size():
    """Links the daemon with archives alone, and with the tests' stand-in for a board's platform library."""
    STATIC.mkdir(parents=True, exist_ok=True)
    board, archive = STATIC / "board.o", STATIC / "libboard.a"
    quietly("arm-linux-gnueabihf-g++", "-std=c++17", "-Os", "-I", ROOT, "-c", ROOT / "tests/platform_library/board.cpp",
            "-o", board)
    quietly("arm-linux-gnueabihf-ar", "rcs", archive, board)
    quietly("cmake", "--preset", "armhf", "-B", STATIC, "-DTORNEL_STATIC=ON",
            f"-DTEVRA_PLATFORM_LIBRARY={archive}")
    quietly("cmake", "--build", STATIC, "--target", "tornel")
    print(f"daemon, linked statically, stripped: {stripped_size(STATIC / 'bin/tornel'):,} bytes")


def quietly(*command):
    done = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(done.stdout)


def stripped_size(program):
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder) / "tornel"
        subprocess.run(["arm-linux-gnueabihf-strip", "-o", stripped, program], check=True)
        return stripped.stat().st_size


def memory():
    with Daemon("-B", hex(GUEST_BASE)) as daemon:
        print(f"resident at start: {daemon.resident():,} kB")
        run(CLIENT, "feed", ROOT / "samples/sample.ts")
        run(CLIENT, "output", "--service", "101", "--audio", "eng")
        print(f"resident with the sample: {daemon.resident():,} kB")
    with Daemon("-B", hex(GUEST_BASE)) as daemon:
        for what in ("tot", "9600", "tot"):
            run(BENCH, "--send", what)
        print(f"resident with 9,600 events: {daemon.resident():,} kB")


def recorded_request():
    """The frame with which the client asks for an output."""
    with socket.create_server(("127.0.0.1", 0)) as server:
        asking = threading.Thread(target=subprocess.run, daemon=True, kwargs={
            "args": [*EMULATOR, CLIENT, "output", "--service", "101", "--audio", "eng",
                     "--port", str(server.getsockname()[1])],
            "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL})
        asking.start()
        connection = server.accept()[0]
        with connection:
            frame = receive(connection)
        asking.join(PATIENCE)
    if b"getSrvOutputData" not in frame:
        raise RuntimeError("the client asks for something else first")
    return frame


def receive(connection):
    head = connection.recv(4, socket.MSG_WAITALL)
    return head + connection.recv(struct.unpack(">I", head)[0], socket.MSG_WAITALL)


def instructions():
    request = recorded_request()
    with tempfile.TemporaryDirectory() as folder:
        plugin, count = pathlib.Path(folder) / "counter.so", pathlib.Path(folder) / "count"
        subprocess.run(["gcc", "-O2", "-shared", "-fPIC", "-o", plugin, ROOT / "bench/instruction_counter.c"],
                       check=True)
        with Daemon("-plugin", f"{plugin},out={count}"):
            print(f"instructions to start: {struct.unpack('=Q', count.read_bytes())[0]:,}")
            run(CLIENT, "feed", ROOT / "samples/sample.ts")
            with socket.create_connection(("127.0.0.1", PORT)) as connection:
                figures = [ask(connection, request, count) for _ in range(3)]
    print(f"instructions of one getSrvOutputData: {figures[-1]:,} (first {REQUESTS}: {figures[0]:,})")


def ask(connection, request, count):
    """Instructions per request."""
    before = struct.unpack("=Q", count.read_bytes())[0]
    for _ in range(REQUESTS):
        connection.sendall(request)
        if len(receive(connection)) < 500:
            raise RuntimeError("no output came")
    return (struct.unpack("=Q", count.read_bytes())[0] - before) // REQUESTS


def main():
    for needed in (DAEMON, CLIENT):
        if not needed.exists():
            sys.exit(f"{needed} is missing: run scripts/armhf first")
    quietly("cmake", "--build", BENCH.parent.parent, "--target", "tornel_bench")
    sizes()
    static_size()
    memory()
    instructions()


if __name__ == "__main__":
    main()

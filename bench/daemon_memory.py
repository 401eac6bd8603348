"""The resident memory of the real daemon while it takes calls."""

import pathlib
import socket
import subprocess
import tempfile
import time

PORT = 9224
PATIENCE = 20  # seconds


class DaemonMemory:
    """A daemon of the first MPTS in a configuration root of its own, while the context lasts."""

    def __init__(self, folder):
        self.folder = folder
        self.root = tempfile.TemporaryDirectory()
        self.process = None

    def __enter__(self):
        self.process = subprocess.Popen([self.folder / "tornel", "--level", "3"],
                                        env={"TEVRA_CONF_ROOT": self.root.name},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._wait_until_it_listens()
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.root.cleanup()

    def take(self, what):
        """By how many kB the memory grows: at its peak, and in the end. `what`: a schedule of so many events, or
        "requests" for outputs of 100 services, each with a save; of those the code that they bring in is not counted."""
        self._send("services" if what == "requests" else "tot")
        key = "RssAnon" if what == "requests" else "VmRSS"
        before, resident = self._status(key), self._status("VmRSS")
        (self._proc() / "clear_refs").write_text("5", encoding="ascii")  # the peak starts anew
        self._send(what)
        self._send("tot")  # served once the last call has been cleaned up
        return self._status("VmHWM") - resident, self._status(key) - before

    def _send(self, what):
        subprocess.run([self.folder / "tornel_bench", "--send", what], check=True)

    def _proc(self):
        return pathlib.Path("/proc") / str(self.process.pid)

    def _status(self, key):
        for line in (self._proc() / "status").read_text(encoding="ascii").splitlines():
            name, value = line.split(":", 1)
            if name == key:
                return int(value.split()[0])
        raise RuntimeError(f"the kernel does not tell {key}")

    def _wait_until_it_listens(self):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            if self.process.poll() is not None:
                raise RuntimeError(f"the daemon ended with {self.process.returncode}: is its port taken?")
            try:
                socket.create_connection(("127.0.0.1", PORT), timeout=1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("the daemon does not listen")

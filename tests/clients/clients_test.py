#!/usr/bin/env python3
"""Runs the clients of docs/clients, in both languages, with the daemon, and compares what they say.

Usage: clients_test.py TORNEL TORNELCTL PYTHON_PROGRAMS GENERATED_PYTHON CPP_PROGRAMS
PYTHON_PROGRAMS and CPP_PROGRAMS are the folders with client and main_task, GENERATED_PYTHON is what Thrift's compiler
made. TORNEL_EMULATOR in the environment is the command, if any, that the C++ programs are started by. Ports 9224, 9225,
9256 and 9257 must be free.
"""

import contextlib
import json
import os
import pathlib
import shlex
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PATIENCE = 30
LANGUAGES = ("python", "cpp")
EMULATOR = shlex.split(os.environ.get("TORNEL_EMULATOR", ""))


def eventually(condition):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("nothing came of it in time")
        time.sleep(0.02)


def command(language, program, *arguments):
    if language == "python":
        return [sys.executable, str(PYTHON / f"{program}.py"), *arguments]
    return [*EMULATOR, str(CPP / program), *arguments]


def environment():
    return {**os.environ, "PYTHONPATH": str(GENERATED)}


def listens(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


@contextlib.contextmanager
def process(arguments, **options):
    running = subprocess.Popen(arguments, **options)
    try:
        yield running
    finally:
        running.kill()
        running.wait()


@contextlib.contextmanager
def daemon(root, mpts=0):
    """From its last line of the start to kill -9."""
    with open(pathlib.Path(root, "log"), "w+", encoding="utf-8") as log, \
            process([TORNEL, "--console", "--set", str(mpts)], stderr=log,
                    env={**os.environ, "TEVRA_CONF_ROOT": str(root), "TEVRA_MODULE_TYPE": "5"}):
        path = pathlib.Path(log.name)
        eventually(lambda: f"Tornel {mpts} started ..." in path.read_text(encoding="utf-8"))
        yield


@contextlib.contextmanager
def main_task(language, mpts=0):
    """Yields a function that waits for a number of lines and gives all there are."""
    with tempfile.NamedTemporaryFile("w+", encoding="utf-8") as said:
        with process(command(language, "main_task", str(mpts)), stdout=said, env=environment()):
            eventually(lambda: listens(9256 + mpts))

            def lines(count):
                path = pathlib.Path(said.name)
                eventually(lambda: len(path.read_text(encoding="utf-8").splitlines()) >= count)
                return path.read_text(encoding="utf-8").splitlines()
            yield lines


def client(language, *arguments):
    return subprocess.run(command(language, "client", *map(str, arguments)), capture_output=True, text=True,
                          timeout=PATIENCE, env=environment())


def failure(ended):
    return ended.returncode, ended.stdout, ended.stderr


def expected(name):
    return (HERE / f"expected_{name}.txt").read_text(encoding="utf-8")


def json_output():
    """What tornelctl says of the output that the clients ask for."""
    ended = subprocess.run([TORNELCTL, "output", "--json", "--service", "101", "--output-sid", "1201", "--name", "Uno é",
                            "--audio", "eng", "--transport-stream-id", "7"],
                           capture_output=True, text=True, check=True, timeout=PATIENCE)
    return json.loads(ended.stdout)["1201"]


def text_of(answer):
    """`answer`, as tornelctl prints it, in the clients' words."""
    tables = answer["outputTables"]
    lines = [f"PID {item['inputPid']} -> {item['outputPid']}, attributes 0x{item['attributes']:02X}"
             for item in answer["pidItems"]]
    lines += [f"{name.upper()} version {tables[name]['version']}, {len(tables[name + 'Packets'])} packet(s)"
              for name in ("pat", "sdt", "pmt")]
    return "".join(f"{line}\n" for line in lines)


def packets_of(answer):
    return bytes.fromhex("".join(packet for name in ("pat", "sdt", "pmt")
                                 for packet in answer["outputTables"][name + "Packets"]))


class WithTheDaemon(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tornel-clients-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def root(self, name):
        path = self.folder / name
        path.mkdir()
        return path

    def everything(self, language, mpts=0):
        """What both programs of a language say, with a daemon that knows nothing, and the packets."""
        packets = self.folder / f"{language}.ts"
        with main_task(language, mpts) as lines, daemon(self.root(language), mpts):
            ended = client(language, packets, mpts)
            notified = lines(1 + len(expected("notifications").splitlines()))
        self.assertEqual((0, ""), (ended.returncode, ended.stderr))
        return ended.stdout, notified, packets.read_bytes()

    def test_both_languages_print_and_write_the_same(self):
        python, cpp = (self.everything(language) for language in LANGUAGES)
        self.assertEqual(python, cpp)
        self.assertEqual(expected("output"), python[0])
        self.assertEqual("configuration requested\n" + expected("notifications"),
                         "".join(f"{line}\n" for line in python[1]))
        self.assertEqual(3 * 188, len(python[2]))

    def test_another_multiplex_has_ports_and_pids_of_its_own(self):
        python, cpp = (self.everything(language, mpts=1) for language in LANGUAGES)
        self.assertEqual(python, cpp)
        self.assertTrue(python[0].startswith("PID 256 -> 301, attributes 0x02\n"), python[0])

    def test_they_say_what_tornelctl_says(self):
        packets = self.folder / "packets.ts"
        for language in LANGUAGES:
            with self.subTest(language), daemon(self.root(language)):
                ended = client(language, packets)
                answer = json_output()
                self.assertEqual(text_of(answer), ended.stdout)
                self.assertEqual(packets_of(answer), packets.read_bytes())

    def test_one_goes_on_where_the_other_left_off_before_a_restart(self):
        root = self.root("both")
        said = []
        for number, language in enumerate(LANGUAGES):
            with daemon(root):
                said.append(client(language, self.folder / f"{number}.ts").stdout)
        self.assertEqual([expected("output")] * 2, said)
        self.assertEqual((self.folder / "0.ts").read_bytes(), (self.folder / "1.ts").read_bytes())

    def test_a_host_may_be_named(self):
        with daemon(self.root("host")):
            for language in LANGUAGES:
                self.assertEqual(0, client(language, self.folder / "packets.ts", 0, "localhost").returncode)

    def test_a_file_that_cannot_be_written_is_told(self):
        path = self.folder / "missing" / "packets.ts"
        with daemon(self.root("unwritable")):
            for language in LANGUAGES:
                self.assertEqual(
                    (1, expected("output"), f"client: cannot write {path}: give a file that can be written\n"),
                    failure(client(language, path)))


class WithoutTheDaemon(unittest.TestCase):
    def assert_failure(self, message, *arguments):
        for language in LANGUAGES:
            with self.subTest(language):
                self.assertEqual((1, "", f"client: {message}\n"),
                                 failure(client(language, "/nonexistent/packets.ts", *arguments)))

    def test_it_is_missed_by_name(self):
        self.assert_failure("no daemon at 127.0.0.1:9225: start it with tornel --set 1", 1)

    def test_an_unknown_call_is_told(self):
        with thrift_server("im_SINotifySrv"):
            self.assert_failure("the daemon refused a call: Unknown function setPAT")

    def test_an_answer_without_the_output_is_told(self):
        with thrift_server("im_SIControlSrv"):
            self.assert_failure("the daemon has no PMT of service 101")

    def test_a_connection_that_is_closed_is_told(self):
        with closing_server():
            self.assert_failure("the daemon at 127.0.0.1:9224 did not answer a call: its log says why, "
                                "or another client keeps it")

    def test_wrong_usage_ends_with_2(self):
        for language in LANGUAGES:
            for arguments in ((), ("a.ts", "4"), ("a.ts", "x"), ("a.ts", "0", "localhost", "more")):
                with self.subTest(language, arguments=arguments):
                    ended = client(language, *arguments)
                    self.assertEqual((2, ""), (ended.returncode, ended.stdout))
                    self.assertIn("usage: client ", ended.stderr)

    def test_main_task_says_that_its_port_is_taken(self):
        with main_task("python"):
            for language in LANGUAGES:
                ended = subprocess.run(command(language, "main_task"), capture_output=True, text=True,
                                       timeout=PATIENCE, env=environment())
                self.assertEqual((1, ""), (ended.returncode, ended.stdout))
                self.assertRegex(ended.stderr, r"^main_task: cannot listen on 127\.0\.0\.1:9256 \(.*\): "
                                               r"end the program that does\n$")


SERVER = """
import sys
from thrift.protocol.TBinaryProtocol import TBinaryProtocolFactory
from thrift.server.TServer import TSimpleServer
from thrift.transport.TSocket import TServerSocket
from thrift.transport.TTransport import TFramedTransportFactory
from tevra.thrift.in_module import im_SIControlSrv, im_SINotifySrv

class Control(im_SIControlSrv.Iface):
    def setNIT(self, nit):
        return True

    def getSrvOutputData(self, request):
        return {}

processors = {"im_SIControlSrv": im_SIControlSrv.Processor(Control()),
              "im_SINotifySrv": im_SINotifySrv.Processor(im_SINotifySrv.Iface())}
TSimpleServer(processors[sys.argv[1]], TServerSocket("127.0.0.1", 9224), TFramedTransportFactory(),
              TBinaryProtocolFactory()).serve()
"""


@contextlib.contextmanager
def thrift_server(service):
    """Serves `service` where the daemon would be; as im_SIControlSrv it knows no service of a stream."""
    with process([sys.executable, "-c", SERVER, service], env=environment()):
        eventually(lambda: listens(9224))
        yield


@contextlib.contextmanager
def closing_server():
    """Takes a call and hangs up."""
    def serve():
        with contextlib.suppress(OSError):
            while True:
                connection, _ = listening.accept()
                with connection:
                    connection.recv(4096)

    with socket.create_server(("127.0.0.1", 9224)) as listening:
        thread = threading.Thread(target=serve)
        thread.start()
        try:
            yield
        finally:
            listening.shutdown(socket.SHUT_RDWR)
            thread.join()


if __name__ == "__main__":
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    TORNEL, TORNELCTL, PYTHON, GENERATED, CPP = (pathlib.Path(argument) for argument in sys.argv[1:])
    unittest.main(argv=sys.argv[:1])

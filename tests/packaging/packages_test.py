#!/usr/bin/env python3
"""Installs the packages into a throw-away root, runs them there and removes them.

Usage: packages_test.py FOLDER     (as root, or with fakeroot at hand)
FOLDER holds the packages, those of the debug symbols among them.
The root has the machine's list of installed packages, so that dependencies are checked for what they are; libraries and
compiler are the machine's. Ports 9224, 9225 and 9256 must be free. Exit status 77: cannot run here, and why.
"""

import os
import pathlib
import re
import shlex
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent.parent
CANNOT_RUN = 77
PATIENCE = 30
NAMES = ("tornel", "tornel-tools", "tornel-dev")
STATE = "var/lib/tornel"
DEFAULTS = "etc/default/tornel"
UNIT = "usr/lib/systemd/system/tornel@.service"


class ThrowAwayRoot:
    """A directory in which dpkg believes that the machine's packages are installed, ours excepted."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="tornel-root-"))
        admin = self.path / "var/lib/dpkg"
        for folder in ("info", "updates", "triggers"):
            (admin / folder).mkdir(parents=True)
        stanzas = pathlib.Path("/var/lib/dpkg/status").read_text(encoding="utf-8").split("\n\n")
        ours = re.compile(r"^Package: tornel(-tools|-dev)?$", re.MULTILINE)
        kept = [stanza for stanza in stanzas if stanza.strip() and not ours.search(stanza)]
        # What the machine's packages still want to trigger is not this root's business.
        kept = [re.sub(r"^Triggers-(Pending|Awaited):.*\n", "", stanza, flags=re.MULTILINE) for stanza in kept]
        (admin / "status").write_text("\n\n".join(kept) + "\n", encoding="utf-8")

    def dpkg(self, *arguments, environment=None):
        command = ["dpkg", f"--root={self.path}", "--force-script-chrootless", f"--log={os.devnull}", *arguments]
        ended = subprocess.run(command, capture_output=True, text=True, timeout=300, env=environment)
        # dpkg misses the file lists of the machine's packages, one line each.
        said = "\n".join(line for line in ended.stderr.splitlines() if "files list file for package" not in line)
        if ended.returncode != 0:
            raise AssertionError(f"{shlex.join(command)}:\n{said}")
        return ended.stdout + said

    def files(self):
        """All but directories and dpkg's own, relative to the root."""
        found = (path.relative_to(self.path).as_posix() for path in self.path.rglob("*")
                 if path.is_symlink() or not path.is_dir())
        return {name for name in found if not name.startswith("var/lib/dpkg/")}

    def remove(self):
        shutil.rmtree(self.path)


class Unit:
    """The parts of the installed unit file that say how to start an instance."""

    def __init__(self, root):
        text = (root / UNIT).read_text(encoding="utf-8")
        self.settings = {}
        for key, value in re.findall(r"^(\w+)=(.*)$", text, flags=re.MULTILINE):
            self.settings.setdefault(key, []).append(value)
        self.root = root

    def environment(self, state, notify_socket):
        """As the service manager makes it: Environment=, then EnvironmentFile=, then its own."""
        values = dict(item.split("=", 1) for item in shlex.split(" ".join(self.settings["Environment"])))
        (defaults,) = self.settings["EnvironmentFile"]
        text = (self.root / defaults.lstrip("-/")).read_text(encoding="utf-8")
        for line in shlex.split(text, comments=True):
            values.update([line.split("=", 1)])
        if values["TEVRA_CONF_ROOT"] != f"/var/lib/{self.settings['StateDirectory'][0]}":
            raise AssertionError("the configuration root is not the one directory that the service may write")
        return {**os.environ, **values, "TEVRA_CONF_ROOT": str(state), "NOTIFY_SOCKET": str(notify_socket)}

    def command(self, index, environment):
        (line,) = self.settings["ExecStart"]
        words = shlex.split(line.replace("%i", str(index)).replace("$TORNEL_OPTIONS", environment["TORNEL_OPTIONS"]))
        return [str(self.root / words[0].lstrip("/")), *words[1:]]


def receive(notifications):
    try:
        return notifications.recv(256).decode()
    except socket.timeout:
        return "nothing"


def package_file(name):
    (found,) = FOLDER.glob(f"{name}_*.deb")
    return found


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def packets_of(path):
    data = path.read_bytes()
    return [data[start:start + 188] for start in range(0, len(data), 188)]


def programmes_in(packets):
    """The service ids in the first PAT (ISO/IEC 13818-1 clause 2.4.4.3)."""
    for packet in packets:
        if (packet[1] & 0x1F, packet[2]) == (0, 0) and packet[1] & 0x40:
            section = packet[5 + packet[4]:]
            length = (section[1] & 0x0F) << 8 | section[2]
            entries = section[8:3 + length - 4]
            return {entries[at] << 8 | entries[at + 1] for at in range(0, len(entries), 4)}
    return set()


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = ThrowAwayRoot()
        cls.addClassCleanup(cls.root.remove)
        cls.said = cls.root.dpkg("--install", *map(package_file, NAMES))

    def installed(self, name):
        return self.root.path / name

    def test_1_install_without_a_complaint(self):
        self.assertNotRegex(self.said, r"(?i)warning|error|depend")
        states = subprocess.run(["dpkg-query", f"--admindir={self.root.path}/var/lib/dpkg", "--show", "--showformat",
                                 "${db:Status-Status} ", *NAMES], check=True, capture_output=True, text=True).stdout
        self.assertEqual(["installed"] * 3, states.split())

    def test_2_hold_everything_and_no_program_with_symbols(self):
        files = self.root.files()
        wanted = {"usr/sbin/tornel", "usr/bin/tornelctl", UNIT, DEFAULTS,
                  "usr/share/tornel/sample.ts", "usr/share/bash-completion/completions/tornelctl",
                  "usr/share/man/man8/tornel.8.gz", "usr/share/man/man1/tornelctl.1.gz",
                  "usr/share/doc/tornel/operating.md", "usr/share/tornel/idl/in_module.thrift",
                  "usr/include/tornel/platform/module_utils.h"}
        wanted |= {f"usr/share/doc/tornel-dev/examples/clients/{name}"
                   for name in ("CMakeLists.txt", "client.cpp", "client.py", "main_task.cpp", "main_task.py")}
        wanted |= {f"usr/share/doc/{name}/{text}" for name in NAMES for text in ("copyright", "changelog.gz")}
        self.assertEqual(set(), wanted - files)
        self.assertEqual({"etc", "usr"}, {name.split("/")[0] for name in files})
        for program in ("usr/sbin/tornel", "usr/bin/tornelctl"):
            sections = subprocess.run(["objdump", "-h", self.installed(program)], check=True, capture_output=True,
                                      text=True).stdout
            self.assertNotIn(".debug_info", sections)

    def test_3_are_of_the_programs_version(self):
        version = subprocess.run([self.installed("usr/sbin/tornel"), "--version"], check=True, capture_output=True,
                                 text=True).stdout.strip()
        for package in map(package_file, NAMES):
            field = subprocess.run(["dpkg-deb", "--field", package, "Version"], check=True, capture_output=True,
                                   text=True).stdout
            self.assertEqual(version, field.strip())

    def test_4_run_the_demos_job(self):
        state = self.installed(STATE)
        state.mkdir(parents=True)  # as StateDirectory= does
        with tempfile.TemporaryDirectory() as folder, \
                socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notifications:
            address, result = pathlib.Path(folder, "notify"), pathlib.Path(folder, "service.ts")
            notifications.bind(str(address))
            notifications.settimeout(PATIENCE)
            unit = Unit(self.root.path)
            environment = unit.environment(state, address)
            with subprocess.Popen(unit.command(0, environment), env=environment) as daemon:
                try:
                    self.assertEqual("READY=1", receive(notifications))
                    self.assertEqual("WATCHDOG=1", receive(notifications))
                    self.extract(result)
                    self.assertIsNone(daemon.poll())
                finally:
                    daemon.kill()
            packets = packets_of(result)
            self.assertGreater(len(packets), 1000)
            self.assertTrue(all(len(packet) == 188 and packet[0] == 0x47 for packet in packets))
            self.assertEqual({1201}, programmes_in(packets))
        for name in ("PIDRemap0", "Tornel/TableStoreFile0", "Tornel/EITTableVersionStoreFile0"):
            self.assertGreater((state / name).stat().st_size, 0, name)

    def extract(self, result):
        ended = subprocess.run([self.installed("usr/bin/tornelctl"), "extract",
                                self.installed("usr/share/tornel/sample.ts"), "--service", "101", "--output-sid", "1201",
                                "--name", "Uno HD", "--audio", "eng", "-o", result, "--daemon"],
                               capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual((0, 1), (ended.returncode, ended.stderr.count("\n")), ended.stderr)
        self.assertIn("Uno HD", ended.stdout)

    def test_5_end_with_status_0_where_the_module_has_no_such_multiplex(self):
        unit = Unit(self.root.path)
        self.assertEqual(["0"], unit.settings["RestartPreventExitStatus"])
        with tempfile.TemporaryDirectory() as folder, \
                socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notifications:
            address = pathlib.Path(folder, "notify")
            notifications.bind(str(address))
            notifications.settimeout(0.2)
            environment = {**unit.environment(folder, address), "TEVRA_MODULE_TYPE": "6"}
            ended = subprocess.run(unit.command(3, environment), env=environment, timeout=PATIENCE)
            self.assertEqual((0, "nothing"), (ended.returncode, receive(notifications)))

    def test_6_link_a_daemon_with_a_boards_library(self):
        prefix = self.installed("usr")
        (configuration,) = prefix.glob("lib/**/pkgconfig")
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", f"--define-variable=prefix={prefix}", "tornel"],
                               check=True, capture_output=True, text=True,
                               env={**os.environ, "PKG_CONFIG_PATH": str(configuration)}).stdout
        examples = prefix / "share/doc/tornel-dev/examples"
        with tempfile.TemporaryDirectory() as folder:
            program, board = pathlib.Path(folder, "tornel"), pathlib.Path(folder, "board.o")
            compiler = [os.environ.get("CXX", "c++"), "-std=c++17"]
            subprocess.run([*compiler, f"-I{prefix}/include/tornel", "-c", examples / "board.cpp", "-o", board],
                           check=True)
            subprocess.run([*compiler, examples / "main.cpp", *shlex.split(flags), board, "-ltornel_platform_device",
                            "-o", program], check=True)
            subprocess.run([HERE.parent / "platform_library/board_test.py", program], check=True)

    def test_6_link_a_daemon_with_cmake(self):
        with tempfile.TemporaryDirectory() as folder:
            build = ["cmake", "-G", "Ninja", "-S", self.installed("usr/share/doc/tornel-dev/examples"), "-B", folder]
            subprocess.run([*build, f"-DCMAKE_PREFIX_PATH={self.installed('usr')}"], check=True, capture_output=True)
            # Nothing of the folder that the packages were built in.
            targets = next(self.installed("usr").glob("lib/**/tornel-targets.cmake")).read_text(encoding="utf-8")
            self.assertNotIn(str(SOURCE), targets)
            subprocess.run(["cmake", "--build", folder], check=True, capture_output=True)
            subprocess.run([HERE.parent / "platform_library/board_test.py", f"{folder}/tornel"], check=True)

    def test_7_generate_a_client_from_the_interface_definition(self):
        idl = self.installed("usr/share/tornel/idl")
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["thrift", "-r", "--gen", "py", "-I", idl, "-out", folder, idl / "in_module.thrift"],
                           check=True)
            self.assertTrue(list(pathlib.Path(folder).rglob("im_SIControlSrv.py")))

    def test_7_pass_the_source_packages_own_test(self):
        subprocess.run([SOURCE / "debian/tests/feed-the-sample"], check=True, timeout=10 * PATIENCE,
                       env={**os.environ, "TORNEL_ROOT": str(self.root.path)})

    def test_8_leave_nothing_but_configuration_when_removed(self):
        state = {name for name in self.root.files() if name.startswith(STATE)}
        self.assertEqual(3, len(state), "the demo's job has left its files")
        self.root.dpkg("--remove", *NAMES)
        self.assertEqual({DEFAULTS} | state, self.root.files())

    def test_9_leave_nothing_when_purged(self):
        self.root.dpkg("--purge", *NAMES)
        self.assertEqual(set(), self.root.files())
        self.assertFalse(self.installed(STATE).exists())


class DebugSymbols(unittest.TestCase):
    def test_name_function_and_line_of_what_ships(self):
        for package, program, function, line in (
                ("tornel", "usr/sbin/tornel", "tevra::runTornel(int, char**)", "app/start_up.cpp"),
                ("tornel-tools", "usr/bin/tornelctl", "main", "tools/main.cpp")):
            with self.subTest(package), tempfile.TemporaryDirectory() as folder:
                for name in (package, f"{package}-dbgsym"):
                    subprocess.run(["dpkg-deb", "--extract", package_file(name), folder], check=True)
                notes = output_of("readelf", "--notes", f"{folder}/{program}")
                build_id = re.search(r"Build ID: (\w+)", notes).group(1)
                symbols = f"{folder}/usr/lib/debug/.build-id/{build_id[:2]}/{build_id[2:]}.debug"
                (address,) = re.findall(rf"^(\w+) T {re.escape(function)}$", output_of("nm", "--demangle", symbols),
                                        flags=re.MULTILINE)
                found = output_of("addr2line", "--functions", "--demangle", f"--exe={symbols}", address).splitlines()
                self.assertEqual(function.partition("(")[0], found[0].partition("(")[0])
                self.assertRegex(found[1], rf"/{re.escape(line)}:\d+$")


class MaintainerScripts(unittest.TestCase):
    """What they have the service manager do, by a systemctl that writes it down."""

    UPGRADED = ["--system daemon-reload", "try-restart tornel@*.service"]
    REMOVED = ["stop tornel@*.service", "--system daemon-reload"]

    def setUp(self):
        self.root = ThrowAwayRoot()
        self.addCleanup(self.root.remove)
        programs = self.root.path / "var/lib/dpkg/programs"
        programs.mkdir()
        self.record = programs / "record"
        self.environment = {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}", "RECORD": str(self.record)}
        self.systemctl = programs / "systemctl"
        self.let_systemctl_end_with(0)
        (self.root.path / "run/systemd/system").mkdir(parents=True)

    def let_systemctl_end_with(self, status):
        self.systemctl.write_text(f'#!/bin/sh\necho "$*" >>"$RECORD"\nexit {status}\n', encoding="utf-8")
        self.systemctl.chmod(0o755)

    def told_by(self, *arguments):
        """What systemctl is told while dpkg does this."""
        self.record.write_text("", encoding="utf-8")
        self.root.dpkg(*arguments, environment=self.environment)
        return self.record.read_text(encoding="utf-8").splitlines()

    def through_its_life(self):
        return [self.told_by(*action) for action in (("--install", package_file("tornel")), ("--install", package_file("tornel")),
                                                     ("--remove", "tornel"), ("--purge", "tornel"))]

    def enable(self, index):
        wanted = self.root.path / "etc/systemd/system/multi-user.target.wants"
        wanted.mkdir(parents=True, exist_ok=True)
        link = wanted / f"tornel@{index}.service"
        link.symlink_to(f"/{UNIT}")
        return link

    def test_start_nothing_restart_what_runs_and_stop_it(self):
        self.assertEqual([["--system daemon-reload"], self.UPGRADED, self.REMOVED, []], self.through_its_life())

    def test_say_nothing_where_no_service_manager_runs(self):
        (self.root.path / "run/systemd/system").rmdir()
        self.assertEqual([[], [], [], []], self.through_its_life())

    def test_install_where_the_service_manager_refuses(self):
        self.let_systemctl_end_with(1)
        self.assertEqual([["--system daemon-reload"], self.UPGRADED, self.REMOVED, []], self.through_its_life())

    def test_restart_and_stop_nothing_against_the_machines_policy(self):
        policy = self.root.path / "usr/sbin/policy-rc.d"
        policy.parent.mkdir(parents=True)
        policy.write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")
        policy.chmod(0o755)
        self.assertEqual([["--system daemon-reload"]] * 3 + [[]], self.through_its_life())

    def test_take_a_return_after_a_removal_for_an_upgrade(self):
        self.told_by("--install", package_file("tornel"))
        self.told_by("--remove", "tornel")
        # dpkg names the version that was configured last, for the configuration that stayed.
        self.assertEqual(self.UPGRADED, self.told_by("--install", package_file("tornel")))

    def test_leave_enabled_instances_enabled_until_purged(self):
        links = [self.enable(index) for index in (0, 2)]
        other = links[0].with_name("other@0.service")
        other.symlink_to("/usr/lib/systemd/system/other@.service")
        for action in (("--install", package_file("tornel")), ("--install", package_file("tornel")), ("--remove", "tornel")):
            self.told_by(*action)
            self.assertTrue(all(link.is_symlink() for link in links), action)
        self.told_by("--purge", "tornel")
        self.assertEqual([False, False, True], [link.is_symlink() for link in (*links, other)])


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    if os.geteuid() != 0:
        if shutil.which("fakeroot") is None:
            print("packages_test: skipped, since it is neither root nor has it fakeroot")
            return CANNOT_RUN
        os.execvp("fakeroot", ["fakeroot", sys.executable, *sys.argv])
    os.environ["PATH"] += ":/usr/sbin:/sbin"  # dpkg wants ldconfig and start-stop-daemon
    unittest.main(argv=sys.argv[:1], failfast=True)
    return 0


if __name__ == "__main__":
    FOLDER = pathlib.Path(sys.argv[-1])
    sys.exit(main())

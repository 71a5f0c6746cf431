"""A private session for the checks of real hosts and browsers."""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

HERE = pathlib.Path(__file__).resolve().parent
WATCHER = "org.kde.StatusNotifierWatcher"


class Failure(Exception):
    pass


def wait(condition, what, seconds=30):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        time.sleep(0.1)
    raise Failure(f"timeout: {what}")


def become_nobody(files):
    """Gives the files to an ordinary user and goes on as that user. Some hosts refuse to run as root."""
    nobody = 65534
    for file in files:
        os.chown(file, nobody, nobody)
    os.setgroups([])
    os.setresgid(nobody, nobody, nobody)
    os.setresuid(nobody, nobody, nobody)


class Session:
    """A private session bus, home and runtime folder."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="hushbox-host-"))
        self.processes = []
        self.environment = {name: os.environ[name] for name in ("PATH", "LANG") if name in os.environ}
        home, run = self.folder / "home", self.folder / "run"
        home.mkdir()
        run.mkdir(mode=0o700)
        self.home = home
        self.environment |= {"HOME": str(home), "XDG_RUNTIME_DIR": str(run), "NO_AT_BRIDGE": "1",
                             "GSETTINGS_BACKEND": "keyfile", "GTK_A11Y": "none",
                             "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
                             "LIBGL_ALWAYS_SOFTWARE": "1", "QT_QUICK_BACKEND": "software"}
        bus = self.start("bus", ["dbus-daemon", "--session", "--nofork", "--print-address"],
                         stdout=subprocess.PIPE)
        address = bus.stdout.readline().decode().strip()
        self.environment |= {"DBUS_SESSION_BUS_ADDRESS": address,
                             # No host may reach the real one.
                             "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + str(self.folder / "none")}
        flags = Gio.DBusConnectionFlags
        self.bus = Gio.DBusConnection.new_for_address_sync(
            address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)

    def start(self, name, command, **options):
        if hasattr(self, "bus"):  # services that the bus starts need it too
            self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                      "UpdateActivationEnvironment", GLib.Variant("(a{ss})", [self.environment]))
        log = open(self.folder / (name + ".log"), "wb")
        options = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log, **options}
        process = subprocess.Popen(command, env=self.environment, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def display(self, width, height):
        read, write = os.pipe()
        self.start("display", ["Xvfb", "-displayfd", str(write), "-screen", "0",
                               f"{width}x{height}x24", "-nolisten", "tcp"],
                   pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()

    def write(self, path, text):
        file = self.home / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def settings(self, *settings):
        for setting in settings:
            subprocess.run(["gsettings", "set", *setting.split(" ", 2)], env=self.environment, check=True)

    def portal(self, scheme):
        self.start("portal", [str(HERE / "portal"), str(scheme)])
        wait(lambda: self.has_owner("org.freedesktop.portal.Desktop"), "the portal")

    def run(self, *command, check=True):
        return subprocess.run(command, env=self.environment, check=check, capture_output=True,
                              timeout=30).stdout

    def call(self, name, path, interface, method, arguments=None):
        return self.bus.call_sync(name, path, interface, method, arguments, None,
                                  Gio.DBusCallFlags.NO_AUTO_START, 20000, None).unpack()

    def enable_accessibility(self):
        self.bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                           GLib.Variant("(ssv)", ["org.a11y.Status", "IsEnabled", GLib.Variant("b", True)]),
                           None, Gio.DBusCallFlags.NONE, 20000, None)

    def has_owner(self, name):
        return self.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                         GLib.Variant("(s)", [name]))[0]

    def items(self):
        try:
            return self.call(WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                             GLib.Variant("(ss)", [WATCHER, "RegisteredStatusNotifierItems"]))[0]
        except GLib.Error:
            return []

    def close(self):
        for process in reversed(self.processes):
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

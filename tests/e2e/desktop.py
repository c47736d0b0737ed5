"""A private X11 desktop for end-to-end tests: Xvfb with a window manager and a session bus,
a private home, and helpers to drive the pointer and look at the screen.

Everything runs inside one temporary folder and is stopped when the session closes."""

import os
import shutil
import signal
import subprocess
import tempfile
import time


class Desktop:
    def __init__(self, width=1280, height=800):
        self.root = tempfile.mkdtemp(prefix="wendrel-e2e-")
        self.home = os.path.join(self.root, "home")
        runtime = os.path.join(self.root, "run")
        for folder in (self.home, runtime):
            os.makedirs(folder, mode=0o700)
        self.env = dict(os.environ)
        self.env.update({
            "HOME": self.home,
            "XDG_CONFIG_HOME": os.path.join(self.home, ".config"),
            "XDG_DATA_HOME": os.path.join(self.home, ".local", "share"),
            "XDG_RUNTIME_DIR": runtime,
            "TMPDIR": self.root,
            "QT_QPA_PLATFORM": "xcb",
            "LC_ALL": "C.UTF-8",
        })
        self.env.pop("WAYLAND_DISPLAY", None)
        self.processes = []
        self._start_display(width, height)
        self._start_bus()
        self.spawn(["openbox", "--sm-disable"])
        time.sleep(0.5)

    def _start_display(self, width, height):
        read_end, write_end = os.pipe()
        self.xvfb = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp"],
            pass_fds=(write_end,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write_end)
        number = b""
        while not number.endswith(b"\n"):
            chunk = os.read(read_end, 16)
            if not chunk:
                raise RuntimeError("Xvfb did not start")
            number += chunk
        os.close(read_end)
        self.env["DISPLAY"] = ":" + number.decode().strip()
        self.processes.append(self.xvfb)

    def _start_bus(self):
        output = subprocess.run(["dbus-daemon", "--session", "--fork", "--print-address=1", "--print-pid=1"],
                                env=self.env, capture_output=True, text=True, check=True).stdout.split()
        self.env["DBUS_SESSION_BUS_ADDRESS"] = output[0]
        self.bus_pid = int(output[1])

    def spawn(self, command, log=None):
        process = subprocess.Popen(command, env=self.env, stdout=log or subprocess.DEVNULL,
                                   stderr=subprocess.STDOUT if log else subprocess.DEVNULL)
        self.processes.append(process)
        return process

    def run(self, command, check=True, timeout=60):
        return subprocess.run(command, env=self.env, capture_output=True, text=True, check=check, timeout=timeout)

    def xdotool(self, *arguments):
        return self.run(["xdotool", *map(str, arguments)], check=False).stdout.strip()

    def visible_window(self, name):
        """The id of a visible window with this title, or None."""
        found = self.xdotool("search", "--onlyvisible", "--name", f"^{name}$")
        return found.splitlines()[0] if found else None

    def window_geometry(self, window):
        values = {}
        for line in self.xdotool("getwindowgeometry", "--shell", window).splitlines():
            key, _, value = line.partition("=")
            values[key] = int(value)
        return values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]

    def screenshot(self, path, window=None):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if window:
            x, y, width, height = self.window_geometry(window)
            self.run(["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", path])
        else:
            self.run(["import", "-window", "root", path])

    def close(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
                try:
                    process.wait(timeout=5)
                except subprocess.TimeoutExpired:
                    process.kill()
        try:
            os.kill(self.bus_pid, signal.SIGTERM)
        except OSError:
            pass
        shutil.rmtree(self.root, ignore_errors=True)


def wait_for(condition, timeout=10.0, step=0.05):
    """Polls `condition` until it returns something true; returns that, or None on timeout."""
    end = time.monotonic() + timeout
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(step)
    return None


class Checks:
    """Collects failed expectations, so one run reports every problem, not just the first."""

    def __init__(self):
        self.failures = []

    def __call__(self, condition, message):
        if not condition:
            self.failures.append(message)
            print("FAIL:", message, flush=True)
        return condition


def require_tools(tools):
    """Exits with 77 (skipped, for CTest) when a tool the test drives is missing."""
    missing = [tool for tool in tools if not shutil.which(tool)]
    if missing:
        print("skipped: missing", ", ".join(missing))
        raise SystemExit(77)


def start_file_drag(desktop, drag_source, files, log_path=None):
    """Starts the drag-source program with `files`, presses in its window and moves away: a
    real file drag is under way when this returns, with the button still down."""
    log = open(log_path, "w") if log_path else None
    desktop.spawn([drag_source, *files], log=log)
    source = wait_for(lambda: desktop.visible_window("Drag Source"), timeout=10)
    x, y, width, height = desktop.window_geometry(source)
    desktop.xdotool("mousemove", x + width // 2, y + height // 2)
    time.sleep(0.2)
    desktop.xdotool("mousedown", "1")
    time.sleep(0.1)
    for step in range(1, 25):
        desktop.xdotool("mousemove", x + width // 2 + step * 14, y + height // 2 + step * 8)
        time.sleep(0.02)
    time.sleep(0.3)
    return source

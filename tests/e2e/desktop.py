"""A private X11 desktop for end-to-end tests: Xvfb with a window manager and a session bus,
a private home, and helpers to drive the pointer and look at the screen.

Everything runs inside one temporary folder and is stopped when the session closes.

Nothing here sleeps for a fixed time before looking: every step waits for what it needs (a
window mapped, a selection owned, a line in a log) with a deadline generous enough for a
machine whose cores are all busy with other work."""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile
import time

# How long to wait for anything that should happen: far longer than it takes on an idle machine,
# so only a real fault runs into it.
DEADLINE = 30.0


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
        self._x11 = None
        manager_log = os.path.join(self.root, "openbox.log")
        manager = self.spawn(["openbox", "--sm-disable"], log=open(manager_log, "w"))
        if not wait_for(self._window_manager_running):
            with open(manager_log) as file:
                raise RuntimeError(f"the window manager did not start ({manager.poll()}): {file.read()}")

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

    def _window_manager_running(self):
        return "window id" in self.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False).stdout

    def selection_owned(self, name):
        """Whether some client owns the X selection `name` (a drag, a system tray)."""
        if self._x11 is None:
            library = ctypes.cdll.LoadLibrary("libX11.so.6")
            library.XOpenDisplay.restype = ctypes.c_void_p
            library.XOpenDisplay.argtypes = [ctypes.c_char_p]
            library.XInternAtom.restype = ctypes.c_ulong
            library.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
            library.XGetSelectionOwner.restype = ctypes.c_ulong
            library.XGetSelectionOwner.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
            library.XCloseDisplay.argtypes = [ctypes.c_void_p]
            display = library.XOpenDisplay(self.env["DISPLAY"].encode())
            if not display:
                raise RuntimeError("can't open the test display")
            self._x11 = (library, display)
        library, display = self._x11
        return library.XGetSelectionOwner(display, library.XInternAtom(display, name.encode(), 0)) != 0

    def run(self, command, check=True, timeout=60):
        return subprocess.run(command, env=self.env, capture_output=True, text=True, check=check, timeout=timeout)

    def xdotool(self, *arguments):
        return self.run(["xdotool", *map(str, arguments)], check=False).stdout.strip()

    def visible_window(self, name, process=None):
        """The id of a visible window with this title (of this process, if given), or None."""
        owner = ["--all", "--pid", process.pid] if process else []
        found = self.xdotool("search", "--onlyvisible", *owner, "--name", f"^{name}$")
        return found.splitlines()[0] if found else None

    def active_window(self):
        return self.xdotool("getactivewindow")

    def activate(self, window):
        """Gives `window` the focus and waits until the window manager says it has it."""
        self.xdotool("windowactivate", "--sync", window)
        return wait_for(lambda: self.active_window() == window)

    def pointer(self):
        values = dict(line.split("=") for line in self.xdotool("getmouselocation", "--shell").splitlines())
        return int(values["X"]), int(values["Y"])

    def move_pointer(self, *points):
        """Moves the pointer through `points` in one go, each move done before the next."""
        moves = []
        for x, y in points:
            moves += ["mousemove", "--sync", x, y]
        self.xdotool(*moves)

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
        if self._x11:
            library, display = self._x11
            library.XCloseDisplay(display)
            self._x11 = None
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


def wait_for(condition, timeout=DEADLINE, step=0.05):
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


def start_file_drag(desktop, drag_source, files, log_path, noticed=lambda: True):
    """Starts the drag-source program with `files`, presses in its window and moves away: a
    real file drag is under way when this returns, with the button still down.

    The first move starts the drag; the pointer then stays put until `noticed()` says the
    drag was seen, as a Qt drag source answers questions about its drag only for the time of
    the last motion it handled."""
    process = desktop.spawn([drag_source, *files], log=open(log_path, "w"))
    source = wait_for(lambda: desktop.visible_window("Drag Source", process))
    if not source:
        raise RuntimeError("the drag source did not start")
    # Sources of earlier drags are still open at the same place: this one goes on top.
    if not desktop.activate(source):
        raise RuntimeError("the drag source did not come to the front")
    x, y, width, height = desktop.window_geometry(source)
    centre_x, centre_y = x + width // 2, y + height // 2
    desktop.move_pointer((centre_x, centre_y))
    desktop.xdotool("mousedown", "1")
    desktop.move_pointer((centre_x + 14, centre_y + 8))  # past the drag distance
    if not wait_for(lambda: "drag started" in open(log_path).read()):
        raise RuntimeError("the drag did not start")
    if not wait_for(noticed):
        raise RuntimeError("the drag was not noticed")
    # On away from the source, in small steps as a hand moves.
    desktop.move_pointer(*((centre_x + step * 14, centre_y + step * 8) for step in range(2, 25)))
    return source

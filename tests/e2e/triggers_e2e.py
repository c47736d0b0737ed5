#!/usr/bin/env python3
"""The triggers end to end, as a person would use them on an X11 desktop: drag files from a
real Qt drag source and tap a modifier; double-tap a modifier over a file manager; press a
recorded shortcut; and check that none of it opens a ring while Wendrel is paused.

Usage: triggers_e2e.py WENDREL DRAG_SOURCE FAKE_FILE_MANAGER [SCREENSHOT_FOLDER]"""

import os
import shutil
import sys
import time

from desktop import Checks, Desktop, require_tools, start_file_drag, wait_for

RING = "Wendrel Ring"
REQUIRED_TOOLS = ("Xvfb", "openbox", "xdotool", "import", "dbus-daemon", "vipsheader")
check = Checks()


class Session:
    def __init__(self, wendrel, drag_source, file_manager, settings=""):
        self.desktop = Desktop()
        self.wendrel, self.drag_source, self.file_manager = wendrel, drag_source, file_manager
        config = os.path.join(self.desktop.env["XDG_CONFIG_HOME"], "Wendrel")
        os.makedirs(config, exist_ok=True)
        with open(os.path.join(config, "Wendrel.conf"), "w") as file:
            file.write("[General]\n" + settings)
        self.desktop.env["QT_LOGGING_RULES"] = "wendrel.*.debug=true"
        self.log_path = os.path.join(self.desktop.root, "agent.log")
        self.agent = self.desktop.spawn([wendrel], log=open(self.log_path, "w"))
        socket = os.path.join(self.desktop.env["XDG_RUNTIME_DIR"], "wendrel.socket")
        if not wait_for(lambda: os.path.exists(socket), timeout=20):
            raise RuntimeError("the agent did not start")
        time.sleep(0.5)
        self.photo = os.path.join(self.desktop.home, "Trip.png")
        shutil.copy(os.path.join(os.path.dirname(__file__), "..", "..", "samples", "gradient.png"), self.photo)

    def log(self):
        return open(self.log_path).read()

    def ring(self):
        return self.desktop.visible_window(RING)

    def start_drag(self):
        self.source_log = os.path.join(self.desktop.root, f"source-{time.monotonic_ns()}.log")
        return start_file_drag(self.desktop, self.drag_source, [self.photo], self.source_log)

    def tap(self, key, hold=0.06):
        self.desktop.xdotool("keydown", key)
        time.sleep(hold)
        self.desktop.xdotool("keyup", key)
        time.sleep(0.05)

    def release(self):
        self.desktop.xdotool("mouseup", "1")
        time.sleep(0.3)

    def close(self):
        self.desktop.close()


def drag_and_tap(session, shots):
    d = session.desktop
    source = session.start_drag()
    pointer = d.xdotool("getmouselocation", "--shell")
    session.tap("shift")
    window = wait_for(session.ring, timeout=5)
    if not check(window, "tapping Shift during a file drag opens the ring"):
        session.release()
        return
    x, y, width, height = d.window_geometry(window)
    position = dict(line.split("=") for line in pointer.splitlines())
    check(abs(x + width // 2 - int(position["X"])) <= 2 and abs(y + height // 2 - int(position["Y"])) <= 2,
          "the ring opens centred at the pointer")
    check(d.xdotool("getactivewindow") == source, "the ring does not take the focus from the drag source")

    session.tap("shift")
    time.sleep(0.3)
    check("page 2 of 2" in session.log(), "tapping Shift again turns to the next page")
    session.tap("shift")
    time.sleep(0.3)
    check(session.log().count("page 1 of 2") >= 2, "and after the last page back to the first")

    centre_x, centre_y = x + width // 2, y + height // 2
    for step in range(1, 11):  # onto JPG, the top segment
        d.xdotool("mousemove", centre_x, centre_y - step * 13)
        time.sleep(0.03)
    time.sleep(0.3)
    if shots:
        d.screenshot(os.path.join(shots, "ring-drag.png"))
    original = open(session.photo, "rb").read()
    session.release()
    result = os.path.join(d.home, "Trip.jpg")
    check(wait_for(lambda: os.path.exists(result), timeout=15), "dropping on JPG writes Trip.jpg beside the file")
    check(open(session.photo, "rb").read() == original, "the dragged file is unchanged")
    check(wait_for(lambda: "drop action 1" in open(session.source_log).read(), timeout=5),
          "the drop is accepted as a copy, never a move")
    check(wait_for(lambda: not session.ring(), timeout=6), "the ring hides after showing the result")


def held_too_long_and_escape(session):
    session.start_drag()
    session.tap("shift", hold=0.8)
    time.sleep(0.5)
    check(not session.ring(), "holding Shift for 0.8 s opens no ring")
    session.desktop.xdotool("key", "Escape")
    time.sleep(0.3)
    session.tap("shift")
    time.sleep(0.6)
    check(not session.ring(), "after Escape cancelled the drag, a tap opens no ring")
    session.release()


def double_tap_over_file_manager(session):
    d = session.desktop
    d.spawn([session.file_manager, session.photo])
    manager = wait_for(lambda: d.visible_window("Fake File Manager"), timeout=10)
    if not check(manager, "the stand-in file manager starts"):
        return
    d.xdotool("windowactivate", "--sync", manager)
    d.xdotool("mousemove", 760, 300)
    time.sleep(0.3)
    session.tap("ctrl")
    session.tap("ctrl")
    check(wait_for(session.ring, timeout=5), "a double tap of Ctrl over the file manager opens a ring")
    check(wait_for(lambda: "open tools for 1 selected file(s)" in session.log(), timeout=3),
          "the tools ring, for the file manager's selection")
    d.xdotool("key", "Escape")
    check(wait_for(lambda: not session.ring(), timeout=3), "Escape closes it")


def shortcut(session):
    d = session.desktop
    manager = d.visible_window("Fake File Manager")
    if manager:
        d.xdotool("windowactivate", "--sync", manager)
    time.sleep(0.3)
    d.xdotool("key", "ctrl+alt+k")
    check(wait_for(lambda: "open actions for 1 selected file(s)" in session.log(), timeout=5),
          "the recorded shortcut opens the actions ring for the selection")
    if session.ring():
        d.xdotool("key", "Escape")


def nothing_while_paused(wendrel, drag_source, file_manager):
    session = Session(wendrel, drag_source, file_manager, "pausedUntil=64092211200\n" + SHORTCUT)
    try:
        session.start_drag()
        session.tap("shift")
        time.sleep(0.6)
        check(not session.ring(), "while paused, a tap during a drag opens nothing")
        session.release()
        d = session.desktop
        d.spawn([file_manager, session.photo])
        manager = wait_for(lambda: d.visible_window("Fake File Manager"), timeout=10)
        d.xdotool("windowactivate", "--sync", manager)
        session.tap("ctrl")
        session.tap("ctrl")
        d.xdotool("key", "ctrl+alt+k")
        time.sleep(1)
        check(not session.ring() and "selected file" not in session.log(),
              "while paused, double taps and shortcuts open nothing")
        # Choose Files… and the command line still work.
        d.run([wendrel, "ring", "convert", session.photo])
        check(wait_for(session.ring, timeout=5), "while paused, the command line still opens a ring")
    finally:
        session.close()


# Ctrl+Alt+K for the actions ring.
SHORTCUT = 'hotKey.actions="{\\"keyCode\\":40,\\"carbonModifiers\\":6144,\\"keyName\\":\\"K\\"}"\n'


def main():
    require_tools(REQUIRED_TOOLS)
    wendrel, drag_source, file_manager = (os.path.abspath(path) for path in sys.argv[1:4])
    shots = sys.argv[4] if len(sys.argv) > 4 else None

    session = Session(wendrel, drag_source, file_manager, SHORTCUT)
    try:
        drag_and_tap(session, shots)
        held_too_long_and_escape(session)
        double_tap_over_file_manager(session)
        shortcut(session)
    finally:
        session.close()
    nothing_while_paused(wendrel, drag_source, file_manager)

    print("triggers end-to-end:", "passed" if not check.failures else "failed: " + "; ".join(check.failures))
    sys.exit(1 if check.failures else 0)


if __name__ == "__main__":
    main()

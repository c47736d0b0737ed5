#!/usr/bin/env python3
"""The triggers end to end, as a person would use them on an X11 desktop: drag files from a
real Qt drag source and tap a modifier; double-tap a modifier over a file manager; press a
recorded shortcut; and check that none of it opens a ring while Wendrel is paused.

Usage: triggers_e2e.py WENDREL DRAG_SOURCE FAKE_FILE_MANAGER [SCREENSHOT_FOLDER]"""

import os
import re
import shutil
import sys
import time

from desktop import Checks, Desktop, require_tools, start_file_drag, wait_for

RING = "Wendrel Ring"
REQUIRED_TOOLS = ("Xvfb", "openbox", "xdotool", "xprop", "import", "dbus-daemon", "vipsheader")
RING_SHOWN = re.compile(r"show \w+ for \d+ file")
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
        if not self.wait_log("watching drags"):
            raise RuntimeError("the agent did not start watching the input")
        self.photo = os.path.join(self.desktop.home, "Trip.png")
        shutil.copy(os.path.join(os.path.dirname(__file__), "..", "..", "samples", "gradient.png"), self.photo)

    def log(self, since=0):
        with open(self.log_path) as file:
            return file.read()[since:]

    def mark(self):
        """A place in the agent's log: what it writes from now on comes after it."""
        return len(self.log())

    def wait_log(self, text, since=0):
        return wait_for(lambda: text in self.log(since))

    def ring(self):
        return self.desktop.visible_window(RING)

    def ring_requested(self, since):
        return RING_SHOWN.search(self.log(since))

    def start_drag(self):
        """A file drag under way, seen by the agent, with the button still down."""
        self.source_log = os.path.join(self.desktop.root, f"source-{time.monotonic_ns()}.log")
        mark = self.mark()
        source = start_file_drag(self.desktop, self.drag_source, [self.photo], self.source_log,
                                 noticed=lambda: "a new drag" in self.log(mark))
        if not check("a new drag offers 1 file(s)" in self.log(mark), "the agent reads the dragged file"):
            raise RuntimeError("the agent did not see the dragged file")
        return source

    def source_said(self, text):
        with open(self.source_log) as file:
            return text in file.read()

    def tap(self, key, hold=0.06, times=1):
        """Taps `key` as a hand would: down for `hold`, up, and again `times` over, 0.15 s apart,
        all from one program so nothing but the rule's own timing lies between the events.
        Returns once the agent has seen the last release."""
        mark = self.mark()
        events = []
        for tap in range(times):
            if tap:
                events += ["sleep", "0.15"]
            events += ["keydown", key, "sleep", str(hold), "keyup", key]
        self.desktop.xdotool(*events)

        def all_released():
            seen = re.findall(r"modifier key (down|up)", self.log(mark))
            return seen.count("down") >= times and seen[-1] == "up"
        if not wait_for(all_released):
            raise RuntimeError(f"the agent did not see {key} released")

    def release(self):
        mark = self.mark()
        self.desktop.xdotool("mouseup", "1")
        if not self.wait_log("left button up", mark):
            raise RuntimeError("the agent did not see the button released")

    def close(self):
        if check.failures or sys.exc_info()[0]:
            # What the agent saw, to tell a fault from a slow machine.
            print("--- agent log ---\n" + self.log()[-6000:], flush=True)
        self.desktop.close()


def drag_and_tap(session, shots):
    d = session.desktop
    source = session.start_drag()
    pointer_x, pointer_y = d.pointer()
    session.tap("shift")
    window = wait_for(session.ring)
    if not check(window, "tapping Shift during a file drag opens the ring"):
        session.release()
        return
    x, y, width, height = d.window_geometry(window)
    check(abs(x + width // 2 - pointer_x) <= 2 and abs(y + height // 2 - pointer_y) <= 2,
          "the ring opens centred at the pointer")
    check(d.active_window() == source, "the ring does not take the focus from the drag source")

    mark = session.mark()
    session.tap("shift")
    check(session.wait_log("page 2 of 2", mark), "tapping Shift again turns to the next page")
    mark = session.mark()
    session.tap("shift")
    check(session.wait_log("page 1 of 2", mark), "and after the last page back to the first")

    centre_x, centre_y = x + width // 2, y + height // 2
    d.move_pointer(*((centre_x, centre_y - step * 13) for step in range(1, 11)))  # onto JPG, the top segment

    # A drag source tells the target where the pointer is only as it moves, one position per
    # answer: moves made while an answer is on its way on a busy machine are never sent. A hand
    # never rests quite still, so, like one, the pointer keeps moving a pixel within JPG.
    def accepted_as_copy():
        if session.source_said("drag action 1"):
            return True
        nudges[0] ^= 1
        d.move_pointer((centre_x + nudges[0], centre_y - 130))
        return False
    nudges = [0]
    check(wait_for(accepted_as_copy, step=0.25), "the ring takes the drag over JPG, as a copy")
    if shots:
        d.screenshot(os.path.join(shots, "ring-drag.png"))
    original = open(session.photo, "rb").read()
    session.release()
    result = os.path.join(d.home, "Trip.jpg")
    check(wait_for(lambda: os.path.exists(result)), "dropping on JPG writes Trip.jpg beside the file")
    check(open(session.photo, "rb").read() == original, "the dragged file is unchanged")
    check(wait_for(lambda: session.source_said("drop action 1")), "the drop is accepted as a copy, never a move")
    check(wait_for(lambda: not session.ring()), "the ring hides after showing the result")


def held_too_long_and_escape(session):
    session.start_drag()
    mark = session.mark()
    session.tap("shift", hold=0.8)
    check(not session.ring_requested(mark) and not session.ring(), "holding Shift for 0.8 s opens no ring")
    mark = session.mark()
    session.desktop.xdotool("key", "Escape")
    if not session.wait_log("Escape pressed", mark):
        raise RuntimeError("the agent did not see Escape")
    session.tap("shift")
    check(not session.ring_requested(mark) and not session.ring(), "after Escape cancelled the drag, a tap opens no ring")
    session.release()


def double_tap_over_file_manager(session):
    d = session.desktop
    d.spawn([session.file_manager, session.photo])
    manager = wait_for(lambda: d.visible_window("Fake File Manager"))
    if not check(manager, "the stand-in file manager starts"):
        return
    check(d.activate(manager), "the file manager takes the focus")
    d.move_pointer((760, 300))
    session.tap("ctrl", times=2)
    window = wait_for(session.ring)
    check(window, "a double tap of Ctrl over the file manager opens a ring")
    check(session.wait_log("open tools for 1 selected file(s)"), "the tools ring, for the file manager's selection")
    # A ring opened for a selection takes the keys, so Escape reaches it.
    if window and d.activate(window):
        d.xdotool("key", "Escape")
    check(wait_for(lambda: not session.ring()), "Escape closes it")


def shortcut(session):
    d = session.desktop
    manager = d.visible_window("Fake File Manager")
    if manager:
        d.activate(manager)
    check(session.wait_log("grabbed"), "the recorded shortcut is grabbed")
    mark = session.mark()
    d.xdotool("key", "ctrl+alt+k")
    check(session.wait_log("open actions for 1 selected file(s)", mark),
          "the recorded shortcut opens the actions ring for the selection")
    window = wait_for(session.ring)
    if window and d.activate(window):
        d.xdotool("key", "Escape")
        wait_for(lambda: not session.ring())


def nothing_while_paused(wendrel, drag_source, file_manager):
    session = Session(wendrel, drag_source, file_manager, "pausedUntil=64092211200\n" + SHORTCUT)
    try:
        mark = session.mark()
        session.start_drag()
        session.tap("shift")
        check(not session.ring_requested(mark) and not session.ring(), "while paused, a tap during a drag opens nothing")
        session.release()
        d = session.desktop
        d.spawn([file_manager, session.photo])
        manager = wait_for(lambda: d.visible_window("Fake File Manager"))
        if not check(manager, "the stand-in file manager starts") or not check(d.activate(manager), "and takes the focus"):
            return
        mark = session.mark()
        session.tap("ctrl", times=2)
        before_shortcut = session.mark()
        d.xdotool("key", "ctrl+alt+k")
        # The shortcut's last key up reaching the agent means any grab would have fired first.
        wait_for(lambda: session.log(before_shortcut).count("modifier key up") >= 2)
        log = session.log(mark)
        check("asking the file manager" not in log and not re.search(r"shortcut \d+ pressed", log)
              and not session.ring(),
              "while paused, double taps and shortcuts open nothing")
        # Choose Files… and the command line still work.
        d.run([wendrel, "ring", "convert", session.photo])
        check(wait_for(session.ring), "while paused, the command line still opens a ring")
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

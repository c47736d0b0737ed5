#!/usr/bin/env python3
"""End to end, as a person would: the agent on a real (virtual) X11 desktop, a ring opened
from the command line, a segment clicked with the pointer, the result on disk, the ring
hiding after its delay, and the job announced on the session bus.

Usage: ring_e2e.py WENDREL_BINARY [SCREENSHOT_FOLDER [WALLPAPER]]"""

import configparser
import json
import math
import os
import re
import struct
import subprocess
import sys
import time
import wave
import zlib

from desktop import Checks, Desktop, require_tools, wait_for

RING = "Wendrel Ring"
SEGMENT_RADIUS = 132  # between the centre disc (66) and the outer edge (198)

check = Checks()


def write_png(path, width, height):
    """A small colourful RGB picture, written without any imaging library."""
    rows = b"".join(
        b"\0" + bytes(value for x in range(width) for value in (x * 255 // width, y * 255 // height, 160))
        for y in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xffffffff)

    png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")
    with open(path, "wb") as file:
        file.write(png)


def write_pdf(path):
    """A one-page PDF with a line of text, written without any PDF library."""
    content = b"BT /F1 24 Tf 72 700 Td (Quarterly report) Tj ET"
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R"
               b" /Resources << /Font << /F1 << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> >>",
               b"<< /Length %d >>\nstream\n%s\nendstream" % (len(content), content)]
    pdf, offsets = b"%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        offsets.append(len(pdf))
        pdf += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = len(pdf)
    pdf += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    pdf += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    pdf += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, table)
    with open(path, "wb") as file:
        file.write(pdf)


def write_tone(path, peak, seconds=1.0, rate=44100):
    """A 16-bit mono WAV of a 441 Hz tone whose loudest sample is `peak` (of full scale)."""
    samples = [round(peak * 32767 * math.sin(2 * math.pi * 441 * n / rate)) for n in range(int(seconds * rate))]
    with wave.open(path, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(struct.pack("<%dh" % len(samples), *samples))


def wav_peak(path):
    """The loudest sample of a 16-bit WAV as a fraction of full scale, read without Wendrel."""
    with wave.open(path, "rb") as file:
        assert file.getsampwidth() == 2
        frames = file.readframes(file.getnframes())
    return max(abs(value) for value in struct.unpack("<%dh" % (len(frames) // 2), frames)) / 32768


def segment_point(desktop, window, index, count):
    """Screen position of segment `index` of `count`, clockwise from straight up."""
    x, y, width, height = desktop.window_geometry(window)
    angle = 2 * math.pi * index / count
    return (x + width // 2 + round(SEGMENT_RADIUS * math.sin(angle)),
            y + height // 2 - round(SEGMENT_RADIUS * math.cos(angle)))


def open_ring(desktop, wendrel, kind, path, at=(640, 400)):
    desktop.move_pointer(at)
    desktop.run([wendrel, "ring", kind, path])
    return wait_for(lambda: desktop.visible_window(RING))


def click_segment(desktop, window, index, count):
    """Clicks segment `index`; returns the time just before the click, which the ring's
    reaction can only follow."""
    desktop.move_pointer(segment_point(desktop, window, index, count))
    clicked_at = time.monotonic()
    desktop.xdotool("click", "1")
    return clicked_at


def seconds_until_hidden(desktop, since):
    """Waits for the ring to go; the seconds from `since` until it was seen gone, or None."""
    if not wait_for(lambda: not desktop.visible_window(RING)):
        return None
    return time.monotonic() - since


def press_in(desktop, window, *keys):
    """Sends `keys` to `window` once it has the focus, as a person would type into it."""
    if not desktop.activate(window):
        return False
    desktop.xdotool("key", *keys)
    return True


REQUIRED_TOOLS = ("Xvfb", "openbox", "trayer", "xdotool", "xprop", "import", "dbus-daemon", "dbus-monitor",
                  "vipsheader")


def main():
    require_tools(REQUIRED_TOOLS)
    wendrel = os.path.abspath(sys.argv[1])
    shots = sys.argv[2] if len(sys.argv) > 2 else None
    wallpaper = sys.argv[3] if len(sys.argv) > 3 else None
    desktop = Desktop()
    try:
        if wallpaper:
            desktop.run(["display", "-window", "root", "-resize", "1280x800^", wallpaper], check=False)
        # A tray to put the icon in, as a desktop panel would offer.
        desktop.spawn(["trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28",
                       "--SetDockType", "true"])
        check(wait_for(lambda: desktop.selection_owned("_NET_SYSTEM_TRAY_S0")), "the tray is up")
        appearance = os.environ.get("WENDREL_E2E_APPEARANCE")
        if appearance:  # "light" or "dark", for screenshots of both
            settings = os.path.join(desktop.env["XDG_CONFIG_HOME"], "Wendrel")
            os.makedirs(settings, exist_ok=True)
            with open(os.path.join(settings, "Wendrel.conf"), "w") as file:
                file.write(f"[General]\nappearance={appearance}\n")
        log = open(os.path.join(desktop.root, "agent.log"), "w")
        monitor_log = open(os.path.join(desktop.root, "bus.log"), "w")
        desktop.spawn(["dbus-monitor", "--session", "type='signal',interface='org.wendrel.Wendrel'"], log=monitor_log)

        def bus_said(text):
            with open(monitor_log.name) as file:
                return text in file.read()
        # The monitor prints its own NameAcquired signal once it listens; no signal is lost after.
        check(wait_for(lambda: bus_said("NameAcquired")), "the bus monitor listens")
        agent = desktop.spawn([wendrel], log=log)
        socket = os.path.join(desktop.env["XDG_RUNTIME_DIR"], "wendrel.socket")
        check(wait_for(lambda: os.path.exists(socket)), "the agent listens on its socket")

        photo = os.path.join(desktop.home, "Holiday.png")
        write_png(photo, 320, 200)
        original = open(photo, "rb").read()

        # The convert ring for a PNG: JPG is segment 0 of 10, straight up.
        window = open_ring(desktop, wendrel, "convert", photo)
        if not check(window, "the convert ring appears"):
            return
        x, y, width, height = desktop.window_geometry(window)
        check((width, height) == (544, 544), f"the ring is 544 x 544 (got {width} x {height})")
        check(abs(x + width // 2 - 640) <= 2 and abs(y + height // 2 - 400) <= 2, "the ring is centred on the pointer")
        if shots:
            desktop.screenshot(os.path.join(shots, "ring-convert.png"), window)
            desktop.move_pointer(segment_point(desktop, window, 0, 10))
            desktop.screenshot(os.path.join(shots, "ring-hover.png"), window)

        clicked_at = click_segment(desktop, window, 0, 10)
        result = os.path.join(desktop.home, "Holiday.jpg")
        check(wait_for(lambda: os.path.exists(result)), "clicking JPG writes Holiday.jpg beside the PNG")
        if os.path.exists(result):
            header = subprocess.run(["vipsheader", result], capture_output=True, text=True).stdout
            check("320x200" in header and "jpegload" in header, f"the JPG decodes at 320 x 200 ({header.strip()})")
        check(open(photo, "rb").read() == original, "the original is unchanged")
        if shots:
            desktop.screenshot(os.path.join(shots, "ring-result.png"), window)
        # The result stays 2 s after the job, which ends after the click: the ring can't be gone
        # sooner, however slow the machine.
        shown_for = seconds_until_hidden(desktop, clicked_at)
        check(shown_for and shown_for >= 2.0, f"the ring shows the result, then hides (after {shown_for} s)")

        # A failure stays longer: a text file named like a picture.
        broken = os.path.join(desktop.home, "Broken.png")
        with open(broken, "w") as file:
            file.write("not a picture\n")
        window = open_ring(desktop, wendrel, "convert", broken)
        if check(window, "the ring opens for the broken file"):
            clicked_at = click_segment(desktop, window, 0, 10)
            if shots:
                desktop.screenshot(os.path.join(shots, "ring-failure.png"), window)
            # A failure stays 4 s, longer than a result's 2 s.
            shown_for = seconds_until_hidden(desktop, clicked_at)
            check(shown_for and shown_for >= 4.0, f"a failure stays at least 4 s, then hides (after {shown_for} s)")
            check(not os.path.exists(os.path.join(desktop.home, "Broken.jpg")), "nothing lands for a failed file")

        # An entry that asks first: Compress (segment 0 of the tools ring) shows its sheet over the
        # ring; confirming runs it with those answers.
        window = open_ring(desktop, wendrel, "tools", photo)
        if check(window, "the tools ring opens for the PNG"):
            click_segment(desktop, window, 0, 10)
            sheet = wait_for(lambda: desktop.visible_window("Compress"))
            if check(sheet, "Compress asks for its target first"):
                if shots:
                    desktop.screenshot(os.path.join(shots, "ring-compress-sheet.png"))
                check(desktop.visible_window(RING), "the ring stays while the sheet asks")
                check(press_in(desktop, sheet, "Return"), "the sheet takes the keys")
                compressed = os.path.join(desktop.home, "Holiday Compressed.jpg")
                check(wait_for(lambda: os.path.exists(compressed)), "confirming writes Holiday Compressed.jpg")
            check(wait_for(lambda: not desktop.visible_window(RING)), "and the ring goes after the result")

        # Documents convert from the ring too: a Markdown file to a PDF with its text.
        notes_md = os.path.join(desktop.home, "Meeting Notes.md")
        with open(notes_md, "w") as file:
            file.write("# Agenda\n\n- Budget review\n- *Launch* plans\n")
        converts = [entry["id"] for entry in json.loads(desktop.run([wendrel, "ops", "--json", notes_md]).stdout)["convert"]]
        window = open_ring(desktop, wendrel, "convert", notes_md)
        if check(window and "doc.pdf" in converts and "doc.md" not in converts,
                 "the convert ring opens for the Markdown file, with PDF and without Markdown"):
            click_segment(desktop, window, converts.index("doc.pdf"), len(converts))
            pdf = os.path.join(desktop.home, "Meeting Notes.pdf")
            check(wait_for(lambda: os.path.exists(pdf)), "clicking PDF writes Meeting Notes.pdf")
            if os.path.exists(pdf):
                text = desktop.run(["pdftotext", pdf, "-"], check=False).stdout
                check("Agenda" in text and "Budget review" in text, "the PDF holds the document's text")
            check(wait_for(lambda: not desktop.visible_window(RING)), "and the ring goes after the result")

        # PDFs have a Compress of their own, which asks too; cancelling its sheet runs nothing.
        document = os.path.join(desktop.home, "Report.pdf")
        write_pdf(document)
        tools = [entry["id"] for entry in json.loads(desktop.run([wendrel, "ops", "--json", document]).stdout)["tools"]]
        window = open_ring(desktop, wendrel, "tools", document)
        if check(window and "pdf.compress" in tools, "the tools ring opens for the PDF, with Compress"):
            click_segment(desktop, window, tools.index("pdf.compress"), len(tools))
            sheet = wait_for(lambda: desktop.visible_window("Compress"))
            if check(sheet, "the PDF Compress asks first"):
                if shots:
                    desktop.screenshot(os.path.join(shots, "ring-pdf-compress-sheet.png"))
                check(press_in(desktop, sheet, "Escape"), "the sheet takes the keys")
                check(wait_for(lambda: not desktop.visible_window("Compress")), "Escape cancels the sheet")
            check(wait_for(lambda: not desktop.visible_window(RING)) or press_in(desktop, window, "Escape"),
                  "the ring goes with the sheet, or at Escape")
            check(wait_for(lambda: not desktop.visible_window(RING)), "the ring is gone")
            check(not os.path.exists(os.path.join(desktop.home, "Report Compressed.pdf")), "cancelling ran nothing")
        # A PDF tool that asks nothing runs at the click, and its result is a whole PDF.
        window = open_ring(desktop, wendrel, "tools", document)
        if check(window and "pdf.rotate" in tools, "the tools ring opens again, with Rotate Right"):
            click_segment(desktop, window, tools.index("pdf.rotate"), len(tools))
            rotated = os.path.join(desktop.home, "Report Rotated.pdf")
            check(wait_for(lambda: os.path.exists(rotated)), "clicking Rotate Right writes Report Rotated.pdf")
            if os.path.exists(rotated):
                checked = desktop.run(["qpdf", "--check", rotated], check=False)
                check(checked.returncode == 0, "qpdf --check passes on the rotated PDF")
                info = desktop.run(["pdfinfo", rotated], check=False).stdout
                check(re.search(r"^Page rot:\s+90$", info, re.MULTILINE), "its page is turned 90 degrees")
            check(wait_for(lambda: not desktop.visible_window(RING)), "and the ring goes after the result")

        # Sound from the tools ring: Normalize brings a quiet recording's loudest sample to -1 dBFS.
        interview = os.path.join(desktop.home, "Interview.wav")
        write_tone(interview, 0.5)
        recording = open(interview, "rb").read()
        tools = [entry["id"] for entry in json.loads(desktop.run([wendrel, "ops", "--json", interview]).stdout)["tools"]]
        window = open_ring(desktop, wendrel, "tools", interview)
        if check(window and "audio.normalize" in tools, "the tools ring opens for the WAV, with Normalize"):
            click_segment(desktop, window, tools.index("audio.normalize"), len(tools))
            normalized = os.path.join(desktop.home, "Interview Normalized.wav")
            check(wait_for(lambda: os.path.exists(normalized)), "clicking Normalize writes Interview Normalized.wav")
            if os.path.exists(normalized):
                peak = wav_peak(normalized)
                check(abs(20 * math.log10(peak) + 1) < 0.01, f"its loudest sample is at -1 dBFS ({peak:.5f})")
            check(open(interview, "rb").read() == recording, "the recording is unchanged")
            check(wait_for(lambda: not desktop.visible_window(RING)), "and the ring goes after the result")

        # Nothing fits: the tools ring for a plain text file; Escape closes it.
        notes = os.path.join(desktop.home, "notes.txt")
        with open(notes, "w") as file:
            file.write("hello\n")
        window = open_ring(desktop, wendrel, "tools", notes)
        if check(window, "the tools ring opens for a text file"):
            if shots:
                desktop.screenshot(os.path.join(shots, "ring-nothing-fits.png"), window)
            check(press_in(desktop, window, "Escape"), "the ring takes the keys")
            check(wait_for(lambda: not desktop.visible_window(RING)), "Escape closes the ring")

        # A second start hands over to the running agent, which offers Choose Files, and leaves.
        second = desktop.run([wendrel], check=False)
        check(second.returncode == 0, "a second start exits cleanly")
        check(agent.poll() is None, "the first agent keeps running")
        chooser = wait_for(lambda: desktop.visible_window("Choose Files"))
        if check(chooser, "a second start brings up Choose Files"):
            check(press_in(desktop, chooser, "Escape"), "Choose Files takes the keys")
            check(wait_for(lambda: not desktop.visible_window("Choose Files")), "Escape cancels it")

        check(wait_for(lambda: bus_said("image.jpg")), "JobFinished for image.jpg went out on the session bus")

        # The tray menu: undo the last result, then pause for an hour; both really happen.
        def shown_windows():
            return set(desktop.xdotool("search", "--onlyvisible", "--classname", "wendrel").splitlines())

        def tray_icon():
            found = desktop.xdotool("search", "--classname", "wendrel").splitlines()
            return [window for window in found if desktop.window_geometry(window)[2] <= 32]
        tray = wait_for(tray_icon)
        if check(tray, "the tray icon is shown"):
            x, y, width, height = desktop.window_geometry(tray[0])

            def choose(*keys):
                """Opens the tray menu and walks it with `keys`, each menu up before it's typed into."""
                before = shown_windows()
                desktop.move_pointer((x + width // 2, y + height // 2))
                desktop.xdotool("click", "1")
                menus = wait_for(lambda: shown_windows() - before)
                if not check(menus, "clicking the tray icon opens its menu"):
                    return
                if shots and not os.path.exists(os.path.join(shots, "tray-menu.png")):
                    desktop.screenshot(os.path.join(shots, "tray-menu.png"))
                for key in keys:
                    opened = shown_windows()
                    desktop.xdotool("key", key)
                    if key == "Right":
                        check(wait_for(lambda: shown_windows() - opened), "Right opens the submenu")

            # The last job made Interview Normalized.wav; the JPG of an earlier job stays.
            last = os.path.join(desktop.home, "Interview Normalized.wav")
            trashed = os.path.join(desktop.env["XDG_DATA_HOME"], "Trash", "files", "Interview Normalized.wav")
            choose("Down", "Down", "Return")  # Choose Files…, Undo Last Result
            check(wait_for(lambda: os.path.exists(trashed)), "Undo Last Result moves the last result to the Trash")
            check(not os.path.exists(last) and os.path.exists(result), "only the last job's result is gone")
            check(wait_for(lambda: not shown_windows() - set(tray)), "the menu closes")

            choose("Down", "Down", "Right", "Return")  # Undo is disabled now: Pause ▸ For 1 Hour
            settings = os.path.join(desktop.env["XDG_CONFIG_HOME"], "Wendrel", "Wendrel.conf")

            def paused_until():
                parser = configparser.ConfigParser()
                parser.read(settings)
                return parser.get("General", "pausedUntil", fallback=None)
            stored = wait_for(paused_until)
            if check(stored, "pausing from the tray stores pausedUntil"):
                left = float(stored) - time.time()
                check(3500 < left <= 3600, f"the pause lasts an hour ({left:.0f} s left)")
    finally:
        desktop.close()
    print("ring end-to-end:", "passed" if not check.failures else "failed: " + "; ".join(check.failures))
    sys.exit(1 if check.failures else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env bash
# Takes the screenshots in docs/screenshots/ on a virtual desktop: the ring with its segments,
# hovered, showing a result, a failure, "Nothing fits this file", and the tray menu, in the
# light and the dark appearance. Runs the end-to-end test to get there.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
scripts/build.sh >/dev/null

out=docs/screenshots
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A calm backdrop, so the ring is seen the way it sits over a desktop.
python3 - "$work" <<'PY'
import struct, sys, zlib
folder = sys.argv[1]
width, height = 1280, 800
rows = bytearray()
for y in range(height):
    rows.append(0)
    for x in range(width):
        t = (x / width + (height - y) / height) / 2
        rows += bytes((int(52 + 60 * t), int(78 + 40 * t), int(120 + 70 * (1 - t))))
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xffffffff)
png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
png += chunk(b"IDAT", zlib.compress(bytes(rows))) + chunk(b"IEND", b"")
open(f"{folder}/wallpaper.png", "wb").write(png)
PY

for appearance in light dark; do
    WENDREL_E2E_APPEARANCE=$appearance python3 tests/e2e/ring_e2e.py build/app/wendrel "$work/$appearance" "$work/wallpaper.png"
    mkdir -p "$out"
    for shot in ring-convert ring-hover ring-result ring-failure ring-nothing-fits ring-compress-sheet ring-pdf-compress-sheet; do
        cp "$work/$appearance/$shot.png" "$out/$shot-$appearance.png"
    done
    # The tray menu: the top-right corner of the screen.
    convert "$work/$appearance/tray-menu.png" -crop 360x200+920+0 +repage "$out/tray-menu-$appearance.png"
done
# The ring mid-drag, opened by a tap of Shift while dragging from a real drag source.
python3 tests/e2e/triggers_e2e.py build/app/wendrel build/tests/wendrel-drag-source build/tests/e2e-tools/nemo "$work/drag"
cp "$work/drag/ring-drag.png" "$out/ring-drag-light.png"

# Every segment count from 1 to 10, the last segment hovered, drawn by the painter's own test.
mkdir -p "$out/segments"
WENDREL_SEGMENT_SHOTS="$PWD/$out/segments" tests/support/run-with-xvfb.sh build/tests/ring_view_tests \
    --gtest_filter='RingPainter.EverySegmentCountShowsEveryTitle' >/dev/null

echo "Screenshots in $out:"
ls -1 "$out"

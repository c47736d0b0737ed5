#!/usr/bin/env bash
# Installs what is missing, builds, and starts Wendrel: the tray agent in a graphical session.
#
# Without a graphical session it shows the command line at work instead: the sample files the
# repository ships are converted in a temporary folder and the results listed. Nothing outside
# that folder is touched.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/bootstrap.sh
scripts/build.sh

wendrel="$PWD/build/app/wendrel"
if [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
    echo "Starting Wendrel: look for its icon in the tray, or run '$wendrel ring convert FILE'."
    exec "$wendrel"
fi

demo=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-demo-XXXXXX")
cp samples/* "$demo/"

echo
echo "No graphical session here (DISPLAY is not set), so no tray agent; here is the command line at work."
echo "Sample files, copied to $demo:"
ls -1 "$demo" | sed 's/^/  /'

show() {
    echo
    echo "\$ wendrel $*"
    (cd "$demo" && "$wendrel" "$@")
}
show ops talk.srt
show run subtitle.vtt talk.srt
show run subtitle.vtt talk.srt
show run subtitle.srt interview.vtt
show run subtitle.txt interview.vtt
show run image.webp gradient.png
show run image.background gradient.png
show run archive.zip talk.srt interview.vtt gradient.png

echo
echo "Results in $demo:"
ls -1 "$demo" | sed 's/^/  /'
echo
echo "Try it on your own files: $wendrel --help"

#!/usr/bin/env bash
# Runs a command on a private, headless X server of its own, so tests with windows neither need
# nor disturb a desktop, and tests running in parallel never share a display. Xvfb chooses a
# free display number itself (-displayfd), which avoids the races of guessing one.
# Usage: run-with-xvfb.sh COMMAND [ARGUMENT...]
set -uo pipefail

display_file=$(mktemp "${TMPDIR:-/tmp}/wendrel-xvfb-XXXXXX")
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$display_file" 2>/dev/null &
server=$!
trap 'kill "$server" 2>/dev/null; wait "$server" 2>/dev/null; rm -f "$display_file"' EXIT

# The server writes its display number once it accepts connections.
for _ in $(seq 400); do
    [[ -s "$display_file" ]] && break
    if ! kill -0 "$server" 2>/dev/null; then
        echo "run-with-xvfb: Xvfb did not start" >&2
        exit 1
    fi
    sleep 0.05
done
if [[ ! -s "$display_file" ]]; then
    echo "run-with-xvfb: Xvfb gave no display number within 20 seconds" >&2
    exit 1
fi

export DISPLAY=":$(head -n 1 "$display_file")"
export QT_QPA_PLATFORM=xcb
"$@"

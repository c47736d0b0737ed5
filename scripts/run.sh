#!/usr/bin/env bash
# Installs what is missing, builds, and starts Wendrel.
#
# The tray agent is not part of this build yet, so this shows the command line at work instead:
# the sample files the repository ships are converted in a temporary folder and the results
# listed. Nothing outside that folder is touched.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/bootstrap.sh
scripts/build.sh

wendrel="$PWD/build/app/wendrel"
demo=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-demo-XXXXXX")
cp samples/* "$demo/"

echo
echo "Wendrel's tray agent is not part of this build yet; here is its command line at work."
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

echo
echo "Results in $demo:"
ls -1 "$demo" | sed 's/^/  /'
echo
echo "Try it on your own files: $wendrel --help"

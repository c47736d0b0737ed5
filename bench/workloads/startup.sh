# Start-up: what every file-manager action and scripted call pays before any work. The version,
# the help, listings, a ring request handed to a running agent, and one small subtitle
# conversion as a whole command; the ring listing once more with the encoder cache removed, so
# the one-off probe after a library change shows too. Goals: 30 ms for the version and the
# ring request, 50 ms for the subtitle conversion.

startup_root=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-startup-XXXXXX")
mkdir -m 700 "$startup_root/run" "$startup_root/home"
startup_env=(env HOME="$startup_root/home" XDG_RUNTIME_DIR="$startup_root/run" XDG_CONFIG_HOME="$startup_root/home/.config"
             XDG_CACHE_HOME="$startup_root/home/.cache" XDG_STATE_HOME="$startup_root/home/.local/state"
             QT_QPA_PLATFORM=xcb)
cp "$(dirname "${BASH_SOURCE[0]}")/../../samples/gradient.png" "$startup_root/photo.png"
printf '1\n00:00:01,000 --> 00:00:02,500\nHello\n\n2\n00:00:03,000 --> 00:00:04,000\nAgain\n' >"$startup_root/talk.srt"
mkdir "$startup_root/out"

# A private display and session bus for the agent that the ring requests go to.
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$startup_root/display" >/dev/null 2>&1 &
startup_xvfb=$!
for _ in $(seq 200); do [[ -s "$startup_root/display" ]] && break; sleep 0.05; done
startup_env+=(DISPLAY=":$(cat "$startup_root/display")")
read -r startup_bus startup_bus_pid < <("${startup_env[@]}" dbus-daemon --session --fork --print-address=1 --print-pid=1 | paste -sd ' ')
startup_env+=(DBUS_SESSION_BUS_ADDRESS="$startup_bus")
"${startup_env[@]}" "$WENDREL" >"$startup_root/agent.log" 2>&1 &
startup_agent=$!
for _ in $(seq 400); do [[ -S "$startup_root/run/wendrel.socket" ]] && break; sleep 0.05; done
[[ -S "$startup_root/run/wendrel.socket" ]] || { echo "startup: the agent did not start" >&2; cat "$startup_root/agent.log" >&2; }

# Median wall time in milliseconds of a command (an array), over BENCH_STARTUP_RUNS runs after
# three warm-up runs; `prepare` runs before each.
startup_median() {
    local prepare=$1; shift
    local runs=${BENCH_STARTUP_RUNS:-30}
    if command -v hyperfine >/dev/null; then
        local report; report=$(mktemp)
        hyperfine -N --style none --warmup 3 --runs "$runs" --prepare "${prepare:-true}" --export-json "$report" \
            "$(printf '%q ' "$@")" >/dev/null 2>&1 || { echo failed; rm -f "$report"; return; }
        python3 -c 'import json, sys; print("%.1f" % (json.load(open(sys.argv[1]))["results"][0]["median"] * 1000))' "$report"
        rm -f "$report"
    else
        local times=() run start
        for ((run = 0; run < runs + 3; run++)); do
            [[ -n "$prepare" ]] && bash -c "$prepare"
            start=$(date +%s%N)
            "$@" >/dev/null 2>&1 || { echo failed; return; }
            ((run >= 3)) && times+=($(( ($(date +%s%N) - start) / 1000 )))
        done
        printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {printf "%.1f", a[int((NR+1)/2)] / 1000}'
    fi
}

startup_case() {
    local name=$1 goal=$2 prepare=$3; shift 3
    printf '%-44s %10s %10s\n' "$name" "$(startup_median "$prepare" "${startup_env[@]}" "$@")" "$goal"
}

echo
echo "## Start-up, whole commands (median of ${BENCH_STARTUP_RUNS:-30} runs, ms)"
printf '%-44s %10s %10s\n' case ms goal
startup_case "wendrel --version" 30 "" "$WENDREL" --version
startup_case "wendrel ring convert photo.png (agent up)" 30 "" "$WENDREL" ring convert "$startup_root/photo.png"
startup_case "wendrel run subtitle.vtt talk.srt" 50 "rm -f '$startup_root'/out/*" \
    "$WENDREL" run subtitle.vtt --to "$startup_root/out" "$startup_root/talk.srt"
startup_case "wendrel --help" - "" "$WENDREL" --help
startup_case "wendrel ops --all" - "" "$WENDREL" ops --all
startup_case "wendrel ops photo.png" - "" "$WENDREL" ops "$startup_root/photo.png"
startup_case "wendrel ops photo.png, encoder cache removed" - "rm -rf '$startup_root'/home/.cache/wendrel" \
    "$WENDREL" ops "$startup_root/photo.png"

kill "$startup_agent" "$startup_bus_pid" "$startup_xvfb" 2>/dev/null
wait "$startup_agent" "$startup_xvfb" 2>/dev/null
rm -rf "$startup_root"

# Shared by the benchmark workloads: timing, peak memory and side-by-side tables.
#
#   bench_group "title"                   starts a table
#   bench_case NAME COMMAND [ARGS...]     runs COMMAND $BENCH_RUNS times; each run gets a fresh,
#                                         empty $OUT folder (exported) for its results
#   bench_end                             prints the table: median wall time, peak memory, the
#                                         bytes the case wrote into $OUT (so equal work can be
#                                         seen) and the ratio of each case's time to the first's
# Peak memory is the largest resident set of the command or of any one of its children (GNU time).

BENCH_RUNS=${BENCH_RUNS:-3}
declare -a _bench_names=() _bench_seconds=() _bench_peaks=() _bench_outputs=()

bench_group() {
    _bench_title=$1
    _bench_names=() _bench_seconds=() _bench_peaks=() _bench_outputs=()
}

bench_case() {
    local name=$1; shift
    local times=() peak=0 run written=0
    for ((run = 0; run < BENCH_RUNS; run++)); do
        OUT=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-XXXXXX"); export OUT
        local report; report=$(mktemp)
        if ! /usr/bin/time -f '%e %M' -o "$report" "$@" >/dev/null 2>"$report.err"; then
            echo "bench: '$name' failed:" >&2; cat "$report.err" >&2
            rm -rf "$OUT" "$report" "$report.err"; return 1
        fi
        local seconds kilobytes
        read -r seconds kilobytes < <(tail -n 1 "$report")
        times+=("$seconds")
        written=$(find "$OUT" -type f -printf '%s\n' | awk '{s += $1} END {print s + 0}')
        ((kilobytes > peak)) && peak=$kilobytes
        rm -rf "$OUT" "$report" "$report.err"
    done
    _bench_names+=("$name")
    _bench_seconds+=("$(printf '%s\n' "${times[@]}" | sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}')")
    _bench_peaks+=("$peak")
    _bench_outputs+=("$written")
}

bench_end() {
    echo
    echo "## $_bench_title   (median of $BENCH_RUNS runs)"
    printf '%-40s %10s %10s %12s %10s\n' case seconds "peak MB" "output MB" "vs first"
    local index
    for index in "${!_bench_names[@]}"; do
        awk -v name="${_bench_names[$index]}" -v s="${_bench_seconds[$index]}" \
            -v kb="${_bench_peaks[$index]}" -v out="${_bench_outputs[$index]}" -v first="${_bench_seconds[0]}" \
            'BEGIN { printf "%-40s %10.2f %10.1f %12.2f %9.2fx\n", name, s, kb / 1024, out / 1e6, (first > 0 ? s / first : 0) }'
    done
}

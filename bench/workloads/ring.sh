# The tray agent: a ring's first frame after a request, and the agent's idle cost and memory.
python3 "$(dirname "${BASH_SOURCE[0]}")/../ring_bench.py" "$WENDREL" "${RING_IDLE_SECONDS:-60}" \
    "$(dirname "$WENDREL")/../tests/wendrel-drag-source"

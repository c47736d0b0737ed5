#!/usr/bin/env python3
"""The agent's speed and weight on a virtual desktop: how long a ring takes from the request
reaching the agent to its first frame painted, and what the agent costs while idle.

Usage: ring_bench.py WENDREL_BINARY [IDLE_SECONDS]"""

import os
import statistics
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))
from desktop import Desktop, wait_for  # noqa: E402

REQUESTS = 20


def cpu_seconds(pid):
    fields = open(f"/proc/{pid}/stat").read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident_megabytes(pid):
    for line in open(f"/proc/{pid}/status"):
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) / 1024
    return 0


def main():
    wendrel = os.path.abspath(sys.argv[1])
    idle_seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 60
    desktop = Desktop()
    try:
        log_path = os.path.join(desktop.root, "agent.log")
        agent = desktop.spawn([wendrel], log=open(log_path, "w"))
        socket = os.path.join(desktop.env["XDG_RUNTIME_DIR"], "wendrel.socket")
        if not wait_for(lambda: os.path.exists(socket), timeout=20):
            sys.exit("the agent did not start")
        photo = os.path.join(desktop.home, "photo.png")
        with open(photo, "wb") as file:
            file.write(open(os.path.join(os.path.dirname(__file__), "..", "samples", "gradient.png"), "rb").read())
        time.sleep(1)

        for request in range(REQUESTS):
            desktop.xdotool("mousemove", 400 + 20 * request, 400)
            desktop.run([wendrel, "ring", "convert" if request % 2 == 0 else "tools", photo])
            window = wait_for(lambda: desktop.visible_window("Wendrel Ring"), timeout=10)
            time.sleep(0.2)
            desktop.xdotool("key", "--window", window, "Escape")
            wait_for(lambda: not desktop.visible_window("Wendrel Ring"), timeout=5)
            time.sleep(0.2)
        painted = [float(line.split("painted ")[1].split(" ms")[0])
                   for line in open(log_path) if "ring painted" in line]

        time.sleep(2)
        start_cpu, start = cpu_seconds(agent.pid), time.monotonic()
        time.sleep(idle_seconds)
        idle_cpu = (cpu_seconds(agent.pid) - start_cpu) / (time.monotonic() - start) * 100
        resident = resident_megabytes(agent.pid)
    finally:
        desktop.close()

    print(f"\n## Ring agent on a virtual desktop ({len(painted)} ring requests, {idle_seconds:.0f} s idle)")
    print(f"request to first frame painted: median {statistics.median(painted):.1f} ms, "
          f"slowest {max(painted):.1f} ms, first {painted[0]:.1f} ms (target under 30 ms)")
    print(f"idle CPU: {idle_cpu:.3f} % of one core (target under 0.3 %)")
    print(f"resident memory after the requests: {resident:.1f} MB (target under 80 MB)")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Times the label parser against `wc -w` on the same label, in turns in the same run.

Usage: label_peer.py BUILD-FOLDER   (default build/release)
Prints the medians, their ratio, and the parser's memory as a multiple of the label.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 21


def milliseconds_of(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return 1000 * (time.perf_counter() - start)


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else "build/release"
    bench = os.path.join(build, "bin", "label_bench")
    with tempfile.TemporaryDirectory() as folder:
        label = os.path.join(folder, "large.lbl")
        subprocess.run([bench, "--write", label], check=True)
        size = os.path.getsize(label)
        counted, parsed, taken = [], [], []
        for _ in range(ROUNDS):
            counted.append(milliseconds_of(["wc", "-w", label]))
            answer = subprocess.run([bench, "--parse", label], check=True, capture_output=True, text=True).stdout
            parsed.append(float(answer.split()[0]))
            taken.append(int(answer.split()[1]))
        ours, peer = statistics.median(parsed), statistics.median(counted)
        print(f"label of {size} bytes, medians of {ROUNDS} rounds")
        print(f"  wc -w     {peer:8.2f} ms")
        print(f"  parser    {ours:8.2f} ms   {ours / peer:.2f} times wc -w, {size / ours / 1000:.0f} MB/s")
        print(f"  memory    {statistics.median(taken) / size:8.2f} times the label")


if __name__ == "__main__":
    main()

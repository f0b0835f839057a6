#!/usr/bin/python3
"""Times rows of ASCII reals from text in memory to doubles: our conversion against numpy.loadtxt on the same text, in
turns, in the same run.

    bench/table_peer.py BUILD_DIR [ROWS]

Exits 1 when the two do not give the same doubles. The last line is how many times as fast ours is.
"""
import io
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy

ROUNDS = 5
COLUMNS = 8


def make_text(rows):
    """Fields of 16 bytes, the last of them a comma or a line feed."""
    random = numpy.random.default_rng(1)
    values = random.normal(scale=1000, size=(rows, COLUMNS))
    lines = (",".join(f"{value:15.7f}" if i % 2 else f"{value:15.8e}" for i, value in enumerate(row)) for row in values)
    return "\n".join(lines) + "\n"


def run_numpy(text):
    start = time.process_time()
    values = numpy.loadtxt(io.StringIO(text), delimiter=",")
    return (time.process_time() - start) * 1e3, values


def run_ours(program, folder, rows):
    done = subprocess.run([program, "--reals", folder / "peer.txt", str(rows), str(COLUMNS), folder / "doubles"],
                          check=True, capture_output=True, text=True)
    return float(done.stdout), numpy.fromfile(folder / "doubles").reshape(rows, COLUMNS)


def main():
    program = pathlib.Path(sys.argv[1]) / "bin" / "table_bench"
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 100000
    text = make_text(rows)
    times = {"lumacart": [], "numpy": []}
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name:
        folder = pathlib.Path(name)
        (folder / "peer.txt").write_text(text)
        for _ in range(ROUNDS):
            ours, our_values = run_ours(program, folder, rows)
            theirs, their_values = run_numpy(text)
            if not numpy.array_equal(our_values.view(numpy.int64), their_values.view(numpy.int64)):
                print("the doubles differ")
                return 1
            times["lumacart"].append(ours)
            times["numpy"].append(theirs)
    print(f"{rows} rows of {COLUMNS} reals of 15 characters, medians of {ROUNDS} turns, processor nanoseconds a real")
    medians = {who: statistics.median(turns) for who, turns in times.items()}
    for who, median in medians.items():
        print(f"{who:10}{median * 1e6 / rows / COLUMNS:9.1f}")
    print(f"lumacart is {medians['numpy'] / medians['lumacart']:.1f} times as fast as numpy.loadtxt")
    return 0


if __name__ == "__main__":
    sys.exit(main())

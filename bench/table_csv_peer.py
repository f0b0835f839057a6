#!/usr/bin/python3
"""Times the CSV file of 2,000,000 rows of 36 bytes: lumacart-cli table --csv against Python's csv module, which writes
the same rows from a numpy array in memory, in turns, in the same run.

    bench/table_csv_peer.py BUILD_DIR [ROWS]

Exits 1 when the two files do not hold the same numbers. The last line is the ratio of the medians.
"""
import csv
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile
import time

import numpy
import table_rows

ROUNDS = 3


def children_time():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (usage.ru_utime + usage.ru_stime) * 1e3


def run_ours(program, folder, label):
    start = children_time()
    subprocess.run([program, "table", label, "--csv", folder / "ours.csv"], check=True)
    return children_time() - start


def run_python(folder, values):
    start = time.process_time()
    with open(folder / "theirs.csv", "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(values.dtype.names)
        writer.writerows(values.tolist())
    return (time.process_time() - start) * 1e3


def main():
    program = pathlib.Path(sys.argv[1]) / "bin" / "lumacart-cli"
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 2000000
    values = table_rows.make_values(rows)
    times = {"lumacart": [], "python": []}
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name:
        folder = pathlib.Path(name)
        label = table_rows.write_product(folder, values)
        for _ in range(ROUNDS):
            times["lumacart"].append(run_ours(program, folder, label))
            times["python"].append(run_python(folder, values))
        written = [numpy.loadtxt(folder / name, delimiter=",", skiprows=1, dtype=values.dtype)
                   for name in ("ours.csv", "theirs.csv")]
        if not numpy.array_equal(written[0], written[1]):
            print("the files differ")
            return 1
    print(f"{rows} rows of {len(values.dtype.names)} fields, medians of {ROUNDS} turns, processor milliseconds")
    medians = {who: statistics.median(turns) for who, turns in times.items()}
    for who, median in medians.items():
        print(f"{who:10}{median:9.1f}")
    print(f"lumacart takes {medians['lumacart'] / medians['python']:.3f} of python's time")
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3
"""Times the summary of a column of ASCII reals in 2,000,000 rows of 36 bytes: lumacart-cli table --summary against awk,
on the same file, in turns, in the same run.

    bench/column_summary_peer.py BUILD_DIR [ROWS]

Exits 1 when the two do not find the same minimum, maximum and mean. The last line is the ratio of the medians.
"""
import math
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile

import table_rows

ROUNDS = 7
AWK = ("NR == 1 {low = high = $2 + 0} {v = $2 + 0; if (v < low) low = v; if (v > high) high = v; sum += v}"
       'END {printf "%.17g %.17g %.17g\\n", low, high, sum / NR}')


def run(command):
    """Processor milliseconds, and what was printed."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime) * 1e3, done.stdout


def main():
    program = pathlib.Path(sys.argv[1]) / "bin" / "lumacart-cli"
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 2000000
    times = {"lumacart": [], "awk": []}
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name:
        folder = pathlib.Path(name)
        label = table_rows.write_product(folder, table_rows.make_values(rows))
        summary = [program, "table", label, "--summary", "VALUE"]
        for turn in range(ROUNDS + 1):
            ours, text = run(summary)
            theirs, numbers = run(["awk", AWK, folder / "peer.tab"])
            found = [float(line.split(":")[1]) for line in text.splitlines()]
            wanted = [float(word) for word in numbers.split()]
            if len(found) != 3 or not all(math.isclose(a, b, rel_tol=1e-6) for a, b in zip(found, wanted)):
                print(f"the summaries differ: {found} {wanted}")
                return 1
            if turn > 0:  # the first turn fills the page cache
                times["lumacart"].append(ours)
                times["awk"].append(theirs)
    print(f"{rows} rows of 36 bytes, medians of {ROUNDS} turns, processor milliseconds")
    medians = {who: statistics.median(turns) for who, turns in times.items()}
    for who, median in medians.items():
        print(f"{who:10}{median:9.1f}")
    print(f"lumacart takes {medians['lumacart'] / medians['awk']:.3f} of awk's time")
    return 0


if __name__ == "__main__":
    sys.exit(main())

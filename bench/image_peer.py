#!/usr/bin/python3
"""Times a 10,000 x 10,000 image of 16-bit samples, most significant byte first, from the page cache to display bytes:
our libraries against numpy, on the same file, in turns, in the same run.

    bench/image_peer.py BUILD_DIR [SIDE]

Exits 1 when the two do not give the same display bytes. The last line is the ratio of the medians.
"""
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy

ROUNDS = 7


def write_product(folder, side):
    values = numpy.random.default_rng(1).integers(100, 30000, (side, side), dtype=numpy.int16)
    values.astype(">i2").tofile(folder / "peer.img")
    (folder / "peer.lbl").write_text(
        "RECORD_TYPE = FIXED_LENGTH\r\n"
        f"RECORD_BYTES = {2 * side}\r\nFILE_RECORDS = {side}\r\n"
        '^IMAGE = "peer.img"\r\n'
        f"OBJECT = IMAGE\r\nLINES = {side}\r\nLINE_SAMPLES = {side}\r\n"
        "SAMPLE_BITS = 16\r\nSAMPLE_TYPE = MSB_INTEGER\r\nEND_OBJECT = IMAGE\r\nEND\r\n")


def run_numpy(folder):
    start = time.perf_counter()
    samples = numpy.fromfile(folder / "peer.img", dtype=">i2").astype(numpy.int16)
    read = time.perf_counter()
    minimum, maximum = int(samples.min()), int(samples.max())
    ranged = time.perf_counter()
    step = numpy.float32((maximum + 1 - minimum) * 0.00390625)
    display = ((samples - minimum).astype(numpy.float32) / step).astype(numpy.int32).astype(numpy.uint8)
    mapped = time.perf_counter()
    return [(read - start) * 1e3, (ranged - read) * 1e3, (mapped - ranged) * 1e3], display


def run_ours(program, folder):
    done = subprocess.run([program, "--time", folder / "peer.lbl", folder / "display"],
                          check=True, capture_output=True, text=True)
    return [float(word) for word in done.stdout.split()], numpy.fromfile(folder / "display", dtype=numpy.uint8)


def main():
    program = pathlib.Path(sys.argv[1]) / "bin" / "display_bench"
    side = int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    times = {"lumacart": [], "numpy": []}
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name:
        folder = pathlib.Path(name)
        write_product(folder, side)
        for turn in range(ROUNDS + 1):
            ours, our_display = run_ours(program, folder)
            theirs, their_display = run_numpy(folder)
            if not numpy.array_equal(our_display, their_display):
                print("the display bytes differ")
                return 1
            if turn > 0:  # the first turn fills the page cache
                times["lumacart"].append(ours)
                times["numpy"].append(theirs)

    print(f"{side} x {side} samples, medians of {ROUNDS} turns, milliseconds")
    print(f"{'':10}{'read':>9}{'range':>9}{'display':>9}{'all':>9}")
    totals = {}
    for who, turns in times.items():
        phases = [statistics.median(column) for column in zip(*turns)]
        totals[who] = statistics.median(sum(turn) for turn in turns)
        print(f"{who:10}" + "".join(f"{value:9.1f}" for value in phases + [totals[who]]))
    print(f"lumacart takes {totals['lumacart'] / totals['numpy']:.3f} of numpy's time")
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Times browse mode's list of a directory of many files, from its start to the first file offered, against the same find
writing into a file, in turns in the same run.

    bench/browse_peer.py BUILD_DIR [FILES]

Prints the medians and their ratio.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 11
FILES_A_FOLDER = 1000


def write_tree(folder, files):
    for first in range(0, files, FILES_A_FOLDER):
        below = folder / f"volume{first // FILES_A_FOLDER}"
        below.mkdir()
        for number in range(first, min(files, first + FILES_A_FOLDER)):
            (below / f"product_{number}.lbl").touch()


def main():
    program = pathlib.Path(sys.argv[1]).resolve() / "bin" / "browse_listing"
    files = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    ours, theirs = [], []
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name:
        tree, working = pathlib.Path(name) / "tree", pathlib.Path(name) / "working"
        tree.mkdir()
        working.mkdir()
        write_tree(tree, files)
        command = f'find {tree} -name "*.*" -print > list'
        for turn in range(ROUNDS + 1):
            start = time.perf_counter()
            subprocess.run(["/bin/sh", "-c", command], cwd=working, env=dict(environment, LC_ALL="C"), check=True)
            peer = (time.perf_counter() - start) * 1e3
            answer = subprocess.run([program, tree], cwd=working, env=environment, check=True, capture_output=True)
            milliseconds, listed = answer.stdout.split()
            assert int(listed) == files, answer.stdout
            if turn > 0:  # the first turn fills the caches
                theirs.append(peer)
                ours.append(float(milliseconds))
    print(f"{files} files, medians of {ROUNDS} turns")
    print(f"  find         {statistics.median(theirs):8.1f} ms")
    print(f"  browse mode  {statistics.median(ours):8.1f} ms   {statistics.median(ours) / statistics.median(theirs):.2f} times")
    return 0


if __name__ == "__main__":
    sys.exit(main())

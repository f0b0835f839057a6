#!/usr/bin/env python3
"""Drives the real viewer under a virtual display. Usage: viewer_test.py VIEWER SAMPLES"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop, wait_for

VIEWER, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
SIDE = 512  # PLAIN_A is 512 x 512, 8 bit, stored as shown


def shown_grey(pixels, left, top, rows=SIDE):
    """Grey bytes of the picture's first rows in a screenshot; None where one is not grey."""
    width, _, rgb = pixels
    starts = (3 * ((top + y) * width + left) for y in range(rows))
    data = b"".join(rgb[start:start + 3 * SIDE] for start in starts)
    return data[0::3] if data[0::3] == data[1::3] == data[2::3] else None


def find_image(pixels, samples):
    """Top-left place of the picture in a screenshot, found by its rows."""
    width, height, rgb = pixels
    first = bytes(b for sample in samples[:SIDE] for b in (sample,) * 3)
    for top in range(height - SIDE + 1):
        at = rgb.find(first, 3 * top * width, 3 * (top + 1) * width)
        if at >= 0 and at % 3 == 0:
            left = at // 3 - top * width
            if left + SIDE <= width and shown_grey(pixels, left, top) == samples:
                return left, top
    return None


class Viewer(unittest.TestCase):
    def quit(self, desktop, window, program):
        desktop.press_until(window, "ctrl+q", lambda: program.poll() is not None, "end of the program")
        self.assertEqual(program.returncode, 0)

    def test_image_is_shown_inverted_and_read_out(self):
        samples = (SAMPLES / "PLAIN_A.IMG").read_bytes()
        with Desktop() as desktop:
            program = desktop.start(VIEWER, str(SAMPLES / "PLAIN_A.LBL"))
            window = desktop.window("Lumacart - Image - PLAIN_A.LBL")
            left, top = wait_for(lambda: find_image(desktop.pixels(window), samples), "picture, pixel for pixel")

            shown = lambda rows=SIDE: shown_grey(desktop.pixels(window), left, top, rows)
            desktop.press_until(window, "ctrl+e", lambda: shown() not in (None, samples), "stretched picture")
            desktop.press_until(window, "ctrl+z", lambda: shown() == samples, "picture as before")
            desktop.keys(window, "ctrl+i")
            wait_for(lambda: shown() == bytes(255 - sample for sample in samples), "inverted picture")
            desktop.keys(window, "ctrl+i")
            wait_for(lambda: shown() == samples, "picture as before")

            # The read-out covers the bottom of the picture while the mouse is over it, and nothing else.
            desktop.move_mouse(window, left + 100, top + 50)
            wait_for(lambda: shown() != samples, "read-out")
            upper = SIDE - 40
            self.assertEqual(shown(upper), samples[:SIDE * upper])

            self.quit(desktop, window, program)

    def test_starts_without_a_file_and_survives_bad_ones(self):
        with Desktop() as desktop:
            program = desktop.start(VIEWER)
            task = desktop.window("Lumacart")
            self.quit(desktop, task, program)
        with tempfile.TemporaryDirectory() as folder:
            hostile = pathlib.Path(folder) / "HUGE.LBL"
            text = (SAMPLES / "PLAIN_A.LBL").read_text().replace("LINES = 512", "LINES = 2000000000")
            hostile.write_text(text)
            shutil.copy(SAMPLES / "PLAIN_A.IMG", folder)
            for file in (hostile, pathlib.Path(folder) / "ABSENT.IMG", pathlib.Path(folder)):
                with self.subTest(file=file.name), Desktop() as desktop:
                    program = desktop.start(VIEWER, str(file))
                    box = desktop.window("Lumacart - Error")
                    desktop.press_until(box, "Return", lambda: not desktop.has_window("Lumacart - Error"),
                                        "end of the message box")
                    self.assertIsNone(program.poll())
                    self.quit(desktop, desktop.window("Lumacart"), program)

    def test_help_and_version_need_no_display(self):
        for option in ("--help", "--version"):
            done = subprocess.run([VIEWER, option], env={"PATH": "/usr/bin"}, capture_output=True, check=False)
            self.assertEqual(done.returncode, 0)
            self.assertIn(b"umacart", done.stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)

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
SAVE_TITLE = "Save file as:"
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
    rows = len(samples) // SIDE
    for top in range(height - rows + 1):
        at = rgb.find(first, 3 * top * width, 3 * (top + 1) * width)
        if at >= 0 and at % 3 == 0:
            left = at // 3 - top * width
            if left + SIDE <= width and shown_grey(pixels, left, top, rows) == samples:
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

    def write_product(self, folder):
        """A data file with its label beside it: the upper part, the middle and the rest of the sample image."""
        rows = (200, 100, 212)
        starts, classes = (1, 201, 301), ("IMAGE", "MIDDLE_IMAGE", "LOWER_IMAGE")
        lines = ["KRV_VERSION_ID = KRV3", "RECORD_TYPE = FIXED_LENGTH", f"RECORD_BYTES = {SIDE}", f"FILE_RECORDS = {SIDE}"]
        lines += [f'^{name} = ("THREE.IMG", {start})' for name, start in zip(classes, starts)]
        for name, count in zip(classes, rows):
            lines += [f"OBJECT = {name}", f"  LINES = {count}", f"  LINE_SAMPLES = {SIDE}", "  SAMPLE_BITS = 8",
                      "  SAMPLE_TYPE = UNSIGNED_INTEGER", "  MINIMUM = 0", "  MAXIMUM = 255", f"END_OBJECT = {name}"]
        lines.append("END")
        (folder / "THREE.LBL").write_bytes("".join(line + "\r\n" for line in lines).encode())
        shutil.copy(SAMPLES / "PLAIN_A.IMG", folder / "THREE.IMG")
        return "".join(line + "\n" for line in lines).encode()

    def test_product_is_walked_and_its_label_saved_by_keyboard(self):
        samples = (SAMPLES / "PLAIN_A.IMG").read_bytes()
        parts = samples[:200 * SIDE], samples[200 * SIDE:300 * SIDE]
        with tempfile.TemporaryDirectory() as name, Desktop() as desktop:
            folder = pathlib.Path(name)
            label = self.write_product(folder)
            program = desktop.start(VIEWER, str(folder / "THREE.IMG"))
            question = desktop.window("Lumacart - Question")
            desktop.press_until(question, "y", lambda: not desktop.has_window("Lumacart - Question"), "Yes")
            image = desktop.window("Lumacart - Image - THREE.LBL")
            wait_for(lambda: find_image(desktop.pixels(image), parts[0]), "first image of the label")

            def open_from(window, keys, title):
                desktop.press_until(window, keys, lambda: desktop.has_window(title), title)
                return desktop.window(title)

            hierarchy = open_from(image, "Escape alt+l h", "Lumacart - Object Hierarchy - THREE.LBL")
            images = lambda: [w for w in desktop.windows("Lumacart - Image - THREE.LBL") if w != image]
            # Line 0 is the file, 1 the first image.
            desktop.press_until(hierarchy, "Home Down Down Return", images, "window of the object")
            wait_for(lambda: find_image(desktop.pixels(images()[0]), parts[1]), "the middle image")

            text = open_from(image, "ctrl+shift+l", "Lumacart - Label/Text - THREE.LBL")
            dialog = open_from(text, "ctrl+shift+s", SAVE_TITLE)
            name_keys = "ctrl+a C O P Y period T X T Return"
            desktop.press_until(dialog, name_keys, lambda: not desktop.has_window(SAVE_TITLE), "end of the dialog")
            saved = desktop.window("Lumacart - Label/Text - COPY.TXT")
            self.assertEqual((folder / "COPY.TXT").read_bytes(), label)

            open_from(saved, "F1", "Text window and saving - Lumacart Help")
            self.quit(desktop, saved, program)

    def test_help_and_version_need_no_display(self):
        for option in ("--help", "--version"):
            done = subprocess.run([VIEWER, option], env={"PATH": "/usr/bin"}, capture_output=True, check=False)
            self.assertEqual(done.returncode, 0)
            self.assertIn(b"umacart", done.stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)

#!/usr/bin/env python3
"""Browses a directory on a timer with the real viewer under a virtual display. Usage: browse_test.py VIEWER SAMPLES"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop, wait_for

VIEWER, SAMPLES = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
CHOOSER = "Select a directory"
PRODUCTS = 50


class Browse(unittest.TestCase):
    def start(self, desktop, folder, tree, keys):
        """Enters browse mode in `tree` with the viewer started in `folder`; `keys` set up and start the walk."""
        with open(folder / "log", "wb") as log:
            program = subprocess.Popen([VIEWER], env=desktop.environment, cwd=folder, stderr=log)
        desktop.programs.append(program)
        task = desktop.window("Lumacart")
        desktop.press_until(task, "ctrl+b", lambda: desktop.has_window(CHOOSER), CHOOSER)
        chooser = desktop.window(CHOOSER)
        desktop.keys(chooser, "ctrl+a")
        desktop.ask("xdotool", "type", "--delay", "1", str(tree))
        desktop.press_until(chooser, "Return", lambda: not desktop.has_window(CHOOSER), "end of the chooser")
        desktop.keys(desktop.window("Browser"), *keys)
        return task, program

    def quit(self, desktop, task, program):
        desktop.press_until(task, "ctrl+q", lambda: program.poll() is not None, "end of the program")
        self.assertEqual(program.returncode, 0)

    def test_timed_walk_shows_every_product_and_tells_of_the_broken(self):
        with tempfile.TemporaryDirectory() as name, Desktop() as desktop:
            folder, tree = pathlib.Path(name), pathlib.Path(name) / "tree $(touch ran); 'x'"
            tree.mkdir()
            shutil.copy(SAMPLES / "PLAIN_A.IMG", tree / "DATA")
            label = (SAMPLES / "PLAIN_A.LBL").read_text().replace("PLAIN_A.IMG", "DATA")
            for number in range(PRODUCTS):
                broken = number % 10 == 0
                text = label.replace("LINES = 512", "LINES = 2000000000000") if broken else label
                (tree / f"P{number}.LBL").write_text(text)
            task, program = self.start(desktop, folder, tree, ["alt+t", "alt+v", "3", "alt+s"])
            shown, most = set(), 0

            def look():
                images = [desktop.ask("xdotool", "getwindowname", window).decode().strip() for window in
                          desktop.ask("xdotool", "search", "--onlyvisible", "--name", "Lumacart - ").decode().split()]
                self.assertFalse([title for title in images if title and not title.startswith("Lumacart - Image - P")])
                shown.update(filter(None, images))
                nonlocal most
                most = max(most, len(images))
                return len(shown) >= PRODUCTS * 9 // 10 and not desktop.has_window("Browser")

            wait_for(look, "end of the walk", 3 * PRODUCTS + 60)
            self.assertEqual(shown, {f"Lumacart - Image - P{number}.LBL Browser Number 1" for number in range(PRODUCTS)
                                     if number % 10})
            self.assertEqual(most, 1)
            log = (folder / "log").read_text()
            for number in range(PRODUCTS):
                self.assertEqual(number % 10 == 0, f"lumacart: {tree}/P{number}.LBL: " in log, log)
            self.assertEqual(sorted(file.name for file in folder.iterdir()), ["log", tree.name])
            self.quit(desktop, task, program)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)

#!/usr/bin/python3
"""Times the viewer from its start to the first drawing of the window of a 1,000 x 1,000 image of 16-bit samples, the file
in the page cache, against a program that shows an empty window of the same size: under one virtual display, in turns, in
the same run.

    bench/startup_peer.py BUILD_DIR

Both programs run as they are: an observer of the display waits until their window is on the screen and the pixel in its
middle is drawn. The last line is the ratio of the medians. Needs Xvfb and libX11.
"""
import ctypes
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 15
SIDE = 1000
LIMIT = 20  # seconds


def write_product(folder):
    path = folder / "bright.lbl"
    path.write_text(
        "RECORD_TYPE = FIXED_LENGTH\r\n"
        f"RECORD_BYTES = {2 * SIDE}\r\nFILE_RECORDS = {SIDE}\r\n"
        '^IMAGE = "bright.img"\r\n'
        f"OBJECT = IMAGE\r\nLINES = {SIDE}\r\nLINE_SAMPLES = {SIDE}\r\n"
        "SAMPLE_BITS = 16\r\nSAMPLE_TYPE = MSB_INTEGER\r\nEND_OBJECT = IMAGE\r\nEND\r\n")
    row = b"".join((15000 + 10 * sample).to_bytes(2, "big") for sample in range(SIDE))
    (folder / "bright.img").write_bytes(row * SIDE)
    return path


class Display:
    """An Xvfb and a connection to it. Its root is black; what a program draws is not."""

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1200x24", "-noreset", "-nolisten", "tcp"],
            pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as pipe:
            name = ":" + pipe.readline().strip()
        self.environment = dict(os.environ, DISPLAY=name, QT_QPA_PLATFORM="xcb")
        self.x = ctypes.CDLL("libX11.so.6")
        pointers = {"XOpenDisplay": [ctypes.c_char_p], "XGetImage": [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_int] * 2
                    + [ctypes.c_uint] * 2 + [ctypes.c_ulong, ctypes.c_int]}
        for function, arguments in pointers.items():
            getattr(self.x, function).restype = ctypes.c_void_p
            getattr(self.x, function).argtypes = arguments
        self.x.XGetPixel.restype = ctypes.c_ulong
        self.x.XGetPixel.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int]
        self.x.XDestroyImage.argtypes = [ctypes.c_void_p]
        self.x.XFree.argtypes = [ctypes.c_void_p]
        self.x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
        self.x.XDefaultRootWindow.restype = ctypes.c_ulong
        self.x.XQueryTree.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_void_p] * 4
        self.x.XFetchName.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_void_p]
        self.x.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_void_p]
        # A window may go between its listing and the question about it.
        self.ignore = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)(lambda *_: 0)
        self.x.XSetErrorHandler(self.ignore)
        self.display = self.x.XOpenDisplay(name.encode())
        self.root = self.x.XDefaultRootWindow(self.display)
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()

    def windows(self):
        """Ids of the root's children, the topmost last."""
        ids = ctypes.POINTER(ctypes.c_ulong)()
        count, other = ctypes.c_uint(), ctypes.c_ulong()
        if not self.x.XQueryTree(self.display, self.root, ctypes.byref(other), ctypes.byref(other), ctypes.byref(ids),
                                 ctypes.byref(count)):
            return []
        found = ids[:count.value]
        if ids:
            self.x.XFree(ids)
        return found

    def name(self, window):
        text = ctypes.c_char_p()
        if not self.x.XFetchName(self.display, window, ctypes.byref(text)) or not text.value:
            return ""
        return text.value.decode("latin-1")

    def is_drawn(self, window):
        """Whether the window is on the screen and the pixel in its middle, all of which is bright, is drawn."""
        attributes = (ctypes.c_int * 64)()  # x, y, width, height ...; the rest is not looked at
        if not self.x.XGetWindowAttributes(self.display, window, attributes) or attributes[2] < 400:
            return False
        image = self.x.XGetImage(self.display, window, attributes[2] // 2, attributes[3] // 2, 1, 1, 0xFFFFFF, 2)
        if not image:  # not on the screen
            return False
        pixel = self.x.XGetPixel(image, 0, 0)
        self.x.XDestroyImage(image)
        return pixel & 0xFFFFFF != 0

    def time(self, title, *command):
        """Milliseconds from the start of the program to the drawing of its window."""
        start = time.perf_counter()
        program = subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            while time.perf_counter() < start + LIMIT:
                if any(self.name(window).startswith(title) and self.is_drawn(window) for window in self.windows()):
                    return (time.perf_counter() - start) * 1e3
                time.sleep(0.0005)
            raise SystemExit(f"no window called {title} within {LIMIT} s")
        finally:
            program.kill()
            program.wait()
            while self.windows():  # the next turn must not see this one's
                time.sleep(0.01)


def main():
    programs = pathlib.Path(sys.argv[1]) / "bin"
    times = {"lumacart": [], "empty window": []}
    with tempfile.TemporaryDirectory(prefix="lumacart-bench-") as name, Display() as display:
        label = write_product(pathlib.Path(name))
        for turn in range(ROUNDS + 1):
            ours = display.time("Lumacart - Image", programs / "lumacart", label)
            theirs = display.time("Empty window", programs / "empty_window")
            if turn > 0:  # the first turn fills the page cache
                times["lumacart"].append(ours)
                times["empty window"].append(theirs)
    medians = {who: statistics.median(turns) for who, turns in times.items()}
    print(f"start to first drawing, {ROUNDS} turns, milliseconds")
    for who, turns in times.items():
        print(f"{who:13} median {medians[who]:7.1f}  least {min(turns):7.1f}  most {max(turns):7.1f}")
    print(f"lumacart takes {medians['lumacart'] / medians['empty window']:.2f} times the empty window")
    return 0


if __name__ == "__main__":
    sys.exit(main())

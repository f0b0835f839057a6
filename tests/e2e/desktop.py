"""A virtual display with the viewer on it: windows, keys, mouse, pixels."""
import os
import subprocess
import time


class Desktop:
    """Xvfb for the length of a `with` block."""

    def __init__(self, size="1280x1024"):
        self.size = size

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{self.size}x24", "-noreset", "-nolisten", "tcp"],
            pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as pipe:
            number = pipe.readline().strip()
        assert number, "Xvfb did not start"
        self.environment = dict(os.environ, DISPLAY=":" + number, QT_QPA_PLATFORM="xcb")
        self.environment.pop("WAYLAND_DISPLAY", None)
        self.programs = []
        return self

    def __exit__(self, *_):
        for program in self.programs:
            if program.poll() is None:
                program.kill()
            program.wait()
        self.server.terminate()
        self.server.wait()

    def start(self, *command):
        program = subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL)
        self.programs.append(program)
        return program

    def ask(self, *command):
        return subprocess.run(command, env=self.environment, capture_output=True, check=False).stdout

    def windows(self, title):
        """Ids of the visible windows whose whole title is `title`."""
        windows = self.ask("xdotool", "search", "--onlyvisible", "--name", ".").decode().split()
        return [w for w in windows if self.ask("xdotool", "getwindowname", w).decode().rstrip("\n") == title]

    def window(self, title, seconds=20):
        """Id of such a window; fails when none comes."""
        return wait_for(lambda: self.windows(title), f"a window called {title!r}", seconds)[0]

    def has_window(self, title):
        return bool(self.windows(title))

    def keys(self, window, *keys):
        self.ask("xdotool", "windowfocus", "--sync", window)
        for key in keys:
            self.ask("xdotool", "key", key)

    def press_until(self, window, keys, done, what):
        """Presses keys (parted by blanks), again after a while: one sent before the window listens is lost."""
        def press():
            if done():
                return True
            self.keys(window, *keys.split())
            return any(done() or time.sleep(0.1) for _ in range(20))
        wait_for(press, what)

    def move_mouse(self, window, x, y):
        self.ask("xdotool", "mousemove", "--window", window, str(x), str(y))

    def pixels(self, window):
        """(width, height, RGB bytes) of a window."""
        ppm = self.ask("import", "-window", window, "-depth", "8", "ppm:-")
        magic, width, height, depth = ppm.split(maxsplit=4)[:4]
        assert magic == b"P6" and depth == b"255"
        width, height = int(width), int(height)
        return width, height, ppm[-3 * width * height:]


def wait_for(probe, what, seconds=20):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = probe()
        if found:
            return found
        time.sleep(0.1)
    raise AssertionError(f"no {what} within {seconds} s")

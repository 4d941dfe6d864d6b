#!/usr/bin/env python3
"""Plays a user on the showcase in a window of a real X server and looks at the screen.

    check_x11.py QORL SHOWCASE [unittest arguments]

The same steps are played twice: by `qorl drive` without a screen, and by a mouse and keyboard of the X server (Xvfb,
with openbox as window manager, both private) on `qorl show`. After each step the screen must come to show, pixel for
pixel, what the driven window shows, and the control that the step is for must have changed.
"""
import contextlib
import os
import re
import select
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from pictures import Picture, read_png, swap_channels

QORL = ""
SHOWCASE = Path()
TEMPLATE = "Panel"
SCREEN = (1280, 1024)
# How long a busy machine may take until the screen shows what it must; what comes sooner is seen sooner.
PATIENCE = 60

# What the user does | the control whose picture changes by it. Two clicks in a row never go to one place, since they
# would be a double click when they come quickly, and no step rests on a control with a tip, which would cover others.
STEPS = [
    ("move 700,514", None),
    ("click oscSync", "oscSync"),
    ("click delay", "delay"),
    ("click snapshot", "snapshot"),
    ("drag env1 14,70 -> 14,460", "env1"),
    ("drag reverbSize 40,10 -> 900,10", "reverbSize"),
    ("wheel chorusDepth 1", "chorusDepth"),
    ("wheel chorusDepth 1", "chorusDepth"),
    ("wheel chorusDepth -1", "chorusDepth"),
    ("click limiter", "limiter"),
    ("key Return", "limiter"),
    ("key Tab", "mix"),
    ("key Right Arrow", "mix"),
    ("key End", "mix"),
    ("resize 1000x600", "mix"),
    ("click filterSteep", "filterSteep"),
]
KEYS = {"Right Arrow": "Right"}
LEFT_BUTTON, WHEEL_UP, WHEEL_DOWN = "1", "4", "5"


def wait_for(condition, watched, what):
    """The first true answer of `condition`, which is asked again whenever one of `watched` has something to read.
    `what`, a text or what makes one, tells what never came."""
    end = time.monotonic() + PATIENCE
    while True:
        answer = condition()
        if answer:
            return answer
        if not select.select(watched, [], [], max(0, end - time.monotonic()))[0]:
            raise AssertionError(what() if callable(what) else what)


class Changes:
    """Tells that something was drawn on the screen or that another window is the active one: a connection to the X
    server that asks for nothing else (core protocol, and DAMAGE 1.1)."""

    ROOT_PROPERTY_CHANGES = 1 << 22

    def __init__(self, display):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(f"\0/tmp/.X11-unix/X{display}")
        self.socket.sendall(struct.pack("<BxHHHHxx", ord("l"), 11, 0, 0, 0))
        status, words = struct.unpack("<B5xH", self.read(8))
        setup = self.read(words * 4)
        if status != 1:
            raise AssertionError("the X server refuses a connection")
        first_id, = struct.unpack_from("<I", setup, 4)
        vendor, formats = struct.unpack_from("<H", setup, 16)[0], setup[21]
        root, = struct.unpack_from("<I", setup, 32 + (vendor + 3) // 4 * 4 + formats * 8)
        damage = self.ask(struct.pack("<BxHHxx8s", 98, 4, 6, b"DAMAGE"))
        present, self.opcode, self.first_event, _ = struct.unpack_from("<4B", damage, 8)
        if not present:
            raise AssertionError("the X server has no extension DAMAGE")
        self.ask(struct.pack("<BBHII", self.opcode, 0, 3, 1, 1))
        self.damage = first_id
        non_empty = 3
        self.socket.sendall(struct.pack("<BBHIIBxxx", self.opcode, 1, 4, self.damage, root, non_empty))
        self.socket.sendall(struct.pack("<BxHIII", 2, 4, root, 1 << 11, self.ROOT_PROPERTY_CHANGES))

    def read(self, count):
        data = b""
        while len(data) < count:
            part = self.socket.recv(count - len(data))
            if not part:
                raise AssertionError("the X server has ended")
            data += part
        return data

    def ask(self, request):
        self.socket.sendall(request)
        return self.read(32)

    def fileno(self):
        return self.socket.fileno()

    def forget(self):
        """What happened until now is known. Whoever looks at the screen forgets first, so that nothing is missed."""
        while select.select([self], [], [], 0)[0]:
            self.read(32)
        self.socket.sendall(struct.pack("<BBHIII", self.opcode, 3, 4, self.damage, 0, 0))


class Screen:
    """An X server that keeps its pixels in a file, and a window manager on it."""

    def __init__(self, folder):
        for program in ("Xvfb", "openbox", "xdotool", "setpriv"):
            if not shutil.which(program):
                raise AssertionError(f"{program} is missing; ./dev setup installs it")
        self.children = []
        self.folder = folder
        self.environment = dict(os.environ, XDG_CONFIG_HOME=str(folder))
        self.environment.pop("WAYLAND_DISPLAY", None)
        read_end, write_end = os.pipe()
        self.launch("Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{SCREEN[0]}x{SCREEN[1]}x24", "-dpi", "96",
                    "-fbdir", str(folder), "-nocursor", "-noreset", "-nolisten", "tcp", pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as line:
            number = line.readline().strip()
        if not number:
            raise AssertionError("Xvfb did not start")
        self.environment["DISPLAY"] = ":" + number
        self.changes = Changes(number)
        # Windows that open while it still starts are never managed.
        manager = self.launch("openbox", "--sm-disable", "--config-file", "/etc/xdg/openbox/rc.xml",
                              "--startup", "echo ready", stdout=subprocess.PIPE)
        if b"ready\n" not in iter(manager.stdout.readline, b""):
            raise AssertionError("openbox did not start")

    def launch(self, *words, **options):
        # Nothing outlives this program, however it ends.
        options = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **options}
        child = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *words], env=self.environment, **options)
        self.children.append(child)
        return child

    def close(self):
        for child in reversed(self.children):
            child.terminate()
            try:
                child.wait(PATIENCE)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()
            for end in filter(None, (child.stdout, child.stderr)):
                end.close()
        self.changes.socket.close()

    def do(self, *words):
        """One run of xdotool; what it prints, empty when it fails."""
        result = subprocess.run(["xdotool", *map(str, words)], env=self.environment, capture_output=True, text=True,
                                timeout=PATIENCE)
        return result.stdout if result.returncode == 0 else ""

    def picture(self, left, top, width, height):
        data = (self.folder / "Xvfb_screen0").read_bytes()
        header = struct.unpack_from(">20I", data)
        bits, stride, colours = header[11], header[12], header[19]
        assert bits == 32 and header[7] == 0, "the screen has another form of pixels"
        starts = [header[0] + colours * 12 + y * stride + left * 4 for y in range(top, top + height)]
        return Picture(width, height, [swap_channels(data[start:start + width * 4], blue=0, green=1, red=2, step=4)
                                       for start in starts])


class ShownWindow:
    """`qorl show`, and a user at it."""

    def __init__(self, screen, skin, title, *options):
        self.screen = screen
        self.said = ""
        self.process = screen.launch(QORL, "show", skin, TEMPLATE, *options, stderr=subprocess.PIPE)
        os.set_blocking(self.process.stderr.fileno(), False)
        # The window manager's mark: before it the window may still be moved into its frame.
        self.window = self.wait_for(self.find(title), self.complaint("no window opened"))
        self.origin = self.find_origin()

    def wait_for(self, condition, what):
        """As the function, until the screen or what the program tells says so, or it has ended."""
        def answer():
            self.screen.changes.forget()
            self.listen()
            return condition() or self.process.poll() is not None
        answered = wait_for(answer, [self.screen.changes, self.process.stderr], what)
        if self.process.poll() is not None:
            raise AssertionError(what() if callable(what) else what)
        return answered

    def listen(self):
        self.said += (self.process.stderr.read() or b"").decode()

    def hear(self, words):
        """Waits until the program has told something, and forgets all that it told."""
        self.wait_for(lambda: words in self.said, self.complaint(f"never heard {words!r}"))
        said, self.said = self.said, ""
        return said

    def find(self, title):
        return lambda: self.screen.do("getactivewindow", "getwindowname") == title + "\n" and \
            self.screen.do("getactivewindow").strip()

    def complaint(self, what):
        def text():
            self.listen()
            return f"{what}; exit status {self.process.poll()}, standard error: {self.said!r}"
        return text

    def tell(self, picture):
        if self.process.poll() is not None:
            return self.complaint("the program has ended")()
        return self.picture().difference(picture)

    def picture(self):
        words = dict(line.split("=") for line in
                     self.screen.do("getwindowgeometry", "--shell", self.window).split())
        return self.screen.picture(*self.origin, int(words["WIDTH"]), int(words["HEIGHT"]))

    def point(self, x, y):
        self.screen.do("mousemove", "--window", self.window, x, y)

    def find_origin(self):
        """Where the window stands inside of its frame, told by the mouse."""
        self.point(0, 0)
        words = dict(line.split("=") for line in self.screen.do("getmouselocation", "--shell").split())
        return int(words["X"]), int(words["Y"])

    def play(self, step, views):
        """A step of a script. `views` are the places of the views by their names."""
        verb, _, rest = step.partition(" ")
        if verb == "move":
            self.point(*numbers(rest))
        elif verb == "resize":
            self.screen.do("windowsize", self.window, *numbers(rest))
        elif verb == "key":
            self.screen.do("key", KEYS.get(rest, rest))
        elif verb == "click":
            self.point(*middle(views[rest]))
            self.screen.do("click", LEFT_BUTTON)
        elif verb == "wheel":
            name, notches = rest.split()
            self.point(*middle(views[name]))
            self.screen.do("click", {"1": WHEEL_UP, "-1": WHEEL_DOWN}[notches])
        elif verb == "drag":
            name, _, way = rest.partition(" ")
            left, top, _, _ = views[name]
            from_x, from_y, to_x, to_y = numbers(way)
            self.point(left + from_x, top + from_y)
            self.screen.do("mousedown", LEFT_BUTTON)
            self.point(left + (from_x + to_x) // 2, top + (from_y + to_y) // 2)
            self.point(left + to_x, top + to_y)
            self.screen.do("mouseup", LEFT_BUTTON)
        else:
            raise AssertionError(f"nobody plays {step!r} here")


def numbers(text):
    return [int(word) for word in re.findall(r"-?\d+", text)]


def middle(rect):
    left, top, width, height = rect
    return left + width // 2, top + height // 2


def read_places(tree):
    """The rects of the named views in the window, the first of each name, from a printed tree."""
    places, origins = {}, []
    for line in tree.splitlines()[1:]:
        found = re.match(r'( *)\w+(?: "([^"]*)")? (-?\d+),(-?\d+) (\d+)x(\d+)', line)
        depth = len(found[1]) // 2 - 1
        left, top = (sum(pair) for pair in zip(origins[depth - 1] if depth else (0, 0), numbers(found[3] + " " + found[4])))
        client = re.search(r"\bclient (-?\d+),(-?\d+) ", line)
        inset = numbers(client[0]) if client else (0, 0)
        del origins[depth:]
        origins.append((left + inset[0], top + inset[1]))
        places.setdefault(found[2], (left, top, int(found[5]), int(found[6])))
    return places


class OnAScreen(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="qorl-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def show(self, skin, *options):
        screen = Screen(self.folder)
        self.addCleanup(screen.close)
        return ShownWindow(screen, skin, "Nocturne", *options)

    def drive(self, skin, steps):
        """The files of the driven window's pictures and the places in it: first as it opens, then after each step."""
        script = ["tree 0.txt", "shot 0.png"]
        for number, step in enumerate(steps, 1):
            script += [step, f"tree {number}.txt", f"shot {number}.png"]
        result = subprocess.run([QORL, "drive", skin, TEMPLATE, "--script", "-"], cwd=self.folder,
                                input="\n".join(script), capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return [(self.folder / f"{number}.png", read_places((self.folder / f"{number}.txt").read_text()))
                for number in range(len(steps) + 1)]

    def end(self, shown):
        # The window manager misses a key at times.
        end = time.monotonic() + PATIENCE
        while shown.process.poll() is None and time.monotonic() < end:
            shown.screen.do("key", "alt+F4")
            with contextlib.suppress(subprocess.TimeoutExpired):
                shown.process.wait(2)
        self.assertEqual(shown.process.returncode, 0, shown.complaint("it did not end well")())
        shown.listen()
        self.assertEqual(shown.said, "")


class Showcase(OnAScreen):
    def test_real_mouse_and_keys_do_what_driven_ones_do(self):
        skin = SHOWCASE / "skin.xml"
        expected = self.drive(skin, [step for step, _ in STEPS])
        shown = self.show(skin)
        places = expected[0][1]
        for (step, control), (file, new_places) in zip([("open", None), *STEPS], expected):
            picture, before = read_png(file), shown.picture()
            if step != "open":
                shown.play(step, places)
            shown.wait_for(lambda: shown.picture() == picture,
                           lambda: f'after "{step}" the screen is not what it is when driven: ' + shown.tell(picture))
            if control:
                self.assertFalse(before.cut(*places[control]) == shown.picture().cut(*new_places[control]),
                                 f"{control} looks as before")
            places = new_places
        self.end(shown)


class Watch(OnAScreen):
    """What a designer saves is on the screen as soon as it is whole."""

    def save(self, path, content):
        """As editors do: in one step."""
        new = self.folder / "new"
        new.write_bytes(content)
        new.replace(path)

    def test_screen_follows_what_is_saved_and_keeps_what_is_broken(self):
        copy = self.folder / "skin"
        shutil.copytree(SHOWCASE, copy)
        skin, include, bitmap = copy / "skin.xml", copy / "templates" / "mixer.xml", copy / "bitmaps" / "logo.png"
        place, click = STEPS[0][0], "click delay"
        shown = self.show(skin, "--watch")
        places = self.drive(skin, [])[0][1]
        shown.play(click, places)
        shown.play(place, places)
        seen = []

        def follow(what):
            picture = read_png(self.drive(skin, [click, place])[-1][0])
            self.assertNotIn(picture.rows, seen, f"{what} changes nothing to see")
            shown.wait_for(lambda: shown.picture() == picture,
                           lambda: f"{what} does not come to the screen: " + shown.tell(picture))
            seen.append(picture.rows)

        def change(path, old, new):
            text = path.read_bytes()
            self.assertIn(old, text)
            self.save(path, text.replace(old, new, 1))

        follow("the start")
        change(skin, b'name="bar" value="52"', b'name="bar" value="44"')
        follow("a saved skin")
        self.assertEqual(shown.hear("reloaded\n"), "qorl: reloaded\n")
        whole = skin.read_bytes()
        for broken, told in ((whole[:whole.index(b"</template>")], f"{skin}:"),
                             (whole.replace(b'name="Panel"', b'name="Pane"'), 'no template "Panel"')):
            self.save(skin, broken)
            self.assertRegex(shown.hear(told), r":\d+:\d+: error: |^qorl: ")
            self.assertEqual(shown.picture().rows, seen[-1], "a broken skin is to be seen")
        self.save(skin, whole.replace(b"8,60,904,228", b"8,50,904,228"))
        follow("a mended skin")
        change(include, b'titleNT="MASTER"', b'titleNT="ALL"')
        follow("a saved include")
        self.save(bitmap, (SHOWCASE / "bitmaps" / "led.png").read_bytes())
        follow("a saved bitmap")
        shown.hear("reloaded\n")
        self.end(shown)


if __name__ == "__main__":
    QORL, SHOWCASE = os.path.abspath(sys.argv[1]), Path(sys.argv[2]).resolve()
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])

"""A private session of a desktop: its screen, bus and home folder, the hand and the eyes of a person."""

import os
import re
import shutil
import subprocess
import tempfile
import time

SCREEN = (1280, 900)


def wait_until(condition, seconds=6.0):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.05)
    return condition()


class Session:
    """A screen, a bus and a home folder, and whatever was started there."""

    def __init__(self, name, pictures):
        self.name = name
        self.pictures = pictures
        self.home = tempfile.mkdtemp(prefix="desktop-")
        self.children = []
        # A compositor of this kind refuses to run for root: then its whole session is another user's.
        self.user = {"user": 65534, "group": 65534, "extra_groups": []} if name.startswith("sway") and not os.geteuid() else {}
        self.wayland = name.startswith("sway")
        self.env = {"PATH": os.environ["PATH"], "HOME": self.home, "XDG_RUNTIME_DIR": self.home, "LC_ALL": "C.UTF-8",
                    "XDG_CONFIG_HOME": self.home + "/.config", "XDG_DATA_HOME": self.home + "/.local/share",
                    "GSETTINGS_BACKEND": "memory", "XDG_CURRENT_DESKTOP": "test", "NO_AT_BRIDGE": "1"}
        if self.wayland:
            self.env.update(WLR_BACKENDS="x11", WLR_RENDERER="pixman")

    def spawn(self, command, **more):
        log = open(os.path.join(self.home, "log-" + os.path.basename(command[0])), "ab")
        child = subprocess.Popen(command, env={**self.env, **more.pop("env", {})}, stdout=log, stderr=log,
                                 stdin=subprocess.DEVNULL, start_new_session=True, **self.user, **more)
        self.children.append(child)
        return child

    def run(self, command, **more):
        return subprocess.run(command, env=self.env, capture_output=True, timeout=10, text=True, **self.user,
                              **more).stdout

    def end(self):
        for child in reversed(self.children):
            try:
                os.killpg(child.pid, 15)
            except ProcessLookupError:
                pass
        time.sleep(0.3)
        for child in self.children:
            try:
                os.killpg(child.pid, 9)
            except ProcessLookupError:
                pass
            child.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def start(self, commands, files):
        for name, content in files.items():
            path = os.path.join(self.home, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)
        if self.user:
            for folder, _, names in os.walk(self.home):
                for path in [folder] + [os.path.join(folder, each) for each in names]:
                    os.chown(path, 65534, 65534)
        address = "unix:path=" + self.home + "/bus"
        self.spawn(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address])
        wait_until(lambda: os.path.exists(self.home + "/bus"))
        self.env["DBUS_SESSION_BUS_ADDRESS"] = address
        self.start_x()  # a compositor stands in a window of it
        self.spawn(["/usr/libexec/at-spi-bus-launcher"])
        for command in commands:
            self.spawn([part.format(home=self.home) for part in command])
            if command[0] == "sway":
                self.meet_sway()
            else:
                time.sleep(1.5)
        time.sleep(1.0)

    def start_x(self):
        reader, writer = os.pipe()
        self.spawn(["Xvfb", "-displayfd", str(writer), "-screen", "0", "%dx%dx24" % SCREEN, "-nolisten", "tcp",
                    "-noreset"], pass_fds=[writer])
        os.close(writer)
        with open(reader, encoding="ascii") as number:
            self.screen = self.env["DISPLAY"] = ":" + number.readline().strip()
        self.run(["xsetroot", "-solid", "#406080"])
        self.run(["dbus-update-activation-environment", "DISPLAY"])

    def meet_sway(self):
        def sockets(pattern):
            return [name for name in os.listdir(self.home) if re.fullmatch(pattern, name)]
        wait_until(lambda: sockets(r"wayland-\d+") and sockets(r"sway-ipc.*sock"))
        del self.env["DISPLAY"]
        self.env["WAYLAND_DISPLAY"] = sockets(r"wayland-\d+")[0]
        self.env["SWAYSOCK"] = os.path.join(self.home, sockets(r"sway-ipc.*sock")[0])
        if "XWayland" in self.name:
            def display():
                out = self.run(["swaymsg", "exec", "env > " + self.home + "/sway-env"])
                time.sleep(0.2)
                try:
                    with open(self.home + "/sway-env", encoding="utf-8") as file:
                        found = re.search(r"^DISPLAY=(.*)$", file.read(), re.M)
                        return found and found.group(1)
                except OSError:
                    return out and None
            self.env["DISPLAY"] = wait_until(display) or ""
        time.sleep(1.0)

    # The hand.

    def hand(self, *command):
        subprocess.run(["xdotool", *command], env={**self.env, "DISPLAY": self.screen}, timeout=10, check=False)

    def point(self, x, y):
        self.hand("mousemove", str(x), str(y))

    def click(self, x, y, hold=0.05):
        self.point(x, y)
        time.sleep(0.1)
        self.hand("mousedown", "1")
        time.sleep(hold)
        self.hand("mouseup", "1")

    def key(self, name):
        self.hand("key", name)

    # The eyes.

    def picture(self, what):
        from PIL import Image
        name = re.sub(r"[^a-z0-9]+", "-", self.name.lower()).strip("-")
        taken = os.path.join(self.home, "picture.png")
        subprocess.run(["import", "-window", "root", taken], env={**self.env, "DISPLAY": self.screen}, timeout=10,
                       check=True)
        return Image.open(shutil.copy(taken, os.path.join(self.pictures, "%s-%s.png" % (name, what)))).convert("RGB")

#!/usr/bin/python3
"""How Purlock behaves on many desktops: one private session for each, with a real window manager or compositor
and a real bar, a hand on the mouse and the keyboard, and a screen reader's view.

    tests/desktops/desktops.py <program> <folder for pictures> [<desktop> ...]

Prints a table in Markdown. Each session has its own bus, home and screen, and ends by process id. A desktop
whose programs are not installed is said to be missing."""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

SCREEN = (1280, 900)
COLUMNS = ["icon", "light bar", "opens at the icon", "click outside", "every workspace", "keyboard", "screen reader"]
GROUND = (37, 37, 40)  # of the panel

TINT2 = """panel_items = S
panel_size = 100% 30
panel_position = top center horizontal
systray_padding = 4 4 4
systray_icon_size = 22
rgba1 = #f0f0f0 100
panel_background_id = 1
background_color = #f0f0f0 100
"""
XFCE = """<?xml version="1.0"?><channel name="xfce4-panel" version="1.0">
<property name="configver" type="int" value="2"/><property name="panels" type="array"><value type="int" value="1"/>
<property name="panel-1" type="empty"><property name="position" type="string" value="p=6;x=0;y=0"/>
<property name="length" type="uint" value="100"/><property name="position-locked" type="bool" value="true"/>
<property name="size" type="uint" value="30"/><property name="background-style" type="uint" value="1"/>
<property name="background-rgba" type="array"><value type="double" value="0.95"/><value type="double" value="0.95"/>
<value type="double" value="0.95"/><value type="double" value="1"/></property>
<property name="plugin-ids" type="array"><value type="int" value="1"/></property></property></property>
<property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property></channel>
"""
LXPANEL = """Global {
  edge=top
  align=left
  margin=0
  widthtype=percent
  width=100
  height=30
  transparent=1
  tintcolor=#f0f0f0
  alpha=255
  setdocktype=1
  setpartialstrut=1
  iconsize=24
}
Plugin {
  type=tray
}
"""
LXQT = """[General]
panels=panel1
[panel1]
alignment=0
desktop=0
iconSize=22
lineCount=1
panelSize=32
plugins=statusnotifier
position=Bottom
width=100
width-percent=true
background-color=#f0f0f0
[statusnotifier]
type=statusnotifier
"""
I3 = """# i3 config file (v4)
font pango:monospace 10
bar {
  position bottom
  status_command while :; do echo; sleep 60; done
  colors {
    background #f0f0f0
    statusline #202020
  }
}
"""
POLYBAR = """[bar/light]
override-redirect = true
width = 100%
height = 30
background = #f0f0f0
modules-right = tray
tray-position = right
tray-background = #f0f0f0
[module/tray]
type = custom/text
content = " "
"""
JWM = """<JWM><Desktops width="2" height="1"/><Tray x="0" y="-1" height="30" autohide="off"><Dock/></Tray>
<TrayStyle><Background>#f0f0f0</Background></TrayStyle></JWM>"""
SWAY = """output X11-1 mode --custom 1280x900
xwayland {xwayland}
default_border none
seat * hide_cursor 0
"""
WAYBAR = """{"layer": "top", "position": "top", "height": 30, "modules-right": ["tray"], "tray": {"icon-size": 21}}"""
WAYBAR_STYLE = "* { border: none; } window#waybar { background: #f0f0f0; color: #202020; }"

# name: the programs in the order in which they start, the files that they read below the home folder, and how
# they switch to the second workspace.
EWMH = ["wmctrl", "-s", "1"]
DESKTOPS = {
    "openbox, tint2": ([["openbox"], ["tint2", "-c", "{home}/tint2rc"]], {"tint2rc": TINT2}, EWMH),
    "xfwm4, xfce4-panel": ([["xfwm4", "--compositor=off"], ["xfce4-panel", "--disable-wm-check"]],
                           {".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml": XFCE}, EWMH),
    "KWin (X11), lxqt-panel": ([["kwin_x11"], ["lxqt-panel"]], {".config/lxqt/panel.conf": LXQT,
                               ".config/kwinrc": "[Desktops]\nNumber=2\nRows=1\n"}, EWMH),
    "metacity, lxpanel": ([["metacity"], ["lxpanel", "-p", "light"]],
                          {".config/lxpanel/light/panels/panel": LXPANEL}, EWMH),
    "marco, mate-panel": ([["marco", "--no-composite"], ["mate-panel"]], {}, EWMH),
    "fluxbox and its toolbar": ([["fluxbox"]], {".fluxbox/init":
                                "session.screen0.toolbar.tools: systemtray\nsession.screen0.workspaces: 2\n"}, EWMH),
    "icewm and its taskbar": ([["icewm"]], {".icewm/preferences": "TaskBarShowTray=1\nTaskBarShowCPUStatus=0\nTaskBarShowNetStatus=0\nTaskBarShowMEMStatus=0\n"
                              "TaskBarShowClock=0\nTaskBarShowAPMStatus=0\nTaskBarShowMailboxStatus=0\nColorDefaultTaskBar=\"rgb:F0/F0/F0\"\n",
                              ".icewm/theme": 'Theme="default/default.theme"\n'}, EWMH),
    "jwm and its tray": ([["jwm"]], {".jwmrc": JWM}, EWMH),
    "openbox, trayer": ([["openbox"], ["trayer", "--edge", "top", "--align", "right", "--width", "10", "--height",
                         "30", "--tint", "0xf0f0f0", "--alpha", "0", "--transparent", "true"]], {}, EWMH),
    "openbox, polybar": ([["openbox"], ["polybar", "-c", "{home}/polybar", "light"]], {"polybar": POLYBAR}, EWMH),
    "awesome and its bar": ([["awesome"]], {}, EWMH),
    "i3, i3bar": ([["i3", "-c", "{home}/i3.conf"]], {"i3.conf": I3}, ["i3-msg", "workspace", "2"]),
    "sway (XWayland), waybar": ([["sway", "-c", "{home}/sway"], ["waybar"]],
                                {"sway": SWAY.format(xwayland="enable"), ".config/waybar/config": WAYBAR,
                                 ".config/waybar/style.css": WAYBAR_STYLE}, ["swaymsg", "workspace", "2"]),
    "sway (Wayland alone), waybar": ([["sway", "-c", "{home}/sway"], ["waybar"]],
                                     {"sway": SWAY.format(xwayland="disable"), ".config/waybar/config": WAYBAR,
                                      ".config/waybar/style.css": WAYBAR_STYLE}, ["swaymsg", "workspace", "2"]),
}


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


def changed_area(before, after):
    """The box around what differs, in the bars at the edges of the screen."""
    from PIL import ImageChops
    width, height = SCREEN
    bar = 40
    for box in [(0, 0, width, bar), (0, height - bar, width, height)]:
        difference = ImageChops.difference(before.crop(box), after.crop(box)).convert("L").point(
            lambda value: 255 if value > 24 else 0)
        found = difference.getbbox()
        if found:
            return (found[0] + box[0], found[1] + box[1], found[2] + box[0], found[3] + box[1])
    return None


def luminance(color):
    parts = [value / 255 for value in color]
    parts = [part / 12.92 if part <= 0.03928 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]


def contrast(one, other):
    lighter, darker = sorted([luminance(one), luminance(other)], reverse=True)
    return (lighter + 0.05) / (darker + 0.05)


def panel_area(picture):
    """Where the panel's ground is, by its colour."""
    width, height = SCREEN
    pixels = picture.load()
    columns = [x for x in range(width) if sum(pixels[x, y] == GROUND for y in range(0, height, 6)) > 30]
    if not columns:
        return None
    middle = (columns[0] + columns[-1]) // 2
    rows = [y for y in range(height) if sum(pixels[x, y] == GROUND
                                            for x in range(columns[0], columns[-1], 12)) > 8]
    return (columns[0], rows[0], columns[-1] + 1, rows[-1] + 1) if rows and middle else None


class Reader:
    """What a screen reader meets; in a process of its own, for the library reads the environment once."""

    SCRIPT = r'''
import json, sys, gi, time
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi
Atspi.set_timeout(2000, 4000)
wanted = sys.argv[1]
def read(node, depth=0):
    states = node.get_state_set()
    kids = [node.get_child_at_index(i) for i in range(node.get_child_count())] if depth < 30 else []
    return {"role": node.get_role_name(), "name": node.get_name() or "",
            "showing": states.contains(Atspi.StateType.SHOWING), "focused": states.contains(Atspi.StateType.FOCUSED),
            "checked": states.contains(Atspi.StateType.CHECKED),
            "children": [read(kid, depth + 1) for kid in kids if kid]}
def press(node, name, action):
    if node.get_name() == name and node.get_n_actions() > 0:
        for i in range(node.get_n_actions()):
            if node.get_action_name(i) == action:
                return node.do_action(i)
    return any(press(node.get_child_at_index(i), name, action) for i in range(node.get_child_count()))
desktop = Atspi.get_desktop(0)
for i in range(desktop.get_child_count()):
    app = desktop.get_child_at_index(i)
    if app and app.get_name() == "Purlock":
        if wanted == "press":
            print(json.dumps(press(app, sys.argv[2], sys.argv[3])))
        else:
            print(json.dumps([read(app.get_child_at_index(k)) for k in range(app.get_child_count())]))
        break
'''

    def __init__(self, session):
        self.session = session

    def switch_on(self):
        self.session.run(["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
                          "org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status", "string:IsEnabled",
                          "variant:boolean:true"])

    def ask(self, *arguments):
        try:
            out = self.session.run(["/usr/bin/python3", "-c", self.SCRIPT, *arguments])
            return json.loads(out) if out.strip() else None
        except (subprocess.TimeoutExpired, json.JSONDecodeError):
            return None

    def windows(self):
        return [window for window in self.ask("read") or [] if window["showing"]]

    def press(self, name, action="Press"):
        return self.ask("press", name, action)


def flat(node):
    yield node
    for child in node["children"]:
        yield from flat(child)


def judge(session, program):
    """A cell for each column: "yes", or what was seen instead."""
    cells = {}
    width, height = SCREEN
    session.point(width // 2, height - 120)
    time.sleep(0.4)
    before = session.picture("bar")
    purlock = session.spawn([program])
    time.sleep(2.0)
    shown = session.picture("icon")
    icon = changed_area(before, shown)
    if purlock.poll() is not None:
        return {column: "the program has ended" for column in COLUMNS}
    if not icon:
        return {column: "no icon" for column in COLUMNS}
    size = (icon[2] - icon[0], icon[3] - icon[1])
    cells["icon"] = "yes" if min(size) >= 12 else "%d × %d pixels" % size
    ground = before.getpixel((icon[0], icon[1]))
    best = sorted((contrast(shown.getpixel((x, y)), ground) for x in range(icon[0], icon[2])
                   for y in range(icon[1], icon[3])), reverse=True)
    ratio = best[min(len(best) - 1, 24)]
    is_light = luminance(ground) > 0.5
    cells["light bar"] = "%s%.1f:1" % ("yes, " if ratio >= 3 and is_light else "" if is_light else "dark bar, ", ratio)
    center = ((icon[0] + icon[2]) // 2, (icon[1] + icon[3]) // 2)

    def panel(what="panel"):
        return panel_area(session.picture(what))

    def comes(what="panel"):
        return wait_until(lambda: panel(what))

    def goes(what="gone"):
        return wait_until(lambda: not panel(what), 3.0)

    session.click(*center)
    area = comes("open")
    if not area:
        return {**{column: "the panel does not open" for column in COLUMNS}, **cells}
    time.sleep(0.5)
    area = panel("open")
    beside = abs((area[0] + area[2]) / 2 - center[0]) <= 14 or area[2] >= width - 12 or area[0] <= 12
    at_icon = beside and (0 <= area[1] - center[1] <= 45 if center[1] < height / 2 else 0 <= center[1] - area[3] <= 45)
    cells["opens at the icon"] = "yes" if at_icon else "at %d, %d" % (area[0], area[1])

    # The pointer passes over another window, then a click on the bare desktop.
    session.click(*center)
    closes_by_icon = goes()
    free = 700 if area[0] < width / 3 else 120  # where the panel is not
    neighbour = session.spawn(["foot"] if "Wayland alone" in session.name else
                              ["xterm", "-geometry", "60x8+%d+760" % free])
    time.sleep(1.5)
    session.click(*center)
    comes()
    for x, y in [(free + 100, 800), (free + 100, 500), (free + 100, 800)]:
        session.point(x, y)
        time.sleep(0.35)
    stays = bool(panel("passed"))
    session.click(free + 100, 800, hold=0.3)
    other = goes("clicked")
    neighbour.terminate()
    time.sleep(0.8)
    session.click(*center, hold=0.4)  # slowly
    again = comes()
    session.point(*(((area[0] + area[2]) // 2), ((area[1] + area[3]) // 2)))
    time.sleep(0.2)
    session.click(free + 100, 500)
    desktop = goes("clicked-desktop")
    problems = [text for ok, text in [(closes_by_icon, "its icon does not close it"),
                                      (stays, "closes without a click"), (other, "not by one on another window"),
                                      (again, "the next click is lost"),
                                      (desktop, "not by one on the desktop")] if not ok]
    cells["click outside"] = "; ".join(problems) or "yes"
    if not desktop:
        session.click(*center)
        goes()

    # The screen reader comes later than the program.
    reader = Reader(session)
    reader.switch_on()
    time.sleep(0.5)
    session.click(*center)
    comes()
    windows = wait_until(lambda: reader.windows(), 4.0) or []
    problems = []
    if not windows:
        problems.append("nothing there")
    else:
        nodes = list(flat(windows[0]))
        roles = {node["role"] for node in nodes}
        names = [node["name"] for node in nodes]
        if windows[0]["role"] not in ("dialog", "frame", "window"):
            problems.append("the window is a " + windows[0]["role"])
        if "filler" in roles:
            problems.append("%d fillers" % sum(node["role"] == "filler" for node in nodes))
        if any(node["role"] == "label" and not node["name"] for node in nodes):
            problems.append("labels without a name")
        if "Source" not in names or "Quit" not in names:
            problems.append("captions in capitals" if "SOURCE" in names else "texts are missing")
        before_toggle = [node["checked"] for node in nodes if node["name"] == "Log to file"]
        reader.press("Log to file", "Toggle")
        time.sleep(0.7)
        after = [node["checked"] for window in reader.windows() for node in flat(window)
                 if node["name"] == "Log to file"]
        if not before_toggle or before_toggle == after:
            problems.append("Toggle does nothing")
    cells["screen reader"] = "; ".join(problems) or "yes"

    # The keyboard.
    session.key("Tab")
    time.sleep(0.4)
    focused = [node["name"] for window in reader.windows() for node in flat(window) if node["focused"]]
    tabbed = any("Pin" in name or "Unpin" in name for name in focused)
    session.key("Escape")
    closed = goes("escaped")
    cells["keyboard"] = "yes" if tabbed and closed else "; ".join(
        text for ok, text in [(tabbed, "Tab reaches nothing"), (closed, "Escape does not close")] if not ok)

    # Every workspace.
    switch = DESKTOPS[session.name][2]
    if not panel():
        session.click(*center)
        comes()
    reader.press("Pin (keep panel open)")
    time.sleep(0.5)
    if switch[0] == "wmctrl":
        session.run(["wmctrl", "-n", "2"])
    session.run(switch)
    time.sleep(1.0)
    there = panel("workspace")
    session.click(*center)
    one_click = goes("workspace-closed")
    cells["every workspace"] = "yes" if there and one_click else "; ".join(
        text for ok, text in [(there, "stays behind"), (one_click, "the next click is lost")] if not ok)
    return cells


def try_desktop(name, program, pictures):
    commands, files, _ = DESKTOPS[name]
    missing = [command[0] for command in commands if not shutil.which(command[0])]
    if missing:
        return {column: "%s is missing" % missing[0] for column in COLUMNS}
    session = Session(name, pictures)
    try:
        session.start(commands, files)
        return judge(session, program)
    finally:
        if "--keep-logs" in sys.argv:
            shutil.copytree(session.home, os.path.join(pictures, "home-" + re.sub(r"\W+", "-", name)),
                            dirs_exist_ok=True, ignore=lambda folder, names: [
                                n for n in names if not n.startswith("log-")])
        session.end()


def main():
    arguments = [argument for argument in sys.argv[1:] if not argument.startswith("--")]
    if len(arguments) < 2:
        sys.exit(__doc__)
    program, pictures = os.path.abspath(arguments[0]), os.path.abspath(arguments[1])
    os.makedirs(pictures, exist_ok=True)
    names = [name for name in DESKTOPS if not arguments[2:] or any(part in name for part in arguments[2:])]
    print("| desktop | " + " | ".join(COLUMNS) + " |")
    print("|---" * (len(COLUMNS) + 1) + "|")
    for name in names:
        cells = try_desktop(name, program, pictures)
        print("| %s | %s |" % (name, " | ".join(cells.get(column, "not tried") for column in COLUMNS)), flush=True)


if __name__ == "__main__":
    main()

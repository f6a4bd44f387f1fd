#!/usr/bin/python3
"""How Purlock behaves on many desktops: one private session for each, with a real window manager or compositor
and a real bar, a hand on the mouse and the keyboard, and a screen reader's view.

    tests/desktops/desktops.py <program> <folder for pictures> [<desktop> ...]

Prints a table in Markdown. Each session has its own bus, home and screen, and ends by process id. A desktop
whose programs are not installed is said to be missing."""

import importlib.util
import os
import re
import shutil
import sys

sys.dont_write_bytecode = True

from configurations import DESKTOPS
from judgement import COLUMNS, judge
from session import Session

# What every desktop is tried with, and the Debian packages that have it.
TOOLS = {"Xvfb": "xvfb", "at-spi-bus-launcher": "at-spi2-core", "dbus-daemon": "dbus", "foot": "foot",
         "import": "imagemagick", "wmctrl": "wmctrl", "xdotool": "xdotool", "xsetroot": "x11-xserver-utils",
         "xterm": "xterm"}
MODULES = {"PIL": "python3-pil", "gi": "python3-gi"}
ACCESSIBILITY = "gir1.2-atspi-2.0"


def missing_packages():
    path = os.environ.get("PATH", "") + ":/usr/libexec"
    packages = [package for tool, package in TOOLS.items() if not shutil.which(tool, path=path)]
    packages += [package for module, package in MODULES.items() if not importlib.util.find_spec(module)]
    if "python3-gi" not in packages:
        import gi
        try:
            gi.require_version("Atspi", "2.0")
        except ValueError:
            packages.append(ACCESSIBILITY)
    return sorted(packages)


def try_desktop(name, program, pictures):
    commands, files, _ = DESKTOPS[name]
    absent = [command[0] for command in commands if not shutil.which(command[0])]
    if absent:
        return {column: "%s is missing" % absent[0] for column in COLUMNS}
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
    packages = missing_packages()
    if packages:
        sys.exit("The desktops cannot be tried without these packages: " + " ".join(packages))
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

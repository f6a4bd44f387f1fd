"""A screen reader's view of the panel."""

import json
import subprocess


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

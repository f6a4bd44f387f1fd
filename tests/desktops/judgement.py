"""How Purlock behaves on one desktop: a cell for each column of the table."""

import time

from configurations import DESKTOPS
from pictures import changed_area, contrast, luminance, panel_area
from reader import Reader, flat
from session import SCREEN, wait_until

COLUMNS = ["icon", "light bar", "opens at the icon", "click outside", "every workspace", "keyboard", "screen reader"]


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

"""The desktops that are tried: their programs, and files that make the bars light."""

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
foreground = #202020
modules-right = text
tray-position = right
tray-background = #f0f0f0
[module/text]
type = custom/text
content = "x"
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

#!/usr/bin/python3
"""A GTK 3 window with a combo box: combo_window.py <number of the chosen entry> <entry>..."""

import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gtk  # noqa: E402

box = Gtk.ComboBoxText()
for entry in sys.argv[2:]:
    box.append_text(entry)
box.set_active(int(sys.argv[1]))
window = Gtk.Window(title="Player")
window.add(box)
window.show_all()
Gtk.main()

"""Converters in software, plugged into the kernel's own USB/IP port."""

import glob
import os

from lab import CONVERTER, card, end, start, wait


class Converter:
    count = 0

    def __init__(self, *options, name="Larch One"):
        Converter.count += 1
        self.name = name
        self.folder = f"/tmp/converter-{Converter.count}"
        os.makedirs(self.folder)
        self.options = options
        self.process = None
        self.plug_in()

    def plug_in(self):
        self.process = start("converter", CONVERTER, self.folder, "--name", self.name, *self.options)

    def unplug(self):
        end(self.process)

    def captures(self):
        return sorted(glob.glob(self.folder + "/*.raw"), key=lambda path: int(os.path.basename(path).split("-")[0]))

    def newest(self, but=()):
        """The file that a stream writes, once there is sound in it; `but` those that were there before."""
        return wait(lambda: next((path for path in reversed(self.captures())
                                  if path not in but and os.path.getsize(path) > 0), None), "a capture")


def all_gone(machine):
    """Waits until no converter is left, neither a card nor a device of the server's."""
    wait(lambda: card("Larch") is None and not any("Larch" in name for name in machine.audio.sinks()), "all are gone")


class ConverterSound:
    """What a converter gets from now on, in the file that it ends in."""

    def __init__(self, converter):
        self.converter = converter
        self.before = converter.captures()

    def stop(self):
        with open(self.converter.newest(self.before), "rb") as file:
            return file.read()

    def format(self):
        """Rate and bits of the stream."""
        return tuple(int(part) for part in os.path.basename(self.converter.newest(self.before))[:-4].split("-")[1:])


class SoundOfOne:
    """What the one of several converters gets to which the sound goes."""

    def __init__(self, *converters):
        self.sounds = [ConverterSound(each) for each in converters]

    def stop(self):
        def has_sound(sound):
            return any(os.path.getsize(path) > 0 for path in sound.converter.captures() if path not in sound.before)

        return wait(lambda: next((each for each in self.sounds if has_sound(each)), None), "a capture").stop()

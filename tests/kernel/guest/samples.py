"""Noise whose every sample is known, and what of it arrived."""

import glob
import os
import random
import struct
import threading

from lab import ENDINGS, end, hardware_parameters, start, wait

BYTES = {16: 2, 24: 3, 32: 4}
ALSA = {16: "S16_LE", 24: "S24_3LE", 32: "S32_LE"}  # of the bytes


class Noise:
    """A WAV file of stereo noise."""

    def __init__(self, path, rate, bits, seconds=60, seed=1):
        self.path, self.rate, self.bits = path, rate, bits
        second = random.Random(seed).randbytes(rate * 2 * BYTES[bits])
        if bits == 32:  # the mixer's floats hold 24 bits, and more is no music
            low = bytearray(second)
            low[0::4] = bytes(len(low) // 4)
            second = bytes(low)
        # Each second begins with another sample, so no second is taken for another.
        self.samples = b"".join(second[n * 2 * BYTES[bits]:] + second[:n * 2 * BYTES[bits]]
                                for n in range(0, seconds * 17, 17))
        frame = 2 * BYTES[bits]
        with open(path, "wb") as file:
            file.write(b"RIFF" + struct.pack("<I", 36 + len(self.samples)) + b"WAVEfmt " +
                       struct.pack("<IHHIIHH", 16, 1, 2, rate, rate * frame, frame, bits) +
                       b"data" + struct.pack("<I", len(self.samples)) + self.samples)

    def as_bits(self, bits):
        """The samples as a device of `bits` gets them if nothing is changed; absent if they do not fit."""
        if bits < self.bits:
            return None
        return widen(self.samples, BYTES[self.bits], BYTES[bits])


def widen(samples, narrow, wide):
    wider = bytearray(len(samples) // narrow * wide)
    for byte in range(narrow):
        wider[wide - narrow + byte::wide] = samples[byte::narrow]
    return bytes(wider)


def arrived(noise, received, bits, seconds=0.25):
    """Whether a stretch of the later half of what a device received is the noise, sample by sample. There are seven
    tries, since a stretch with a drop-out in it is not equal. Absent when it got no sound."""
    frame = 2 * BYTES[bits]
    needed = int(noise.rate * seconds) * frame
    sound = received.lstrip(b"\0")
    sound = sound[len(sound) % frame:]
    if len(sound) < needed:
        return None
    played = noise.as_bits(bits)
    if played is None:
        return False
    return any(is_stretch_of(played, sound, len(sound) * sixteenth // 16 // frame * frame, needed, frame)
               for sixteenth in range(8, 15))


def is_stretch_of(played, sound, begin, needed, frame):
    """Whether what follows `begin` in the sound was played like that, as long as needed or up to the end of the sound."""
    head = sound[begin:begin + 64 * frame]
    at = played.find(head)
    while at >= 0 and at % frame != 0:
        at = played.find(head, at + 1)
    if at < 0:
        return False
    length = min(needed, len(sound) - begin, len(played) - at)
    return length > needed // 2 and played[at:at + length] == sound[begin:begin + length]


class Capture:
    """What goes into the loopback card, from its other side, which also decides which format the card has. Newer kernels
    end a recorder that does not lay out its channels as the player does, so it is started again like the player."""

    def __init__(self, card, rate, bits):
        self.card, self.sample = card, BYTES[bits]
        self.command = ["arecord", "-q", "-D", f"hw:{card},1,0", "-f", ALSA[bits], "-r", str(rate), "-c", "2", "-t", "raw"]
        self.is_over = threading.Event()
        self.paths = []
        ENDINGS.append(self.is_over.set)
        for path in glob.glob("/tmp/captured-*"):
            os.remove(path)
        self.thread = threading.Thread(target=self.record, daemon=True)
        self.thread.start()
        wait(lambda: glob.glob("/tmp/captured-*"), "the recorder's file")

    def record(self):
        while not self.is_over.is_set():
            self.paths.append(f"/tmp/captured-{len(self.paths)}")
            channels = ["--separate-channels"] if "NONINTERLEAVED" in hardware_parameters(self.card) else []
            self.process = start("arecord", *self.command, *channels, self.paths[-1])
            self.process.wait()

    def stop(self):
        self.is_over.set()
        end(self.process)
        self.thread.join()
        return b"".join(map(self.recorded, self.paths))

    def recorded(self, path):
        if os.path.exists(path):
            return read(path)
        if not os.path.exists(path + ".0"):
            return b""
        left, right = read(path + ".0"), read(path + ".1")
        frames = min(len(left), len(right)) // self.sample
        sound = bytearray(2 * frames * self.sample)
        for channel, samples in enumerate((left, right)):
            for byte in range(self.sample):
                sound[channel * self.sample + byte::2 * self.sample] = samples[byte:frames * self.sample:self.sample]
        return bytes(sound)


def read(path):
    with open(path, "rb") as file:
        return file.read()

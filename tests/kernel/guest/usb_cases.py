"""USB converters, and cards of QEMU's own: what they receive, what they say of themselves, and how they come and go."""

import json
import os
import re

from cases import case
from converter import Converter, ConverterSound, SoundOfOne, all_gone
from judging import RATES, kinds, play
from lab import RESULTS, card, cards, end, expect, hardware_parameters, hardware_report, is_closed, run, start, wait
from samples import Noise


class WavFile:
    """What QEMU's own cards write, from now on: 16 bits, stereo, behind a header."""

    def __init__(self, name):
        self.path = f"{RESULTS}/{name}.wav"
        self.begin = max(44, os.path.getsize(self.path))

    def stop(self):
        with open(self.path, "rb") as file:
            file.seek(self.begin - (self.begin - 44) % 4)
            return file.read()


def play_to(machine, part, noise, sound, bits, **options):
    machine.audio.settings(allowed_rates=RATES)
    machine.audio.prefer(part)
    return play(machine, noise, sound, bits, **options)


@case("usb-16-48000", quick=True)
def usb(machine):
    run("amixer", "-c", str(card("USB")), "sset", "Audio Output Volume Control", "100%", check=False)
    found, state = play_to(machine, "usb-QEMU", Noise("/tmp/noise.wav", 48000, 16), WavFile("usb"), 16)
    expect(state["device"]["transport"] == "USB", str(state))
    return found


@case("hda-16-48000")
def hda(machine):
    found, state = play_to(machine, "pci-0000", Noise("/tmp/noise.wav", 48000, 16), WavFile("hda"), 16)
    expect(state["device"]["transport"] in ("Built-in", "PCI"), str(state))
    return found


def judge_converter(machine, rate, bits, options=(), name="Larch One", **rest):
    converter = Converter("--bits", str(bits), *options, name=name)
    try:
        found, state = play_to(machine, "Larch", Noise("/tmp/noise.wav", rate, bits),
                               ConverterSound(converter), bits, **rest)
        expect(state["physical"]["sampleRate"] == rate and state["physical"]["bitsPerChannel"] == bits, str(state))
        return found, state
    finally:
        converter.unplug()
        all_gone(machine)


def add(rate, bits, **options):
    @case(f"converter-{bits}-{rate}", **options)
    def compare(machine):
        return judge_converter(machine, rate, bits)[0]


for bits in (16, 24, 32):
    for rate in RATES:
        add(rate, bits)


@case("converter-switches-rate")
def switches_rate(machine):
    """One converter, one track after another, each at another rate."""
    converter = Converter()
    texts = []
    try:
        for rate in (44100, 96000, 48000, 192000):
            wait(lambda: is_closed(wait(lambda: card("Larch"), "the card")), "the card is released")
            sound = ConverterSound(converter)
            found, state = play_to(machine, "Larch", Noise("/tmp/noise.wav", rate, 16), sound, 32)
            expect(sound.format() == (rate, 32) and state["physical"]["sampleRate"] == rate, found)
            texts.append(found)
    finally:
        converter.unplug()
        all_gone(machine)
    return "; ".join(texts)


def lower_volume(machine):
    machine.audio.set_volume(machine.audio.sink("Larch")[1], 0.5)


@case("hardware-volume")
def hardware_volume(machine):
    """The converter sets its volume itself: the samples are those of the music."""
    found, state = judge_converter(machine, 48000, 16, during=lambda: lower_volume(machine))
    expect(state["verdict"]["kind"] == "bitPerfect", found)
    return found


def add_software_volume(case_name, **options):
    @case(case_name)
    def compare(machine):
        found, state = judge_converter(machine, 48000, 16, during=lambda: lower_volume(machine), **options)
        expect(kinds(state) == ["deviceVolume"], found)
        return found


add_software_volume("no-hardware-volume", options=["--no-volume"])
add_software_volume("hardware-volume-left-alone", name="Larch Soft")


@case("two-cards")
def two_cards(machine):
    """One stream to two converters: one of them follows the other's clock. The clocks differ by 48 Hz, since the mixer
    copies samples for a while when they agree to within 1 Hz."""
    first = Converter(name="Larch One")
    second = Converter("--serial", "LA-0002", "--slower", "1000", name="Larch Two")
    noise = Noise("/tmp/noise.wav", 48000, 16)
    texts = []

    def link():
        for side in ("FL", "FR"):
            run("pw-link", f"pw-play:output_{side}", machine.audio.sink(other)[0] + f":playback_{side}")

    numbers = [wait(lambda: card(name), name) for name in ("Larch One", "Larch Two")]
    try:
        for default, other, converter in (("Larch_One", "Larch_Two", first), ("Larch_Two", "Larch_One", second)):
            wait(lambda: all(is_closed(number) for number in numbers), "both cards are released")
            texts.append(play_to(machine, default, noise, ConverterSound(converter), 32, during=link)[0])
    finally:
        first.unplug()
        second.unplug()
        all_gone(machine)
    return "; ".join(texts)


@case("unplug-while-playing", quick=True)
def unplug(machine, times=2):
    """The verdict follows to the next device, and back when the converter returns."""
    name = machine.audio.sink("usb-QEMU")[0]
    machine.audio.prefer("usb-QEMU")
    converter = Converter()
    noise = Noise("/tmp/noise.wav", 48000, 16, seconds=120)
    try:
        larch = machine.audio.prefer("Larch")
        player = start("player", "pw-play", noise.path)
        for _ in range(times):
            wait(lambda: machine.purlock.is_on(larch), "the converter is the device")
            machine.purlock.await_verdict("bitPerfect")
            converter.unplug()
            wait(lambda: machine.purlock.is_on_another(larch), "the next device")
            converter.plug_in()
            machine.audio.sink("Larch")
        wait(lambda: machine.purlock.is_on(larch), "the converter is the device again")
        end(player)
    finally:
        converter.unplug()
        all_gone(machine)
    expect(machine.purlock.process.poll() is None, "Purlock runs")
    return f"{times} times between {larch} and {name}"


@case("unplug-twenty-times")
def unplug_often(machine):
    return unplug(machine, times=20)


@case("unplug-pinned")
def unplug_pinned(machine):
    """The pinned converter is chosen again when it returns; meanwhile the default device stands."""
    converter = Converter()
    settings = os.environ["HOME"] + "/.config/Purlock/defaults.json"
    try:
        larch = machine.audio.prefer("Larch")
        wait(lambda: machine.purlock.is_on(larch), "the converter is the device")
        pin = machine.purlock.device()["uid"]
        machine.audio.prefer("usb-QEMU")
        wait(lambda: machine.purlock.is_on_another(larch), "another device")
        machine.purlock.stop()
        os.makedirs(os.path.dirname(settings), exist_ok=True)
        with open(settings, "w") as file:
            json.dump({"pinnedDeviceUID": pin}, file)
        machine.purlock.start()
        for _ in range(3):
            wait(lambda: machine.purlock.is_on(larch), "the pinned converter")
            converter.unplug()
            wait(lambda: machine.purlock.is_on_another(larch), "the default device")
            converter.plug_in()
            machine.audio.sink("Larch")
        wait(lambda: machine.purlock.is_on(larch), "the pinned converter again")
    finally:
        converter.unplug()
        all_gone(machine)
        machine.purlock.stop()
        os.remove(settings)
        machine.purlock.start()
    return larch


@case("twins")
def twins(machine):
    """Two converters of the same name and number: the verdict is that of the one that plays."""
    first, second = Converter(), Converter()
    try:
        names = wait(lambda: (found := sorted(n for n in machine.audio.sinks() if "Larch" in n)) and
                     len(found) == 2 and found, "both converters")
        texts = []
        for name in names:
            wait(lambda: all(is_closed(n) for n, text in cards().items() if "Larch" in text), "both are released")
            sound = SoundOfOne(first, second)
            machine.audio.settings(allowed_rates=RATES)
            machine.audio.prefer(name)
            noise = Noise("/tmp/noise.wav", 48000, 24)
            found, state = play(machine, noise, sound, 32)
            expect(state["device"]["uid"].startswith(name) and state["device"]["transport"] == "USB", str(state))
            texts.append(f"{name}: {found}")
        return "; ".join(texts)
    finally:
        first.unplug()
        second.unplug()
        all_gone(machine)


@case("descriptors")
def descriptors(machine):
    """Names and numbers of the hardware beside lsusb, aplay and hw_params."""
    converter = Converter()
    mouse = Converter("--no-sound", "--product", "0x7A18", name="Larch Remote")
    noise = Noise("/tmp/noise.wav", 88200, 24)
    machine.audio.settings(allowed_rates=RATES)
    try:
        machine.audio.prefer("Larch_One")
        player = start("player", "pw-play", noise.path)
        machine.purlock.await_verdict("bitPerfect")
        number = card("Larch One")
        report = hardware_report(number)
        listed = run("lsusb", "-v", "-d", "1209:")
        vendors = re.findall(r"iManufacturer +\d+ (.*)", listed)
        products = re.findall(r"iProduct +\d+ (.*)", listed)
        ours = [(each["vendor"], each["product"]) for each in report["devices"] if each["vendor"] in vendors]
        expect(sorted(ours) == sorted(zip(vendors, products)), f"{ours} beside {vendors} {products}")
        expect(ours[-1] == ("Larch Audio", "Larch Remote"), f"the sound devices come first: {ours}")
        parameters = dict(line.split(": ", 1) for line in
                          hardware_parameters(number).splitlines())
        pcm = report["cards"][str(number)]
        expect(pcm["rate"] == float(parameters["rate"].split()[0]) == 88200, f"{pcm} {parameters}")
        expect(pcm["channels"] == int(parameters["channels"]), f"{pcm} {parameters}")
        expect(pcm["command"].startswith("pipewire"), f"{pcm}")
        expect(f"card {number}: " in run("aplay", "-l"), "aplay lists it")
        state = machine.purlock.state()
        expect(state["device"]["name"].startswith("Larch One"), str(state))
        end(player)
        return f"{ours}, {pcm}, called {state['device']['name']}"
    finally:
        mouse.unplug()
        converter.unplug()
        all_gone(machine)

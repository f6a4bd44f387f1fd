"""Bluetooth in the kernel: controllers in software, a real bluetoothd, and what PipeWire makes of them."""

import json
import subprocess

from cases import case
from lab import end, load, run, start, wait

MODULES = ("af_alg", "algif_hash", "algif_skcipher", "ecb", "cmac", "bluetooth", "hci_vhci", "rfcomm", "uhid", "uinput")
AUDIO_SINK = "0000110b-0000-1000-8000-00805f9b34fb"


class Bluetooth:
    """A bluetoothd with two controllers that hear each other."""

    def __init__(self):
        for module in MODULES:
            load(module)
        self.daemon = start("bluetoothd", "/usr/libexec/bluetooth/bluetoothd", "-n")
        wait(lambda: "org.bluez" in run("busctl", "--system", "list", "--no-legend"), "BlueZ is on the bus")
        self.controllers = start("btvirt", "btvirt", "-l3")
        # The first one answers only once all are made, which BlueZ takes for a controller that is broken.
        self.player, self.speaker = wait(lambda: len(self.adapters()) > 1 and self.adapters()[-2:], "two controllers")
        self.control = start("bluetoothctl", "bluetoothctl", "--agent=NoInputNoOutput", stdin=subprocess.PIPE, text=True)

    def objects(self):
        text = run("busctl", "--system", "--json=short", "call", "org.bluez", "/", "org.freedesktop.DBus.ObjectManager",
                   "GetManagedObjects")
        return json.loads(text)["data"][0]

    def adapters(self):
        return sorted(path for path, faces in self.objects().items() if "org.bluez.Adapter1" in faces)

    def value(self, path, face, name):
        return self.objects().get(path, {}).get(face, {}).get(name, {}).get("data")

    def set(self, path, face, name, kind, value):
        run("busctl", "--system", "set-property", "org.bluez", path, "org.bluez." + face, name, kind, value)

    def address(self, adapter):
        return self.value(adapter, "org.bluez.Adapter1", "Address")

    def say(self, *words):
        """A command to the program that discovers, and that allows whatever it is asked for."""
        self.control.stdin.write(" ".join(words) + "\n")
        self.control.stdin.flush()

    def connect(self):
        """Pairs and connects the player with the speaker."""
        for adapter in (self.player, self.speaker):
            self.set(adapter, "Adapter1", "Powered", "b", "true")
            self.set(adapter, "Adapter1", "Pairable", "b", "true")
        self.set(self.speaker, "Adapter1", "Alias", "s", "Larch Speaker")
        self.set(self.speaker, "Adapter1", "Discoverable", "b", "true")
        address = self.address(self.speaker)
        here = self.player + "/dev_" + address.replace(":", "_")
        there = self.speaker + "/dev_" + self.address(self.player).replace(":", "_")
        self.say("select", self.address(self.player))
        self.say("scan", "on")
        wait(lambda: here in self.objects(), f"{address} is found", 40)
        self.say("pair", address)
        for device in (here, there):
            wait(lambda: self.value(device, "org.bluez.Device1", "Paired"), f"{device} is paired")
            self.set(device, "Device1", "Trusted", "b", "true")
        self.say("scan", "off")
        # A full connection would let both sides configure a stream at once.
        run("busctl", "--system", "--timeout=60", "call", "org.bluez", here, "org.bluez.Device1", "ConnectProfile", "s",
            AUDIO_SINK, limit=90)

    def stop(self):
        for each in (self.control, self.controllers, self.daemon):
            end(each)


@case("bluetooth")
def bluetooth(machine):
    radio = Bluetooth()
    try:
        radio.connect()
        name = machine.audio.sink("bluez_output")[0]
        machine.audio.prefer("bluez_output")
        state = wait(lambda: (s := machine.purlock.state()) and s["device"]["transport"] == "Bluetooth" and s, "it is the device")
        return f"{name}: {state}"
    finally:
        print(json.dumps(radio.objects()), flush=True)
        radio.stop()

"""Bluetooth in the kernel: controllers in software, a real bluetoothd, and what PipeWire makes of them."""

import json
import re
import subprocess

from cases import case
from lab import end, expect, load, run, start, wait

MODULES = ("af_alg", "algif_hash", "algif_skcipher", "ecb", "cmac", "bluetooth", "hci_vhci", "rfcomm", "uhid")
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
        self.agent = start("agent", "bluetoothctl", "--agent=NoInputNoOutput", stdin=subprocess.PIPE)

    def objects(self):
        text = run("busctl", "--system", "--json=short", "call", "org.bluez", "/", "org.freedesktop.DBus.ObjectManager",
                   "GetManagedObjects")
        return json.loads(text)["data"][0]

    def adapters(self):
        return sorted(path for path, faces in self.objects().items() if "org.bluez.Adapter1" in faces)

    def value(self, path, face, name):
        return self.objects().get(path, {}).get(face, {}).get(name, {}).get("data")

    def set(self, adapter, name, kind, value):
        run("busctl", "--system", "set-property", "org.bluez", adapter, "org.bluez.Adapter1", name, kind, value)

    def call(self, path, face, *words):
        return run("busctl", "--system", "--timeout=60", "call", "org.bluez", path, face, *words, limit=90)

    def meet(self):
        """Pairs the player with the speaker, and returns the speaker's object."""
        for adapter in (self.player, self.speaker):
            self.set(adapter, "Powered", "b", "true")
            self.set(adapter, "Pairable", "b", "true")
        self.set(self.speaker, "Alias", "s", "Larch Speaker")
        self.set(self.speaker, "Discoverable", "b", "true")
        address = self.value(self.speaker, "org.bluez.Adapter1", "Address")
        device = self.player + "/dev_" + address.replace(":", "_")
        self.call(self.player, "org.bluez.Adapter1", "StartDiscovery")
        wait(lambda: device in self.objects(), f"{address} is found: {list(self.objects())}", 40)
        self.call(device, "org.bluez.Device1", "Pair")
        wait(lambda: self.value(device, "org.bluez.Device1", "Paired"), "they are paired")
        return device

    def stop(self):
        for each in (self.agent, self.controllers, self.daemon):
            end(each)


@case("bluetooth")
def bluetooth(machine):
    radio = Bluetooth()
    try:
        device = radio.meet()
        radio.call(device, "org.bluez.Device1", "Connect")
        wait(lambda: radio.value(device, "org.bluez.Device1", "Connected"), "they are connected")
        name = machine.audio.sink("bluez_output")[0]
        machine.audio.prefer("bluez_output")
        state = wait(lambda: (s := machine.purlock.state()) and s["device"]["transport"] == "Bluetooth" and s, "it is the device")
        return f"{name}: {state}"
    finally:
        print(json.dumps(radio.objects()), flush=True)
        radio.stop()

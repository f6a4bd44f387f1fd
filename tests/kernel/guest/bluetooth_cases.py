"""Bluetooth in the kernel: controllers in software, and a real bluetoothd."""

import json
import shutil
import subprocess

from cases import case
from lab import Failure, end, expect, hardware_report, load, run, start, wait

MODULES = ("af_alg", "algif_hash", "algif_skcipher", "ecb", "cmac", "bluetooth", "hci_vhci", "rfcomm", "uhid", "uinput")
AUDIO_SINK = "0000110b-0000-1000-8000-00805f9b34fb"


class Bluetooth:
    """A bluetoothd with two controllers that hear each other."""

    def __init__(self):
        shutil.rmtree("/var/lib/bluetooth", ignore_errors=True)  # what an earlier one knew
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

    def device(self, address):
        """The object of what the player knows by that address."""
        return self.player + "/dev_" + address.replace(":", "_")

    def say(self, *words):
        """A command to the program that discovers, and that allows whatever it is asked for."""
        self.control.stdin.write(" ".join(words) + "\n")
        self.control.stdin.flush()

    def find(self):
        """Has the player find the speaker, and returns the speaker's address."""
        for adapter in (self.player, self.speaker):
            self.set(adapter, "Adapter1", "Powered", "b", "true")
            self.set(adapter, "Adapter1", "Pairable", "b", "true")
        self.set(self.speaker, "Adapter1", "Alias", "s", "Larch Speaker")
        self.set(self.speaker, "Adapter1", "Discoverable", "b", "true")
        address = self.address(self.speaker)
        self.say("select", self.address(self.player))
        self.say("scan", "on")
        wait(lambda: self.device(address) in self.objects(), f"{address} is found", 40)
        return address

    def pair(self, address):
        here = self.device(address)
        there = self.speaker + "/dev_" + self.address(self.player).replace(":", "_")
        self.say("pair", address)
        for device in (here, there):
            wait(lambda: self.value(device, "org.bluez.Device1", "Paired"), f"{device} is paired")
            self.set(device, "Device1", "Trusted", "b", "true")

    def connect(self, address):
        """Connects the speaker's one profile: a full connection would let both sides configure a stream at once."""
        run("busctl", "--system", "--timeout=60", "call", "org.bluez", self.device(address), "org.bluez.Device1",
            "ConnectProfile", "s", AUDIO_SINK, limit=90)

    def stop(self):
        for each in (self.control, self.controllers, self.daemon):
            end(each)


@case("bluetooth-pairing")
def pairing(machine):
    """Found, paired, disconnected and removed: Purlock's own reader says what BlueZ says."""
    radio = Bluetooth()
    try:
        address = radio.find()

        def speaker():
            return next((each for each in hardware_report()["paired"] if each["address"] == address), None)

        expect(speaker() is None, "it is not paired yet")
        radio.pair(address)
        found = wait(speaker, "the speaker is among the paired devices")
        expect(found["name"] == "Larch Speaker", str(found))
        radio.say("disconnect", address)
        wait(lambda: not speaker()["isConnected"], "it is disconnected")
        radio.say("remove", address)
        wait(lambda: speaker() is None, "it is no longer paired")
        return str(found)
    finally:
        radio.stop()


@case("bluetooth-speaker")
def speaker(machine):
    """A speaker that is connected is an output device. With BlueZ 5.66 the two ends, which are one daemon's, do not agree
    on a stream; with 5.82 they do. Nothing is played: what the speaker hears is played by this machine again."""
    radio = Bluetooth()
    try:
        address = radio.find()
        radio.pair(address)
        version = run("bluetoothctl", "--version").split()[-1]
        try:
            radio.connect(address)
        except Failure as failure:
            expect(version == "5.66" and "br-connection-canceled" in str(failure), str(failure))
            return f"not shown with BlueZ {version}"
        machine.audio.prefer("bluez_output")
        wait(lambda: machine.purlock.device().get("transport") == "Bluetooth", "the speaker is the device")
        device = machine.purlock.device()
        expect(device["name"] == "Larch Speaker", str(device))
        radio.say("disconnect", address)
        wait(lambda: machine.purlock.device().get("transport") != "Bluetooth", "another device is shown")
        return f"{device['name']} over BlueZ {version}"
    finally:
        radio.stop()

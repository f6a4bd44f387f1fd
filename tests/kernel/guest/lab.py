"""The emulated machine from within: its drivers, daemons and the program under test.

All of it runs as root in a machine that ends with the cases. Nothing here waits for a time: `wait` asks until a
condition holds. The machine's clock counts its own instructions, so a slow host makes nothing late.
"""

import json
import os
import re
import signal
import subprocess
import time

RESULTS = "/run/results"
COMMAND_LINE = open("/proc/cmdline").read()
MODULES = re.search(r"purlock\.modules=(\S+)", COMMAND_LINE).group(1)
PROGRAM = re.search(r"purlock\.program=(\S+)", COMMAND_LINE).group(1)
BUILD = re.search(r"purlock\.build=(\S+)", COMMAND_LINE).group(1)
CONVERTER = BUILD + "/bin/usb_converter"
REPORT = BUILD + "/bin/hardware_report"


class Failure(Exception):
    """What a case expected and did not see."""


def expect(condition, text):
    if not condition:
        raise Failure(text)


def wait(condition, text, limit=30):
    """Asks until the answer is true and returns it; fails after `limit` seconds of the machine's time."""
    end = time.monotonic() + limit
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Failure("never: " + text)
        time.sleep(0.05)


def run(*command, check=True, limit=60):
    done = subprocess.run(command, capture_output=True, text=True, timeout=limit)
    if check and done.returncode != 0:
        raise Failure(f"{' '.join(command)}: {done.stderr.strip() or done.stdout.strip()}")
    return done.stdout


STARTED = []  # by the case that runs
ENDINGS = []  # what it wants to be called at its end, before its programs end


def start(name, *command, stdin=subprocess.DEVNULL, **options):
    """Starts a program whose words go to a log of its own among the results. It ends with the case at the latest."""
    with open(f"{RESULTS}/{name}.log", "a") as log:
        process = subprocess.Popen(command, stdin=stdin, stdout=log, stderr=log, **options)
    STARTED.append(process)
    return process


def end_all():
    for ending in ENDINGS:
        ending()
    ENDINGS.clear()
    for process in reversed(STARTED):
        end(process)
    STARTED.clear()


def end(process, number=signal.SIGTERM):
    if process is None or process.poll() is not None:
        return
    for each in (number, signal.SIGKILL):
        process.send_signal(each)
        try:
            process.wait(20)
            return
        except subprocess.TimeoutExpired:
            print(f"{process.args} does not end by signal {int(each)}", flush=True)


def load(module, *parameters):
    run("modprobe", "-d", MODULES, module, *parameters)


def unload(module):
    run("modprobe", "-d", MODULES, "-r", module)


def write(path, text):
    with open(path, "w") as file:
        file.write(text)


def set_up_machine():
    os.makedirs(os.environ["HOME"], exist_ok=True)
    # WirePlumber asks logind's library, which ends it without these folders.
    for name in ("seats", "sessions", "users", "machines"):
        os.makedirs("/run/systemd/" + name, exist_ok=True)
    os.makedirs("/run/dbus", exist_ok=True)
    os.makedirs("/run/user-0", mode=0o700, exist_ok=True)
    os.environ["XDG_RUNTIME_DIR"] = "/run/user-0"
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/run/user-0/bus"
    # Rules for devices hold for what comes after their daemon.
    run("/lib/systemd/systemd-udevd", "--daemon")
    for module in ("xhci_pci", "snd-usb-audio", "snd-hda-codec-generic", "snd-hda-intel"):
        load(module)
    load("snd-aloop", "pcm_substreams=1")
    load("vhci-hcd")
    run("udevadm", "trigger")
    run("udevadm", "settle", "-t", "20")
    run("dbus-daemon", "--system", "--fork")
    run("dbus-daemon", "--session", "--address=" + os.environ["DBUS_SESSION_BUS_ADDRESS"], "--fork")


def cards():
    """Names of sound cards by their number."""
    found = re.findall(r"^\s*(\d+) \[.*?\]: \S+ - (.*)$", open("/proc/asound/cards").read(), re.MULTILINE)
    return {int(number): name for number, name in found}


def card(name):
    """The number of the card whose name holds `name`; absent when there is none."""
    return next((number for number, text in cards().items() if name in text), None)


def hardware_parameters(card_number):
    """What the kernel says of the card's playback."""
    return open(f"/proc/asound/card{card_number}/pcm0p/sub0/hw_params").read()


def is_closed(card_number):
    """Whether nobody holds the card's playback."""
    return hardware_parameters(card_number).strip() == "closed"


def hardware_report(*cards):
    """What Purlock's own readers say of cards, of all USB devices and of all paired Bluetooth devices."""
    return json.loads(run(REPORT, *map(str, cards)))


def owner(number):
    """The command of the program that holds a card, by Purlock's own readers."""
    return hardware_report(number)["cards"].get(str(number), {}).get("command")


# The manager releases a card five seconds after its last stream; the cases need not wait so long. One converter's own
# volume is left alone, as some listeners have it.
RULES = """
table.insert(alsa_monitor.rules, {
  matches = { { { "node.name", "matches", "alsa_*" } } },
  apply_properties = { ["session.suspend-timeout-seconds"] = 1 },
})
table.insert(alsa_monitor.rules, {
  matches = { { { "device.name", "matches", "*Larch_Soft*" } } },
  apply_properties = { ["api.alsa.soft-mixer"] = true },
})
"""
# There is no seat that could be asked who may use Bluetooth.
BLUETOOTH_RULES = """
bluez_monitor.properties["with-logind"] = false
bluez_monitor.properties["bluez5.codecs"] = "[ sbc ]"
"""
RULES_05 = """
wireplumber.profiles = { main = { monitor.bluez.seat-monitoring = disabled } }
monitor.bluez.properties = { bluez5.codecs = [ sbc ] }
monitor.alsa.rules = [
  { matches = [ { node.name = "~alsa_.*" } ]
    actions = { update-props = { session.suspend-timeout-seconds = 1 } } }
  { matches = [ { device.name = "~.*Larch_Soft.*" } ]
    actions = { update-props = { api.alsa.soft-mixer = true } } }
]
"""


class Audio:
    """PipeWire and WirePlumber."""

    def __init__(self):
        self.server = self.manager = None

    def start(self):
        self.server = start("pipewire", "pipewire")
        STARTED.remove(self.server)
        wait(lambda: os.path.exists("/run/user-0/pipewire-0"), "PipeWire's socket")
        home = os.environ["HOME"] + "/.config/wireplumber"
        for folder, name, text in (("main.lua.d", "51-lab.lua", RULES),
                                   ("bluetooth.lua.d", "51-lab.lua", BLUETOOTH_RULES),
                                   ("wireplumber.conf.d", "51-lab.conf", RULES_05)):
            os.makedirs(f"{home}/{folder}", exist_ok=True)
            write(f"{home}/{folder}/{name}", text)
        self.start_manager()

    def start_manager(self):
        self.manager = start("wireplumber", "wireplumber")
        STARTED.remove(self.manager)

    def restart_manager(self):
        end(self.manager)
        self.start_manager()

    def stop(self):
        end(self.manager)
        end(self.server)

    def objects(self):
        try:
            return json.loads(run("pw-dump", check=False) or "[]")
        except ValueError:
            return []

    def sinks(self):
        """Identifiers of sinks by their names."""
        found = {}
        for each in self.objects():
            props = (each.get("info") or {}).get("props") or {}
            if props.get("media.class") == "Audio/Sink":
                found[props["node.name"]] = each["id"]
        return found

    def sink(self, part, limit=60):
        """Name and identifier of the sink whose name holds `part`, once it is there."""
        return wait(lambda: next(((n, i) for n, i in self.sinks().items() if part in n), None),
                    f"a sink named like {part}", limit)

    def prefer(self, part):
        """Makes a sink the default one, at full volume; returns its name."""
        name, number = self.sink(part)
        run("pw-metadata", "0", "default.configured.audio.sink", json.dumps({"name": name}), "Spa:String:JSON")
        wait(lambda: self.default() == name, f"{name} is the default")
        self.set_volume(number, 1.0)
        return name

    def set_volume(self, number, volume):
        """A volume of the device; the manager sets one of its own when a device is first used."""

        def is_set():
            if f"{volume:.2f}" in run("wpctl", "get-volume", str(number)):
                return True
            run("wpctl", "set-volume", str(number), str(volume))
            return False

        wait(is_set, f"the volume {volume}")

    def suspend(self, part):
        run("pw-cli", "send-command", str(self.sink(part)[1]), "Suspend", "{}")

    def default(self):
        found = re.search(r"default\.audio\.sink' value:'\{\"name\":\s*\"([^\"]*)\"",
                          run("pw-metadata", "0", "default.audio.sink", check=False))
        return found.group(1) if found else None

    def settings(self, **values):
        """Settings of the clock: allowed_rates=[...], force_rate=0."""
        for key, value in values.items():
            text = "[ " + " ".join(map(str, value)) + " ]" if isinstance(value, list) else str(value)
            run("pw-metadata", "-n", "settings", "0", "clock." + key.replace("_", "-"), text)

    def node_format(self, number, **values):
        """What the node of a card asks its driver for: format="S16LE", rate=44100."""
        params = " ".join(f'"audio.{key}" {json.dumps(value)}' for key, value in values.items())
        run("pw-cli", "set-param", str(number), "Props", "{ params = [ " + params + " ] }")


class Purlock:
    """The program under test, read by its files alone."""

    def __init__(self):
        self.process = None
        self.folder = os.environ["HOME"] + "/.local/share/Purlock"

    def start(self):
        environment = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        self.process = start("purlock", PROGRAM, env=environment)
        STARTED.remove(self.process)
        wait(lambda: self.state(), "the first state.json")

    def stop(self):
        end(self.process)

    def state(self):
        try:
            return json.load(open(self.folder + "/state.json"))
        except (OSError, ValueError):
            return None

    def verdict(self):
        return ((self.state() or {}).get("verdict") or {}).get("kind")

    def device(self):
        return (self.state() or {}).get("device") or {}

    def is_on(self, name):
        """Whether the device shown is the one behind a node: a USB device's UID goes on with its own names."""
        return self.device().get("uid", "").startswith(name)

    def is_on_another(self, name):
        return "uid" in self.device() and not self.is_on(name)

    def await_verdict(self, kind, limit=30):
        try:
            wait(lambda: self.verdict() == kind, "", limit)
        except Failure:
            raise Failure(f"the verdict is {self.verdict()}, not {kind}: {json.dumps(self.state())}") from None

    def settled(self, limit=30):
        """The verdict of a player that plays, once it has stayed the same for as long as a change may take to show."""
        longest = 2.0
        seen = {"kind": None, "since": time.monotonic()}

        def is_settled():
            kind = self.verdict()
            if kind != seen["kind"] or kind == "idle":
                seen.update(kind=kind, since=time.monotonic())
            return time.monotonic() - seen["since"] >= longest

        wait(is_settled, f"a verdict that stays ({self.verdict()})", limit)
        return self.state()

"""What happens to the whole machine: sleep, and clocks that jump; other sound servers."""

import datetime
import os

from cases import case
from lab import card, end, expect, is_closed, run, start, wait, write
from loopback_cases import judge, loopback
from samples import Noise


def is_fresh(machine):
    """state.json has been written within the last seconds, by the clock of now."""
    stamp = datetime.datetime.fromisoformat(machine.purlock.state()["timestamp"].replace("Z", "+00:00"))
    return abs((datetime.datetime.now(datetime.timezone.utc) - stamp).total_seconds()) < 3


@case("suspend")
def suspend(machine):
    """The machine begins to sleep while it plays: all programs are frozen for five seconds, and go on. Devices are not
    put to sleep: the file system of this machine would not wake."""
    write("/sys/power/pm_test", "freezer")
    noise = Noise("/tmp/noise.wav", 48000, 16, seconds=120)
    machine.audio.prefer("usb-QEMU")
    player = start("player", "pw-play", noise.path)
    try:
        machine.purlock.await_verdict("bitPerfect")
        write("/sys/power/state", "mem")
        wait(lambda: is_fresh(machine), "state.json is written again")
        machine.purlock.await_verdict("bitPerfect")
    finally:
        end(player)
        write("/sys/power/pm_test", "none")
    machine.purlock.await_verdict("idle")
    return judge(machine, (48000, 16), (48000, 16))[0]


@case("clock-jumps")
def clock_jumps(machine):
    """The wall clock goes an hour forwards, and back; what waits goes by another clock."""
    for step in ("+1 hour", "-1 hour", "-1 day", "+1 day"):
        run("date", "-s", step)
        wait(lambda: is_fresh(machine), f"state.json is written after {step}", 5)
    return judge(machine, (48000, 16), (48000, 16))[0]


def held_by(machine, name, *command, ready):
    """Another sound server holds the card, and a program plays through it."""
    loopback(machine, 48000, 16).stop()
    server, player = start(name, *command), None
    try:
        wait(lambda: not is_closed(card("Loopback")), f"{name} holds the card", 60)
        player = ready()
        state = wait(lambda: (s := machine.purlock.state()) and s["device"]["isRunning"] and s, "the card runs")
        wait(lambda: machine.purlock.state()["virtual"] is None, f"no format is claimed: {state}", 10)
        state = machine.purlock.state()
        expect(state["verdict"]["kind"] != "bitPerfect", str(state))
    finally:
        end(player)
        end(server)
    wait(lambda: is_closed(card("Loopback")), "the card is released")
    machine.purlock.await_verdict("idle")
    return f"{state['verdict']['kind']}, physical {state['physical']}"


@case("pulseaudio")
def pulseaudio(machine):
    """A real PulseAudio holds the card and mixes."""
    write("/tmp/pulse.pa", f"load-module module-alsa-sink device=hw:{card('Loopback')},0\n"
                           "load-module module-native-protocol-unix socket=/tmp/pulse.socket auth-anonymous=1\n")
    noise = Noise("/tmp/noise.wav", 48000, 16)

    def ready():
        wait(lambda: os.path.exists("/tmp/pulse.socket"), "PulseAudio's socket")
        return start("player", "paplay", "--server=unix:/tmp/pulse.socket", noise.path)

    return held_by(machine, "pulseaudio", "pulseaudio", "-n", "-F", "/tmp/pulse.pa", "--daemonize=no",
                   "--exit-idle-time=-1", "--use-pid-file=no", "--disallow-exit", ready=ready)


def jackd_command():
    return "jackd", "-r", "-d", "alsa", "-d", f"hw:{card('Loopback')}", "-r", "48000", "-P"


@case("jackd")
def jackd(machine):
    """A real jackd holds the card, and tells nobody that it wants it."""
    return held_by(machine, "jackd", "env", "JACK_NO_AUDIO_RESERVATION=1", *jackd_command(), ready=lambda: None)


@case("jackd-reserves")
def jackd_reserves(machine):
    """A jackd that asks for the card gets it: the session manager takes it out of the graph. WirePlumber 0.4 does not
    take it back when jackd ends, so it is started anew."""
    loopback(machine, 48000, 16).stop()
    name = machine.audio.sink("snd_aloop")[0]
    server = start("jackd", *jackd_command())
    wait(lambda: not is_closed(card("Loopback")), "jackd holds the card", 60)
    wait(lambda: machine.purlock.is_on_another(name), "another device is shown")
    end(server)
    machine.audio.restart_manager()
    wait(lambda: machine.purlock.is_on(name), "the card is shown again")
    return judge(machine, (48000, 16), (48000, 16))[0]

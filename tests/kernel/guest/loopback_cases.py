"""The verdict against the samples: every rate and depth of the loopback card, whose other side tells what it got."""

import json

from cases import case
from lab import card, end, expect, is_closed, start, wait
from samples import Capture, Noise, arrived

RATES = [44100, 48000, 88200, 96000, 176400, 192000]


def judge(machine, played, device, rate_allowed=None):
    """Plays noise of (rate, bits) to the card at (rate, bits); the verdict has to agree with the samples."""
    audio, purlock = machine.audio, machine.purlock
    name, number = audio.sink("snd_aloop")
    audio.prefer("snd_aloop")
    audio.settings(allowed_rates=rate_allowed or RATES)
    wait(lambda: is_closed(card("Loopback")), "the card is released")
    noise = Noise("/tmp/noise.wav", *played, seconds=20)
    capture = Capture(card("Loopback"), *device)
    player = start("pw-play", "pw-play", noise.path)
    try:
        state = purlock.settled()
    finally:
        received = capture.stop()
        end(player)
    equal = arrived(noise, received, device[1])
    kind = state["verdict"]["kind"]
    text = (f"{played[1]} bits {played[0]} Hz to {device[1]} bits {device[0]} Hz: "
            f"{ {None: 'silence', True: 'equal', False: 'changed'}[equal]}, {kind}")
    expect(equal is not None and equal == (kind == "bitPerfect"), text + " " + json.dumps(state))
    purlock.await_verdict("idle")
    return text


def add(played, device, **options):
    name = f"loopback-{played[1]}-{played[0]}-to-{device[1]}-{device[0]}"
    case(name, **options)(lambda machine: judge(machine, played, device))


for bits in (16, 24, 32):
    for rate in RATES:
        add((rate, bits), (rate, bits), quick=(rate, bits) == (96000, 24))
add((44100, 16), (48000, 32))
add((48000, 24), (48000, 16))

"""Plays noise and sets the verdict against what the device received."""

import json

from lab import RESULTS, end, expect, start
from samples import arrived

RATES = [44100, 48000, 88200, 96000, 176400, 192000, 352800, 384000]
WORDS = {None: "silence", True: "equal", False: "changed"}


def agrees(equal, kind):
    return equal is not None and equal == (kind == "bitPerfect")


def kinds(state):
    return [each["kind"] for each in state["alterations"]]


def is_not_claimed(equal, kind):
    """For what nobody can tell."""
    return equal is not None and kind != "bitPerfect"


def play(machine, noise, sound, bits, during=None, player=("pw-play",), rule=agrees):
    """Plays the noise until the verdict has settled, and compares with what came out at `sound`, in `bits`.
    `during` is done once it plays; what it returns is done when it no longer plays. `rule` says whether the verdict is
    right. Returns what was found, and the state."""
    playing = start("player", *player, noise.path)
    try:
        done = during() if during else None
        state = machine.purlock.settled()
        received = sound.stop()
    finally:
        end(playing)
        if callable(done):
            done()
    equal = arrived(noise, received, bits)
    kind = state["verdict"]["kind"]
    found = f"{noise.bits} bits {noise.rate} Hz: {WORDS[equal]}, {kind}"
    if state["alterations"]:
        found += " " + json.dumps(state["alterations"])
    if not rule(equal, kind):
        with open(RESULTS + "/received.raw", "wb") as file:
            file.write(received)
    expect(rule(equal, kind), found + " " + json.dumps(state))
    machine.purlock.await_verdict("idle")
    return found, state

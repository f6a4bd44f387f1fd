"""The verdict against the samples: every rate and depth of the loopback card, whose other side tells what it got."""

from cases import case
from judging import RATES, is_not_claimed, kinds, play
from lab import Failure, card, end, expect, is_closed, owner, start, wait
from samples import Capture, Noise

LOOPBACK = "snd_aloop"


def loopback(machine, rate, bits):
    """The card as the default device, fixed to a format by the recorder at its other side."""
    machine.audio.prefer(LOOPBACK)
    await_release(machine)
    return Capture(card("Loopback"), rate, bits)


def await_release(machine):
    """Waits until the server has let go of the card. PipeWire 0.3.65 now and then keeps the node running to which nothing
    is linked any more (docs/drivers.md), and is told to suspend it."""
    try:
        wait(lambda: is_closed(card("Loopback")), "", 15)
    except Failure:
        print("The server runs the card for nobody.", flush=True)
        machine.audio.suspend(LOOPBACK)
        wait(lambda: is_closed(card("Loopback")), "the card is released")


def judge(machine, played, device, **options):
    machine.audio.settings(allowed_rates=RATES)
    sound = loopback(machine, *device)
    return play(machine, Noise("/tmp/noise.wav", *played), sound, device[1], **options)


def add(played, device, **options):
    @case(f"loopback-{played[1]}-{played[0]}-to-{device[1]}-{device[0]}", **options)
    def compare(machine):
        return judge(machine, played, device)[0]


for bits in (16, 24, 32):
    for rate in (44100, 48000, 88200, 96000, 176400, 192000):
        add((rate, bits), (rate, bits), quick=(rate, bits) == (96000, 24))
add((44100, 16), (48000, 32), quick=True)
add((48000, 24), (48000, 16))


@case("forced-rate")
def forced_rate(machine):
    machine.audio.settings(force_rate=48000)
    try:
        found, state = judge(machine, (44100, 16), (48000, 32))
        expect(state["verdict"]["kind"] == "resampling", found)
    finally:
        machine.audio.settings(force_rate=0)
    return found


@case("software-volume")
def software_volume(machine):
    """The volume of the loopback card is one of ALSA's library, which looks like the hardware's."""
    number = machine.audio.sink(LOOPBACK)[1]
    found, state = judge(machine, (48000, 16), (48000, 16), during=lambda: machine.audio.set_volume(number, 0.5))
    expect("deviceVolume" in kinds(state), found)
    return found


@case("two-players")
def two_players(machine):
    other = Noise("/tmp/other.wav", 48000, 16, seed=2)

    def join():
        second = start("second-player", "pw-play", other.path)
        return lambda: end(second)

    found, state = judge(machine, (48000, 16), (48000, 16), during=join)
    expect("mixed" in kinds(state), found)
    return found


@case("elsewhere")
def elsewhere(machine):
    """A player that is bound to another card than the default one."""
    machine.audio.settings(allowed_rates=RATES)
    sound = loopback(machine, 48000, 16)
    name = machine.audio.sink("pci-0000")[0]
    noise = Noise("/tmp/noise.wav", 48000, 16)
    player = start("player", "pw-play", "--target", name, noise.path)
    try:
        wait(lambda: machine.purlock.verdict() == "altered", "another device is told")
        state = machine.purlock.state()
        expect("elsewhere" in kinds(state), str(state))
    finally:
        sound.stop()
        end(player)
    machine.purlock.await_verdict("idle")
    return str(state["alterations"])


@case("release")
def release(machine):
    """Exclusive use comes and goes: PipeWire plays, lets go, a program takes the card, PipeWire plays again."""
    judge(machine, (48000, 16), (48000, 16))
    exclusive(machine, "hw", (48000, 16), (48000, 16))
    return judge(machine, (48000, 16), (48000, 16))[0]


def exclusive(machine, plugin, played, device, player=None, **options):
    """A program that opens the card itself; what it is called."""
    sound = loopback(machine, *device)
    noise = Noise("/tmp/noise.wav", *played)
    address = f"dmix:{card('Loopback')}" if plugin == "dmix" else f"{plugin}:{card('Loopback')},0"
    command = player(address) if player else ("aplay", "-q", "-D", address)
    return play(machine, noise, sound, device[1], player=command, **options)


@case("exclusive-aplay", quick=True)
def exclusive_aplay(machine):
    found, state = exclusive(machine, "hw", (96000, 24), (96000, 24),
                             during=lambda: wait(lambda: owner(card("Loopback")) == "aplay", "it is the owner"))
    expect(state["virtual"]["sampleRate"] == state["physical"]["sampleRate"] == 96000, found)
    return found


@case("exclusive-mpv")
def exclusive_mpv(machine):
    return exclusive(machine, "hw", (48000, 16), (48000, 16), lambda address: (
        "mpv", "--no-config", "--no-terminal", "--no-video", "--ao=alsa", "--audio-device=alsa/" + address))[0]


@case("plugin-without-work")
def plugin_without_work(machine):
    """ALSA's "plug" steps aside when it has nothing to convert."""
    return exclusive(machine, "plughw", (48000, 16), (48000, 16))[0]


def add_unclaimed(name, plugin, played, device, **options):
    """Who writes into the card's own buffer may be one of ALSA's plugins, so no format is claimed."""

    @case(name)
    def compare(machine):
        found, state = exclusive(machine, plugin, played, device, rule=is_not_claimed, **options)
        expect(state["virtual"] is None and state["physical"]["sampleRate"] == device[0], str(state))
        return found


add_unclaimed("plugin-other-rate", "plughw", (44100, 16), (48000, 16))
add_unclaimed("plugin-other-depth", "plughw", (48000, 24), (48000, 16))
add_unclaimed("plugin-mixes", "dmix", (48000, 16), (48000, 16))
add_unclaimed("exclusive-mapped", "hw", (48000, 16), (48000, 16),
              player=lambda address: ("aplay", "-q", "-M", "-D", address))

"""Runs the cases that were asked for, and writes a line of JSON for each."""

import json
import random
import signal
import sys
import time
import traceback

import bluetooth_cases  # noqa: F401  (these add their cases)
import cases
import converter
import lab
import loopback_cases  # noqa: F401
import machine_cases  # noqa: F401
import usb_cases  # noqa: F401


def wanted(words):
    """Names and functions of the cases that the words name: one case, or all whose names begin so."""
    quick = "--quick" in words
    names = [word for word in words if not word.startswith("--")]
    whole = {name for name, *_ in cases.ALL}
    for name, is_quick, function in cases.ALL:
        named = any(name == each if each in whole else name.startswith(each) for each in names)
        if named or (not names and (is_quick or not quick)):
            yield name, function


def at_random(chosen, seconds, seed):
    """One of the chosen cases after the other, in random order and for so long, while a converter that is none of their
    business comes and goes."""
    chance = random.Random(seed)
    end = time.monotonic() + seconds
    bystander = None
    while time.monotonic() < end:
        if chance.random() < 0.5:
            if bystander is None:
                bystander = converter.Converter("--maker", "Birch Audio", "--product", "0x7A20", name="Birch Bystander")
                lab.STARTED.remove(bystander.process)  # it outlives the case
            else:
                bystander.unplug()
                bystander = None
        name, function = chance.choice(chosen)
        note([name])
        yield name, function
    if bystander is not None:
        bystander.unplug()


def plan(words):
    """The cases to run. Names are noted before they run, so that one that ends the machine is missed."""
    if words[:1] == ["--random"]:
        seconds, seed, *names = words[1:]
        return at_random(list(wanted(names)), float(seconds), int(seed))
    chosen = list(wanted(words))
    note(name for name, _ in chosen)
    return chosen


def note(names):
    with open(lab.RESULTS + "/chosen", "a") as file:
        file.writelines(name + "\n" for name in names)


class Lab:
    def __init__(self):
        self.audio = lab.Audio()
        self.purlock = lab.Purlock()


def keep_evidence(machine, name):
    lab.write(f"{lab.RESULTS}/{name}.pw-dump.json", json.dumps(machine.audio.objects(), indent=1))
    lab.write(f"{lab.RESULTS}/{name}.state.json", json.dumps(machine.purlock.state(), indent=1))


LONGEST = 100  # seconds of the machine's time that a case may take


def too_long(*_):
    raise lab.Failure("took too long:\n" + "".join(traceback.format_stack(limit=8)))


def outcome(machine, name, function):
    signal.alarm(LONGEST)
    try:
        return True, function(machine) or ""
    except lab.Failure as failure:
        text = str(failure)
    except Exception:  # whatever goes wrong in one case, the others are run
        text = traceback.format_exc()
    finally:
        signal.alarm(0)
        lab.end_all()
    keep_evidence(machine, name)
    return False, text


def main():
    words = open(lab.RESULTS + "/cases").read().split()
    signal.signal(signal.SIGALRM, too_long)
    chosen = plan(words)
    lab.set_up_machine()
    machine = Lab()
    machine.audio.start()
    machine.purlock.start()
    with open(lab.RESULTS + "/outcomes.jsonl", "a") as file:
        for name, function in chosen:
            begin = time.monotonic()
            passed, text = outcome(machine, name, function)
            record = {"case": name, "passed": passed, "seconds": round(time.monotonic() - begin, 1), "text": text}
            file.write(json.dumps(record) + "\n")
            file.flush()
            print(json.dumps(record), flush=True)
    machine.purlock.stop()
    machine.audio.stop()


if __name__ == "__main__":
    sys.exit(main())

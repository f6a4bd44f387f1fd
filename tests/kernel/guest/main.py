"""Runs the cases that were asked for, and writes a line of JSON for each."""

import json
import signal
import sys
import time
import traceback

import cases
import lab
import loopback_cases  # noqa: F401  (these add their cases)
import machine_cases  # noqa: F401
import usb_cases  # noqa: F401


def wanted(words):
    quick = "--quick" in words
    names = [word for word in words if not word.startswith("--")]
    for name, is_quick, function in cases.ALL:
        if (not names and (is_quick or not quick)) or any(name.startswith(each) for each in names):
            yield name, function


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
    chosen = list(wanted(words))
    lab.write(lab.RESULTS + "/chosen", "".join(name + "\n" for name, _ in chosen))
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

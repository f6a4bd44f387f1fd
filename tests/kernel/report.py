#!/usr/bin/env python3
"""Prints a line for each case of a run, and says whether all passed."""

import json
import os
import sys


def lines(path):
    return open(path).read().splitlines() if os.path.exists(path) else []


def main():
    folder = sys.argv[1]
    outcomes = [json.loads(line) for line in lines(folder + "/outcomes.jsonl")]
    for each in outcomes:
        mark = "passed" if each["passed"] else "FAILED"
        print(f"{mark}  {each['case']}  {each['seconds']} s  {each['text']}")
    chosen = lines(folder + "/chosen")
    passed = sum(each["passed"] for each in outcomes)
    for name in chosen[len(outcomes):]:
        print(f"not run  {name}")
    print(f"{passed} of {len(chosen)} cases passed.")
    if passed < len(chosen) or not chosen:
        print(f"What the machine said is in {folder}.", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

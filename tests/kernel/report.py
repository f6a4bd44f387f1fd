#!/usr/bin/env python3
"""Prints a line for each case of a run, and says whether all passed."""

import json
import os
import sys


def main():
    folder = sys.argv[1]
    path = folder + "/outcomes.jsonl"
    outcomes = [json.loads(line) for line in open(path)] if os.path.exists(path) else []
    for each in outcomes:
        mark = "passed" if each["passed"] else "FAILED"
        print(f"{mark}  {each['case']}  {each['seconds']} s  {each['text']}")
    failed = sum(not each["passed"] for each in outcomes)
    print(f"{len(outcomes) - failed} of {len(outcomes)} cases passed.")
    if failed or not outcomes:
        print(f"What the machine said is in {folder}.", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

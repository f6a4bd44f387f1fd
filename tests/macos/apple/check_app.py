"""Whether the bundle that the build for a Mac has made is whole: check_app.py FOLDER

What was asked of codesign, what lay in the bundle then, whether every file that Info.plist names is there, and which
frameworks the program names.
"""

import json
import os
import pathlib
import plistlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
FRAMEWORKS = "AppKit ApplicationServices CoreAudio CoreFoundation Foundation IOBluetooth IOKit QuartzCore".split()
ENTITLEMENTS = ROOT / "packaging/macos/Purlock.entitlements"


def signing_problems(records, bundle):
    signings = [one for one in records if "--sign" in one["arguments"]]
    if not signings:
        return ["the bundle is never signed"]
    problems = []
    wanted = ["--force", "--sign", "-", "--entitlements", str(ENTITLEMENTS), str(bundle)]
    for one in signings:
        if one["arguments"] != wanted:
            problems.append(f"codesign {' '.join(one['arguments'])}: not as a program for this machine is signed")
        missing = {"Contents/Info.plist", "Contents/MacOS/Purlock", "Contents/Resources/Purlock.icns"} - set(one["files"])
        if missing:
            problems.append(f"signed without {', '.join(sorted(missing))}")
    if not any("--verify" in one["arguments"] and "--strict" in one["arguments"] for one in records):
        problems.append("the build does not verify what it has signed")
    return problems


def file_problems(bundle):
    information = plistlib.loads((bundle / "Contents/Info.plist").read_bytes())
    problems = [f"Info.plist: {key} is left open" for key, value in information.items()
                if isinstance(value, str) and re.search(r"@|\$\{", value)]
    named = {"CFBundleExecutable": "MacOS", "CFBundleIconFile": "Resources"}
    for key, folder in named.items():
        name = information.get(key, "")
        if key == "CFBundleIconFile" and not name.endswith(".icns"):
            name += ".icns"
        if not (bundle / "Contents" / folder / name).is_file():
            problems.append(f"Info.plist: {key} names {name}, which is not in {folder}")
    return problems


def linking_problems(program):
    text = subprocess.run(["llvm-objdump-19", "--macho", "--dylibs-used", program], capture_output=True, text=True,
                          check=True).stdout
    linked = set(re.findall(r"/System/Library/Frameworks/(\w+)\.framework", text))
    return [f"{name} is not linked" for name in FRAMEWORKS if name not in linked]


def main():
    folder = pathlib.Path(sys.argv[1])
    bundle = folder / "Purlock.app"
    records = [json.loads(line) for line in pathlib.Path(os.environ["MACOS_RECORD"]).read_text().splitlines()]
    plistlib.loads(ENTITLEMENTS.read_bytes())
    problems = signing_problems(records, bundle) + file_problems(bundle)
    problems += linking_problems(bundle / "Contents/MacOS/Purlock")
    verified = subprocess.run(["codesign", "--verify", "--strict", str(bundle)], capture_output=True, text=True)
    if verified.returncode != 0:
        problems.append(f"after the build: {verified.stdout.strip()}")
    print("\n".join(problems) if problems else "The bundle is whole, and sealed last.")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

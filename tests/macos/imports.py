"""What the program imports from macOS: compares it with the lists in the tree. apple/stub_sdk.py writes the stubs for the
linker from them.

imports.py LISTS [--update|''] OBJECT...

LISTS/symbols.txt holds one symbol a line under the library that has it, in brackets; LISTS/selectors.txt one selector a
line. The names of the C and C++ libraries are not listed: they change with the compiler, and no fact about macOS is in
them.
"""

import pathlib
import re
import subprocess
import sys

NM = "llvm-nm-19"
OBJDUMP = "llvm-objdump-19"

# Which library has a symbol, by its name. The first that matches.
LIBRARIES = [
    ("objc", r"_objc_|__objc_|_OBJC_EHTYPE_id|_OBJC_(META)?CLASS_\$_NSObject$"),
    ("IOBluetooth", r"_OBJC_CLASS_\$_IOBluetooth"),
    ("QuartzCore", r"_OBJC_CLASS_\$_CA|_kCA"),
    ("Foundation", r"_OBJC_CLASS_\$_NS(Array|Data|Dictionary|FileHandle|FileManager|NotificationCenter|Number"
                   r"|OperationQueue|ProcessInfo|RunLoop|String|Timer|URL|UserDefaults)$|_NSRunLoop"),
    ("AppKit", r"_OBJC_(META)?CLASS_\$_NS|_NS"),
    ("CoreFoundation", r"_CF|_kCF|___CFConstantStringClassReference"),
    ("CoreAudio", r"_Audio"),
    ("IOKit", r"_IO|_kIO"),
    ("ApplicationServices", r"_AX|_kAX"),
    ("cxx", r"__Z|___cxa|___gxx"),
    ("Dispatch", r"__?dispatch_|__Block_|__NSConcrete"),
    ("System", r""),
]

UNLISTED = ["cxx", "System"]


def library_of(symbol):
    return next(name for name, pattern in LIBRARIES if re.match(pattern, symbol))


def imported(objects):
    undefined, defined = set(), set()
    for line in subprocess.run([NM, *objects], capture_output=True, text=True, check=True).stdout.splitlines():
        words = line.split()
        if len(words) == 2 and words[0] == "U":
            undefined.add(words[1])
        elif len(words) == 3:
            defined.add(words[2])
    return undefined - defined


def selectors(objects):
    """The methods that are sent or defined. The section also names instance variables, which here end in an underscore."""
    found = set()
    for one in objects:
        text = subprocess.run([OBJDUMP, "--macho", "--section=__TEXT,__objc_methname", one], capture_output=True,
                              text=True).stdout
        for line in text.splitlines():
            words = line.split(None, 1)
            if len(words) == 2 and re.fullmatch(r"[0-9a-f]+", words[0]):
                found.add(words[1].strip())
    return {name for name in found if not name.startswith(".cxx") and not name.endswith("_")}


def write_stub(path, symbols, install_name, reexports=()):
    def quoted(names):
        return ", ".join(f"'{name}'" for name in sorted(names))

    classes = {name.split("_$_", 1)[1] for name in symbols if re.match(r"_OBJC_(META)?CLASS_\$_", name)}
    plain = {name for name in symbols if not re.match(r"_OBJC_(META)?CLASS_\$_", name)}
    lines = ["--- !tapi-tbd", "tbd-version: 4", "targets: [ arm64-macos ]", f"install-name: '{install_name}'"]
    if reexports:
        lines += ["reexported-libraries:", "  - targets: [ arm64-macos ]", f"    libraries: [ {quoted(reexports)} ]"]
    if plain or classes:
        lines += ["exports:", "  - targets: [ arm64-macos ]"]
    if plain:
        lines.append(f"    symbols: [ {quoted(plain)} ]")
    if classes:
        lines.append(f"    objc-classes: [ {', '.join(sorted(classes))} ]")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("\n".join(lines) + "\n...\n")


def listed(lists):
    """The symbols of each library in LISTS/symbols.txt."""
    found = {}
    for line in (lists / "symbols.txt").read_text().splitlines():
        if line.startswith("["):
            section = line.strip("[]")
        elif line:
            found.setdefault(section, set()).add(line)
    return found


def compare(path, wanted, update):
    if update:
        path.write_text(wanted)
        return True
    known = path.read_text() if path.exists() else ""
    if known == wanted:
        return True
    print(f"{path} and the program differ (run with --update, look at the difference, and check each new one):")
    for name in sorted(set(wanted.splitlines()) - set(known.splitlines())):
        print(f"  used, not listed: {name}")
    for name in sorted(set(known.splitlines()) - set(wanted.splitlines())):
        print(f"  listed, not used: {name}")
    return False


def main():
    lists, update, objects = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3:]
    groups = {}
    for symbol in imported(objects):
        groups.setdefault(library_of(symbol), set()).add(symbol)
    listing = ""
    for name in sorted(groups):
        if name not in UNLISTED:
            listing += f"[{name}]\n" + "".join(f"{symbol}\n" for symbol in sorted(groups[name])) + "\n"
    lists.mkdir(exist_ok=True)
    fine = compare(lists / "symbols.txt", listing.rstrip("\n") + "\n", update == "--update")
    sent = "".join(f"{name}\n" for name in sorted(selectors(objects)))
    fine = compare(lists / "selectors.txt", sent, update == "--update") and fine
    return 0 if fine else 1


if __name__ == "__main__":
    sys.exit(main())

"""Writes the stubs that the program is linked against: an SDK of names alone.

stub_sdk.py --frameworks SDK LISTS           what LISTS/symbols.txt lists, each framework at Apple's place
stub_sdk.py --libraries SDK ARGUMENT...      the libraries of C and C++, with what the objects among a linker's arguments
                                             ask of them
"""

import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import imports  # noqa: E402

# The letter of a framework's version in its install name, where it is not A.
VERSIONS = {"AppKit": "C", "Foundation": "C"}


def framework(sdk, name, symbols, exports=()):
    inside = f"System/Library/Frameworks/{name}.framework"
    install = f"/{inside}/Versions/{VERSIONS.get(name, 'A')}/{name}"
    imports.write_stub(sdk / inside / f"{name}.tbd", symbols, install, exports)


def frameworks(sdk, lists):
    listed = imports.listed(lists)
    objc = listed.pop("objc", set())
    dispatch = listed.pop("Dispatch", set())
    imports.write_stub(sdk / "usr/lib/libobjc.A.tbd", objc, "/usr/lib/libobjc.A.dylib")
    imports.write_stub(sdk / "usr/lib/system/libdispatch.tbd", dispatch, "/usr/lib/system/libdispatch.dylib")
    for name, symbols in listed.items():
        # What a program imports of Objective-C's runtime it gets through Foundation.
        framework(sdk, name, symbols, ["/usr/lib/libobjc.A.dylib"] if name == "Foundation" else [])
    return 0


def libraries(sdk, arguments):
    objects = [one for one in arguments if one.endswith((".o", ".a")) and "libclang_rt" not in one]
    groups = {}
    for symbol in imports.imported(objects):
        groups.setdefault(imports.library_of(symbol), set()).add(symbol)
    imports.write_stub(sdk / "usr/lib/libc++.tbd", groups.get("cxx", set()), "/usr/lib/libc++.1.dylib")
    imports.write_stub(sdk / "usr/lib/libSystem.tbd", groups.get("System", set()), "/usr/lib/libSystem.B.dylib",
                       ["/usr/lib/system/libdispatch.dylib"])
    return 0


if __name__ == "__main__":
    place = pathlib.Path(sys.argv[2])
    if sys.argv[1] == "--frameworks":
        sys.exit(frameworks(place, pathlib.Path(sys.argv[3])))
    sys.exit(libraries(place, sys.argv[3:]))

"""Reads the declarations of tests/macos/declarations, and the metadata of the SDK that they are compared with.

A fact is a line of words: "class AppKit NSButton NSControl" (framework, name, superclass), "member NSButton setTitle"
(also of a protocol), "value AppKit NSBoxType NSBoxSeparator 2", "name CoreFoundation CFRelease" (a function or constant).
Members have the metadata's form of a selector: "insertArrangedSubviewAtIndex".
"""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
DECLARATIONS = ROOT / "tests/macos/declarations"
FRAMEWORKS = ["AppKit", "ApplicationServices", "CoreAudio", "CoreFoundation", "Foundation", "IOBluetooth", "IOKit", "QuartzCore"]

# What an umbrella header brings from frameworks that it holds or re-exports.
ALSO = {"AppKit": ["CoreGraphics"], "CoreAudio": ["CoreAudioTypes"], "ApplicationServices": ["HIServices"],
        "objc": ["Foundation", "Runtime", "CoreGraphics", "CoreFoundation"], "dispatch": ["Runtime"],
        "Foundation": ["Runtime"]}


def joined(selector):
    """A selector as the metadata writes it."""
    first, *rest = [part for part in selector.split(":") if part]
    return first + "".join(part[:1].upper() + part[1:] for part in rest)


def without_comments(text):
    return re.sub(r"//[^\n]*", "", text)


def declared_types(text, framework):
    facts = set()
    for match in re.finditer(r"@(interface|protocol)\s+(\w+)([^\n{]*)\{?\n(.*?)@end", text, re.S):
        kind, name, head, body = match.groups()
        if name.startswith("OS_"):
            continue
        parent = re.match(r"[^:]*:\s*(\w+)", re.sub(r"<[^<>]*>", "", head))
        facts.add(f"class {framework} {name} {parent[1] if parent and kind == 'interface' else '-'}")
        body = re.sub(r"MACOS_SINCE\([^)]*\)", "", body)
        for method in re.findall(r"^\s*[-+]\s*\([^)]*(?:\([^)]*\)[^)]*)*\)\s*([^;]+?);", body, re.M | re.S):
            selector = "".join(re.findall(r"(\w+:)\s*\(", method)) or re.match(r"\w+", method)[0]
            facts.add(f"member {name} {joined(selector)}")
        for name_of_property in re.findall(r"@property[^;]*?(\w+)\s*;", body):
            facts.add(f"member {name} {name_of_property}")
    return facts


def declared_values(text, framework):
    facts = set()
    for match in re.finditer(r"(?:NS|CF)_(?:ENUM|OPTIONS)\(\s*[\w ]+,\s*(\w+)\)\s*\{(.*?)\}", text, re.S):
        for name, value in re.findall(r"(\w+)\s*=\s*([^,\n}]+)", match[2]):
            facts.add(f"value {framework} {match[1]} {name} {number(value)}")
    return facts


def declared_names(text):
    """Functions and constants, also those of enumerations without a name. Their values are not in the metadata."""
    if "#define MACOS_EXTERN" in text:
        return set()
    names = set(re.findall(r"MACOS_EXTERN[^;]*?\b(\w+)\s*(?:\(|MACOS_SINCE|CF_|;)", text))
    names |= set(re.findall(r"^static const \w+ (\w+) =", text, re.M))
    for body in re.findall(r"^enum : \w+ \{(.*?)\}", text, re.M | re.S):
        names |= set(re.findall(r"(\w+)\s*=", body))
    return names


def number(text):
    """1 << 3, 0x10, -25204, 1ULL."""
    plain = re.sub(r"(?i)(?<=[0-9a-f])u?l{1,2}\b", "", text.strip())
    match = re.fullmatch(r"(-?\w+)(?:\s*<<\s*(\w+))?", plain)
    return int(match[1], 0) << int(match[2] or "0", 0)


def declared():
    """What the declarations say, as facts, each with the file that says it."""
    facts = {}
    for header in sorted(DECLARATIONS.rglob("*.h")):
        text = without_comments(header.read_text())
        framework = header.parent.name
        found = declared_types(text, framework) | declared_values(text, framework)
        found |= {f"name {framework} {name}" for name in declared_names(text)}
        facts.update({fact: header.relative_to(ROOT) for fact in found})
    return facts

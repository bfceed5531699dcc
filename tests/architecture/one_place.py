#!/usr/bin/env python3
"""Finds fixed values of the accessory, the wire and the names that are written down again outside of protocol/.

    one_place.py [ROOT]     exit 0: none; 1: each one on a line of its own

Comments may name them: they are for people, and are held against the constants by nobody.
"""

import re
import sys
from pathlib import Path

ROOMS = ("base", "json", "socket", "command", "outcome", "device", "app", "cli", "services")

# What must not be written outside of protocol/, and what to write instead.
VALUES = {
    "kAccessoryVendor": r"(?i)\b(0x)?10d6\b|\b4310\b",
    "kAccessoryProduct": r"(?i)\b(0x)?fd01\b|\b64769\b",
    "kBlockBytes": r"\b512\b",
    "kFirmwareBlock": r"\b1536\b|\b786432\b",
    "kIconBlock": r"\b2048\b|\b1048576\b",
    "kServiceAddress": r"127\.0\.0\.1",
    "kServicePort": r"\b9090\b",
    "kLongestRequest": r"\b65536\b|\{?64\}?U? \* 1024\b",
    "kReplyRoom": r"\b10240\b|\b10239\b",
    "kRefusedPrefix": r'"Refused: ',
    "kFailedPrefix": r'"Failed: ',
    "kWrotePrefix": r'"Wrote ',
    "kHelperLabel": r"com\.corvatel\.KestravHelper|/com/corvatel/KestravHelper",
    "kHelperRight": r"com\.corvitel\.",
    "kRunAction": r"com\.corvatel\.kestrav\.run",
    "kApplicationName": r"com\.corvatel\.Kestrav\b",
    "kSystemBusAddress": r"/run/dbus/system_bus_socket",
}

# The same digits with another meaning: file, constant, and a part of the line.
OTHERS = (
    ("json/", "kBlockBytes", "kMaxReadingDepth"),
    ("json/", "kBlockBytes", "kFirstSize"),
    ("services/commandd/", "kLongestRequest", "scratch"),
    # Limits of the disk's own block, which the disk tells, and the unit that sysfs counts in.
    ("services/disk/SysfsBlockDevices.cpp", "kBlockBytes", ""),
    ("device/linux/UdevDeviceRegistry.cpp", "kBlockBytes", ""),
    ("services/disk/SysfsBlockDevices.cpp", "kLongestRequest", "blockSize"),
    ("services/gate/", "kLongestRequest", "argestBlock"),
    # The installer's own sentences: nobody but people reads them.
    ("services/helper/bless/openTrustedFolder.cpp", "kRefusedPrefix", "refused("),
    # An example for people, which the tests type in.
    ("cli/Invocation.cpp", "kBlockBytes", "512-byte block"),
    ("cli/Invocation.cpp", "kBlockBytes", "kestravctl read"),
    ("cli/Invocation.cpp", "kFirmwareBlock", "kestravctl read"),
)

COMMENT_OR_TEXT = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)


def without_comments(text):
    """`text` with its comments taken out, its literals and line numbers kept."""
    def keep(match):
        part = match.group(0)
        return part if part.startswith('"') else "\n" * part.count("\n")
    return COMMENT_OR_TEXT.sub(keep, text)


def is_another(path, value, line):
    return any(path.startswith(where) and value == name and part in line for where, name, part in OTHERS)


def second_places(path, text):
    """Sentences on the values that `text`, the source `path`, writes down again."""
    found = []
    for number, line in enumerate(without_comments(text).splitlines(), 1):
        if line.lstrip().startswith("#include"):
            continue
        for value, pattern in VALUES.items():
            if re.search(pattern, line) and not is_another(path, value, line):
                found.append(f"{path}:{number}: {line.strip()}: write {value} of protocol/")
    return found


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]
    sources = sorted(p for room in ROOMS for p in (root / room).rglob("*") if p.suffix in (".h", ".cpp"))
    if not sources:
        sys.exit(f"no sources below {root}")
    found = [line for p in sources for line in second_places(str(p.relative_to(root)), p.read_text(encoding="utf-8"))]
    print("\n".join(found) if found else f"{len(sources)} files, each fixed value in one place")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

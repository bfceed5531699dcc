"""Puts the built programs in their places in the guest."""

import shutil

from guest import ROOT

PROGRAMS = ROOT / "build/release/bin"
LIBEXEC = "/usr/libexec/kestrav"
PACKAGING = ROOT / "packaging"

PLACES = {
    PROGRAMS / "kestrav": "/usr/bin/kestrav",
    PROGRAMS / "kestravctl": "/usr/bin/kestravctl",
    PROGRAMS / "kestrav-commandd": f"{LIBEXEC}/kestrav-commandd",
    PROGRAMS / "kestrav-helper": f"{LIBEXEC}/kestrav-helper",
    PROGRAMS / "kestrav-bless": f"{LIBEXEC}/kestrav-bless",
    PACKAGING / "systemd/kestrav-commandd.service.in": "/usr/lib/systemd/system/kestrav-commandd.service",
    PACKAGING / "systemd/kestrav-commandd.socket": "/usr/lib/systemd/system/kestrav-commandd.socket",
    PACKAGING / "polkit/com.corvatel.kestrav.policy.in": "/usr/share/polkit-1/actions/com.corvatel.kestrav.policy",
    PACKAGING / "udev/60-kestrav.rules": "/usr/lib/udev/rules.d/60-kestrav.rules",
}


def install(guest):
    for source, place in PLACES.items():
        copy = guest.exchange / source.name
        shutil.copy(source, copy)
        if source.suffix == ".in":
            text = copy.read_text().replace("@KESTRAV_LIBEXEC@", LIBEXEC)
            copy.write_text(text.replace("@KESTRAV_BLESS@", f"{LIBEXEC}/kestrav-bless"))
        mode = "755" if source.parent == PROGRAMS else "644"
        guest.run("install", "-D", "-m", mode, f"/e2e/exchange/{source.name}", place)
    guest.sh("systemctl daemon-reload; udevadm control --reload; systemctl start kestrav-commandd.socket")

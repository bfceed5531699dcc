"""The packages, made of the programs that are built already, and installed in the guest."""

import shutil
import subprocess

from guest import ROOT
from kernel import HERE

BUILD = ROOT / "build/release"


def make_packages(packages):
    subprocess.run([HERE / "make-packages", BUILD, packages], check=True)


def install(guest, packages):
    names = []
    for package in sorted(packages.glob("*.deb")):
        shutil.copy(package, guest.exchange)
        names.append(f"/e2e/exchange/{package.name}")
    # Without the triggers of other packages, which would renew caches of menus and manual pages.
    guest.run("dpkg", "--no-triggers", "--install", *names)

"""The packages, and their installation in the guest."""

import shutil
import subprocess

from guest import BOOT_PATIENCE, ROOT
from kernel import HERE

BUILD = ROOT / "build/release"


def gather_packages(packages, built):
    """Puts the packages into the folder `packages`: those in `built`, or without that folder ones of the release build."""
    if built is None:
        subprocess.run([HERE / "make-packages", BUILD, packages], check=True)
        return
    packages.mkdir()
    for package in built.glob("*.deb"):
        # What a user installs, not what programs are built with.
        if "-dbgsym_" not in package.name and "-dev_" not in package.name:
            shutil.copy(package, packages)


def install(guest, packages):
    names = []
    for package in sorted(packages.glob("*.deb")):
        shutil.copy(package, guest.exchange)
        names.append(f"/e2e/exchange/{package.name}")
    # Without the triggers of other packages, which would renew caches of menus and manual pages.
    guest.run("dpkg", "--no-triggers", "--install", *names, seconds=BOOT_PATIENCE)

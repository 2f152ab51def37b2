"""Lays out Rook Bay.app and signs it.

command line: python3 -m rookmac.bundle APP INFO_TEMPLATE ENTITLEMENTS VERSION ICON PROGRAM [HELPER...]
"""

import plistlib
import shutil
import sys
from pathlib import Path

from .sign import sign_bundle
from .toolchain import MINIMUM

# Folders that go into Contents/Resources as they are.
FOLDERS = [Path(__file__).resolve().parents[3] / "resources/NewText.workflow"]


def information(template, version):
    """The information dictionary; a key without a value is left to deployment and not written."""
    text = template.read_text().replace("@VERSION@", version).replace("@MINIMUM@", MINIMUM)
    return plistlib.loads(text.encode())


def lay_out(app, template, version, icon, program, helpers):
    contents = app / "Contents"
    resources = contents / "Resources"
    (contents / "MacOS").mkdir(parents=True)
    resources.mkdir()
    info = information(template, version)
    (contents / "Info.plist").write_bytes(plistlib.dumps(info))
    (contents / "PkgInfo").write_bytes(b"APPL????")
    shutil.copy(program, contents / "MacOS" / info["CFBundleExecutable"])
    shutil.copy(icon, resources / f"{info['CFBundleIconFile']}.icns")
    for folder in FOLDERS:
        shutil.copytree(folder, resources / folder.name)
    for helper in helpers:
        shutil.copy(helper, resources / helper.name)


def main(arguments):
    app, template, entitlements = (Path(argument) for argument in arguments[:3])
    icon, program, *helpers = (Path(argument) for argument in arguments[4:])
    lay_out(app, template, arguments[3], icon, program, helpers)
    sign_bundle(app, entitlements)


if __name__ == "__main__":
    main(sys.argv[1:])

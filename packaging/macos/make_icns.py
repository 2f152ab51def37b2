#!/usr/bin/env python3
"""Renders an SVG at the sizes of a macOS icon and packs the PNGs into an .icns file.

usage: make_icns.py ICON.svg OUTPUT.icns
"""

import struct
import subprocess
import sys
from pathlib import Path

# Type codes of PNG entries by pixels; a size that serves as 1x and 2x has two codes.
ENTRIES = {16: ["icp4"], 32: ["icp5", "ic11"], 64: ["ic12"], 128: ["ic07"], 256: ["ic08", "ic13"],
           512: ["ic09", "ic14"], 1024: ["ic10"]}  # fmt: skip


def render(svg, pixels):
    command = ["rsvg-convert", "--width", str(pixels), "--height", str(pixels), "--format", "png", svg]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def pack(images):
    """images: pixels -> PNG bytes. The format is a magic, the total length, then type, length and data of each."""
    body = b""
    for pixels, codes in ENTRIES.items():
        for code in codes:
            body += code.encode() + struct.pack(">I", 8 + len(images[pixels])) + images[pixels]
    return b"icns" + struct.pack(">I", 8 + len(body)) + body


if __name__ == "__main__":
    source, output = sys.argv[1:]
    Path(output).write_bytes(pack({pixels: render(source, pixels) for pixels in ENTRIES}))

"""Ad-hoc code signatures for Mach-O files and bundles. Signing comes last: any later change breaks the page hashes.

command line: python3 -m rookmac.sign APP ENTITLEMENTS
"""

import hashlib
import os
import plistlib
import struct
import sys
from pathlib import Path

FAT_MAGIC = 0xCAFEBABE
LC_SEGMENT_64 = 0x19
LC_CODE_SIGNATURE = 0x1D

# Blob magics and slots of a code signature (all of it big-endian).
EMBEDDED_SIGNATURE = 0xFADE0CC0
CODE_DIRECTORY = 0xFADE0C02
REQUIREMENTS = 0xFADE0C01
ENTITLEMENTS = 0xFADE7171
CMS_WRAPPER = 0xFADE0B01
SLOT_CODE_DIRECTORY = 0
SLOT_INFO = 1
SLOT_REQUIREMENTS = 2
SLOT_RESOURCES = 3
SLOT_ENTITLEMENTS = 5
SLOT_CMS = 0x10000

FLAG_ADHOC = 0x2
FLAG_MAIN_BINARY = 0x1
CODE_DIRECTORY_VERSION = 0x20400
CODE_DIRECTORY_HEADER = 88
PAGE_SHIFT = 12
SLICE_ALIGNMENT_SHIFT = 14

# Which files of a bundle are sealed, and how; the rules that codesign writes for every application.
RULES = {
    "^Resources/": True,
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^version.plist$": True,
}
RULES2 = {
    ".*\\.dSYM($|/)": {"weight": 11.0},
    "^(.*/)?\\.DS_Store$": {"omit": True, "weight": 2000.0},
    "^.*": True,
    "^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|"
    "Library/(Automator|Spotlight|LoginItems))/": {"nested": True, "weight": 10.0},
    "^Info\\.plist$": {"omit": True, "weight": 20.0},
    "^PkgInfo$": {"omit": True, "weight": 20.0},
    "^Resources/": {"weight": 20.0},
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^[^/]+$": {"nested": True, "weight": 10.0},
    "^embedded\\.provisionprofile$": {"weight": 20.0},
    "^version\\.plist$": {"weight": 20.0},
}


def blob(magic, data):
    return struct.pack(">II", magic, 8 + len(data)) + data


def sha256(data):
    return hashlib.sha256(data).digest()


def aligned(value, alignment):
    return (value + alignment - 1) & ~(alignment - 1)


class Slice:
    """One CPU's Mach-O image, about to be signed."""

    def __init__(self, image):
        self.image = bytearray(image)
        self.signature_command = None
        first_section = len(image)
        count, self.commands_size = struct.unpack_from("<II", self.image, 16)
        self.command_count = count
        offset = 32
        for _ in range(count):
            command, size = struct.unpack_from("<II", self.image, offset)
            if command == LC_CODE_SIGNATURE:
                self.signature_command = offset
            elif command == LC_SEGMENT_64:
                name = bytes(self.image[offset + 8 : offset + 24]).rstrip(b"\0")
                if name == b"__LINKEDIT":
                    self.linkedit = offset
                elif name == b"__TEXT":
                    _, _, self.text_offset, self.text_size = struct.unpack_from("<4Q", self.image, offset + 24)
                for section in range(struct.unpack_from("<I", self.image, offset + 64)[0]):
                    start = struct.unpack_from("<I", self.image, offset + 72 + 80 * section + 48)[0]
                    if start:
                        first_section = min(first_section, start)
            offset += size
        self.room = first_section - 32 - self.commands_size

    def drop_signature(self):
        """Cuts an old signature off, or makes room for the load command of a first one. Returns the signed length."""
        if self.signature_command is not None:
            limit = struct.unpack_from("<I", self.image, self.signature_command + 8)[0]
            del self.image[limit:]
            return limit
        if self.room < 16:
            raise SystemExit("no room for LC_CODE_SIGNATURE: link with -headerpad 0x400")
        self.signature_command = 32 + self.commands_size
        struct.pack_into("<II", self.image, 16, self.command_count + 1, self.commands_size + 16)
        struct.pack_into("<4I", self.image, self.signature_command, LC_CODE_SIGNATURE, 16, 0, 0)
        limit = aligned(len(self.image), 16)
        self.image += bytes(limit - len(self.image))
        return limit

    def sign(self, identifier, special):
        """special: slot -> bytes whose hash is signed along. Requirements and entitlements are embedded too."""
        limit = self.drop_signature()
        embedded = {slot: data for slot, data in special.items() if slot in (SLOT_REQUIREMENTS, SLOT_ENTITLEMENTS)}
        highest = max(special)
        name = identifier.encode() + b"\0"
        pages = range(0, limit, 1 << PAGE_SHIFT)
        hashes_at = CODE_DIRECTORY_HEADER + len(name) + 32 * highest
        directory_size = hashes_at + 32 * len(pages)
        parts = [(SLOT_CODE_DIRECTORY, None), *sorted(embedded.items()), (SLOT_CMS, blob(CMS_WRAPPER, b""))]
        index_size = 12 + 8 * len(parts)
        total = index_size + directory_size + sum(len(data) for _, data in parts if data is not None)
        reserved = aligned(total, 16)
        self.point_at_signature(limit, reserved)

        directory = struct.pack(
            ">9I4B4I4Q", CODE_DIRECTORY, directory_size, CODE_DIRECTORY_VERSION, FLAG_ADHOC, hashes_at,
            CODE_DIRECTORY_HEADER, highest, len(pages), limit, 32, 2, 0, PAGE_SHIFT, 0, 0, 0, 0, 0,
            self.text_offset, self.text_size, FLAG_MAIN_BINARY,
        )  # fmt: skip
        directory += name
        for slot in range(highest, 0, -1):
            directory += sha256(special[slot]) if slot in special else bytes(32)
        for start in pages:
            directory += sha256(self.image[start : min(start + (1 << PAGE_SHIFT), limit)])

        index = struct.pack(">III", EMBEDDED_SIGNATURE, total, len(parts))
        body = b""
        for slot, data in parts:
            index += struct.pack(">II", slot, index_size + len(body))
            body += directory if data is None else data
        signature = index + body
        return bytes(self.image) + signature + bytes(reserved - len(signature))

    def point_at_signature(self, limit, size):
        """The load commands are part of what is hashed, so they get their final values first."""
        struct.pack_into("<II", self.image, self.signature_command + 8, limit, size)
        address, _, offset, _ = struct.unpack_from("<4Q", self.image, self.linkedit + 24)
        file_size = limit + size - offset
        mapped = aligned(file_size, 1 << SLICE_ALIGNMENT_SHIFT)
        struct.pack_into("<4Q", self.image, self.linkedit + 24, address, mapped, offset, file_size)


def sign_file(path, identifier, special=None):
    """Signs a thin or universal Mach-O file in place."""
    special = {SLOT_REQUIREMENTS: blob(REQUIREMENTS, struct.pack(">I", 0)), **(special or {})}
    data = path.read_bytes()
    magic, count = struct.unpack_from(">II", data)
    if magic != FAT_MAGIC:
        result = Slice(data).sign(identifier, special)
    else:
        entries = [struct.unpack_from(">5I", data, 8 + 20 * i) for i in range(count)]
        header = struct.pack(">II", FAT_MAGIC, count)
        body = b""
        header_size = 8 + 20 * count
        for cpu, subtype, offset, size, _ in entries:
            image = Slice(data[offset : offset + size]).sign(identifier, special)
            start = aligned(header_size + len(body), 1 << SLICE_ALIGNMENT_SHIFT)
            body += bytes(start - header_size - len(body)) + image
            header += struct.pack(">5I", cpu, subtype, start, len(image), SLICE_ALIGNMENT_SHIFT)
        result = header + body
    # A new file, not a rewritten one: the system remembers signatures by inode.
    replacement = path.with_suffix(".signing")
    replacement.write_bytes(result)
    replacement.chmod(0o755)
    os.replace(replacement, path)


def seal_resources(contents):
    """Contents/_CodeSignature/CodeResources: the hashes of every resource."""
    files, files2 = {}, {}
    for path in sorted((contents / "Resources").rglob("*")):
        if not path.is_file():
            continue
        name = str(path.relative_to(contents))
        data = path.read_bytes()
        optional = {"optional": True} if ".lproj/" in name and "Base.lproj" not in name else {}
        old_hash = hashlib.sha1(data).digest()
        files[name] = {"hash": old_hash, **optional} if optional else old_hash
        files2[name] = {"hash2": sha256(data), **optional}
    seal = plistlib.dumps({"files": files, "files2": files2, "rules": RULES, "rules2": RULES2})
    folder = contents / "_CodeSignature"
    folder.mkdir(exist_ok=True)
    (folder / "CodeResources").write_bytes(seal)
    return seal


def is_macho(path):
    with path.open("rb") as file:
        start = file.read(4)
    return start in (struct.pack(">I", FAT_MAGIC), b"\xcf\xfa\xed\xfe")


def sign_bundle(app, entitlements):
    contents = app / "Contents"
    info = (contents / "Info.plist").read_bytes()
    properties = plistlib.loads(info)
    identifier = properties["CFBundleIdentifier"]
    for path in sorted((contents / "Resources").rglob("*")):
        if path.is_file() and is_macho(path):
            sign_file(path, f"{identifier}.{path.name}")
    special = {SLOT_INFO: info, SLOT_RESOURCES: seal_resources(contents)}
    special[SLOT_ENTITLEMENTS] = blob(ENTITLEMENTS, entitlements.read_bytes())
    sign_file(contents / "MacOS" / properties["CFBundleExecutable"], identifier, special)


if __name__ == "__main__":
    sign_bundle(Path(sys.argv[1]), Path(sys.argv[2]))

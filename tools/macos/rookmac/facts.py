"""The table of public macOS API facts and the questions the generators ask about it."""

import json
import lzma
import re
from pathlib import Path

TOOLS = Path(__file__).resolve().parent.parent
TABLE = TOOLS / "facts" / "facts.json.xz"
SUPPLEMENT = TOOLS / "supplement"

# What each umbrella header brings in: value types must be complete before they are used.
UMBRELLA_INCLUDES = {
    "CoreFoundation": [],
    "CoreServices": ["CoreFoundation"],
    "IOKit": ["CoreFoundation"],
    "CoreGraphics": ["CoreFoundation"],
    "ColorSync": ["CoreFoundation"],
    "CoreText": ["CoreFoundation", "CoreGraphics"],
    "ImageIO": ["CoreFoundation", "CoreGraphics"],
    "CoreVideo": ["CoreFoundation", "CoreGraphics"],
    "ApplicationServices": ["CoreFoundation", "CoreGraphics", "CoreServices", "ImageIO", "CoreText", "ColorSync"],
    "Foundation": ["CoreFoundation", "CoreGraphics", "CoreServices"],
    "QuartzCore": ["Foundation", "CoreGraphics", "CoreVideo"],
    "UniformTypeIdentifiers": ["Foundation"],
    "AppKit": ["Foundation", "CoreGraphics", "ApplicationServices", "CoreText"],
    "Carbon": ["CoreServices", "ApplicationServices"],
    "QuickLookUI": ["AppKit", "Foundation"],
    "QuickLookThumbnailing": ["Foundation", "CoreGraphics", "UniformTypeIdentifiers"],
    "ServiceManagement": ["Foundation"],
    "UserNotifications": ["Foundation"],
}

# Programs link against these umbrellas, which re-export the framework.
LINKED_THROUGH = {"QuickLookUI": "Quartz"}

IDENTIFIER = re.compile(r"[A-Za-z_]\w*")


def identifiers(ctype):
    """The names a type is made of, array bounds left out."""
    return IDENTIFIER.findall(re.sub(r"\[[^\]]*\]", "", ctype))


def read_names(path):
    return {word for line in path.read_text().splitlines() if not line.startswith("#") for word in line.split()}


class Facts:
    """All frameworks of the table, indexed by name."""

    def __init__(self, path=TABLE):
        table = json.loads(lzma.open(path).read() if path.suffix == ".xz" else path.read_bytes())
        outside = table.pop("_known")
        self.outside_classes = set(outside["classes"])
        self.outside_protocols = set(outside["protocols"])
        self.frameworks = table
        self.system_names = read_names(SUPPLEMENT / "system-names.txt")
        self.class_home = {}
        self.protocol_home = {}
        self.value_home = {}
        for name, framework in table.items():
            for cls, entry in framework["classes"].items():
                if not entry.get("ext"):
                    self.class_home[cls] = name
            self.protocol_home.update(dict.fromkeys(framework["protocols"], name))
            for kind in ("enums", "structs", "unions", "typedefs", "opaque"):
                for value in framework[kind]:
                    self.value_home.setdefault(value, name)
            for entry in framework["opaque"].values():
                if entry.get("ref"):
                    self.value_home.setdefault(entry["ref"], name)

    def in_include_order(self):
        """Framework names such that each comes after those it includes."""
        order = []

        def visit(name):
            for included in UMBRELLA_INCLUDES[name]:
                visit(included)
            if name not in order:
                order.append(name)

        for name in self.frameworks:
            visit(name)
        return order

    def visible_from(self, framework):
        """The frameworks whose declarations an umbrella header sees, itself included."""
        seen = {framework}

        def visit(name):
            for included in UMBRELLA_INCLUDES[name]:
                seen.add(included)
                visit(included)

        visit(framework)
        return seen

    def generics(self, cls):
        home = self.class_home.get(cls)
        return tuple(self.frameworks[home]["classes"][cls].get("generics", ())) if home else ()

    def merged_classes(self):
        """name -> {super, protocols, methods} with the categories of all frameworks merged in."""
        merged = {}
        for framework in self.frameworks.values():
            for name, entry in framework["classes"].items():
                cls = merged.setdefault(name, {"super": None, "protocols": [], "methods": []})
                if not entry.get("ext"):
                    cls["super"] = entry.get("super")
                cls["protocols"] = cls["protocols"] + entry["protocols"]
                cls["methods"] = cls["methods"] + entry["methods"]
        return merged

    def merged(self, kind):
        """One table of "protocols", "functions", "externs", "typedefs", "enums", "structs" … over all frameworks."""
        return {name: entry for framework in self.frameworks.values() for name, entry in framework[kind].items()}

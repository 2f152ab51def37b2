"""Writes one umbrella header per framework, so that sources import <AppKit/AppKit.h> as they do with Xcode.

A declaration whose types the facts don't know is left out and listed in skipped.txt; using it is then an error.
"""

import re

from .declarators import CPP_KEYWORDS, availability, decayed, declare, field_name, literal, parameter, plain, restore_const
from .facts import SUPPLEMENT, UMBRELLA_INCLUDES, identifiers

BUILTIN = set(
    """void char signed unsigned short int long float double bool size_t BOOL SEL IMP id Class Protocol instancetype
    const struct _Nullable int8_t uint8_t int16_t uint16_t int32_t uint32_t int64_t uint64_t va_list NSObject union
    enum restrict volatile NSInteger NSUInteger""".split()
)

# Names under which frameworks' headers are also imported.
ALIASES = {
    "IOKit.framework/Headers/IOKitLib.h": "IOKit/IOKit.h",
    "IOKit.framework/Headers/pwr_mgt/IOPMLib.h": "IOKit/IOKit.h",
    "IOKit.framework/Headers/IOMessage.h": "IOKit/IOKit.h",
    "IOKit.framework/Headers/ps/IOPowerSources.h": "IOKit/IOKit.h",
    "IOKit.framework/Headers/ps/IOPSKeys.h": "IOKit/IOKit.h",
    "Quartz.framework/Headers/Quartz.h": "QuickLookUI/QuickLookUI.h",
    "Cocoa.framework/Headers/Cocoa.h": "AppKit/AppKit.h",
    "QuartzCore.framework/Headers/CoreAnimation.h": "QuartzCore/QuartzCore.h",
}

# References to these objects point to non-const structs in the public API.
MUTABLE_REFERENCES = ("CFRunLoop", "CFBundle")


def names_declared_by_supplement():
    """name -> framework whose -pre.h supplement declares it."""
    declared = {}
    for path in sorted(SUPPLEMENT.glob("*-pre.h")):
        text = path.read_text()
        found = re.findall(r"(\w+)(?:\[\d+\])?;\s*$", text, re.M)
        found += re.findall(r"\(\^(\w+)\)", text) + re.findall(r"^@protocol (\w+)", text, re.M)
        declared.update(dict.fromkeys(found, path.name[: -len("-pre.h")]))
    return declared


class HeaderWriter:
    """Writes the headers of all frameworks into an SDK folder."""

    def __init__(self, facts):
        self.facts = facts
        self.supplied = names_declared_by_supplement()
        self.declared = set()  # value types of the frameworks written so far
        self.skipped = []

    def write(self, sdk):
        frameworks = sdk / "System/Library/Frameworks"
        for name in self.facts.in_include_order():
            folder = frameworks / f"{name}.framework/Headers"
            folder.mkdir(parents=True, exist_ok=True)
            (folder / f"{name}.h").write_text(Umbrella(self, name).text())
        for alias, target in ALIASES.items():
            path = frameworks / alias
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(f"#include <{target}>\n")
        own = sdk / "usr/include/macsdk"
        own.mkdir(parents=True, exist_ok=True)
        for path in SUPPLEMENT.glob("*.h"):
            (own / path.name).write_text(path.read_text())
        (sdk / "skipped.txt").write_text("\n".join(self.skipped) + "\n")


class Umbrella:
    """The header of one framework."""

    def __init__(self, writer, name):
        self.writer = writer
        self.facts = writer.facts
        self.name = name
        self.entries = self.facts.frameworks[name]
        self.visible = self.facts.visible_from(name)
        self.declared_here = set()
        self.forward_classes = set()
        self.forward_protocols = set()

    # What may be used in a declaration

    def is_known(self, name, generics=()):
        facts = self.facts
        if name in BUILTIN or name in facts.system_names or name in generics or name in self.declared_here:
            return True
        if name in self.writer.supplied:
            return self.writer.supplied[name] in self.visible
        if name in facts.class_home or name in facts.protocol_home:
            return True
        if name in facts.outside_classes or name in facts.outside_protocols:
            return True
        home = facts.value_home.get(name)
        return home != self.name and home in self.visible and name in self.writer.declared

    def accept(self, types, who, generics=()):
        """Whether all types are known; if so, their classes and protocols are declared ahead."""
        for ctype in types:
            for name in identifiers(ctype):
                if not self.is_known(name, generics):
                    self.writer.skipped.append(f"{self.name}: {who}: unknown {name} in {ctype}")
                    return False
        for ctype in types:
            self.forward(ctype)
        return True

    def forward(self, ctype):
        for name in identifiers(ctype):
            if name in self.facts.class_home or name in self.facts.outside_classes:
                self.forward_classes.add(name)
            if name in self.facts.protocol_home or name in self.facts.outside_protocols:
                self.forward_protocols.add(name)

    # Value types

    def opaque_types(self):
        lines = []
        for name, entry in self.entries["opaque"].items():
            if entry.get("cf") or entry.get("ref"):
                reference = entry.get("ref") or name + "Ref"
                self.declared_here.add(reference)
                if reference in self.facts.system_names or name == "CFType":
                    continue  # the supplement declares CFTypeRef
                root, const = self.root_of(name)
                lines.append(f"typedef {const}struct __attribute__((objc_bridge(id))) macsdk_{root} *{reference};")
            if not entry.get("cf"):
                lines.append(f"struct {name};")
                self.declared_here.add(name)
        return lines

    def root_of(self, name):
        """A mutable variant is the same struct as its immutable root, without const."""
        opaque = self.entries["opaque"]
        root = name
        while opaque[root].get("super") in opaque and opaque[root]["super"] != root:
            root = opaque[root]["super"]
        const = "" if root != name or name in MUTABLE_REFERENCES else "const "
        return root, const

    def value_items(self):
        """(name, names it needs, text) of enums, structs, unions and typedefs in any order."""
        skip = self.facts.system_names
        for name, entry in self.entries["enums"].items():
            if name not in skip:
                yield name, identifiers(entry["type"]), self.enum(name, entry)
        for kind, keyword in (("structs", "struct"), ("unions", "union")):
            for name, entry in self.entries[kind].items():
                if name not in skip:
                    yield self.record(keyword, name, entry)
        for name, ctype in self.entries["typedefs"].items():
            taken = name in self.entries["enums"] or name in self.entries["structs"] or name in self.writer.supplied
            if name not in skip and not taken:
                ctype = plain(ctype)
                self.forward(ctype)
                yield name, identifiers(ctype), f"typedef {declare(ctype, name)};"

    @staticmethod
    def enum(name, entry):
        values = [f"{key} = {literal(value)}" for key, value in entry["values"].items() if value is not None]
        if entry.get("options"):
            cases = f" enum : {name} {{ {', '.join(values)} }};" if values else ""
            return f"typedef {entry['type']} {name};{cases}"
        body = ", ".join(values) or f"macsdk_empty_{name}"
        return f"typedef enum __attribute__((enum_extensibility(open))) : {entry['type']} {{ {body} }} {name};"

    def record(self, keyword, name, entry):
        packing = f" __attribute__((packed, aligned({entry['pack']})))" if entry.get("pack") else ""
        needs = []
        fields = []
        for field, ctype in entry["f"]:
            ctype = plain(ctype)
            self.forward(ctype)
            needs += [used for used in identifiers(ctype) if used != name]
            fields.append(declare(ctype, field_name(field)) + ";")
        body = re.sub(rf"\b{name}\b(?= ?\*)", f"{keyword} {name}", " ".join(fields))
        return name, needs, f"typedef {keyword}{packing} {name} {{ {body} }} {name};"

    def value_types(self):
        """Enums, structs, unions and typedefs, each after what it is made of."""
        self.declared_here |= {name for name in self.entries["enums"] if name in self.facts.system_names}
        lines = []
        pending = list(self.value_items())
        while pending:
            waiting = []
            for item in pending:
                name, needs, text = item
                if all(self.is_known(need) for need in needs):
                    lines.append(text)
                    self.declared_here.add(name)
                else:
                    waiting.append(item)
            if len(waiting) == len(pending):
                for name, needs, _ in waiting:
                    missing = [need for need in needs if not self.is_known(need)]
                    self.writer.skipped.append(f"{self.name}: value type {name}: needs {missing}")
                break
            pending = waiting
        return lines

    def constants(self):
        lines = []
        plain_enums = {"int": [], "unsigned int": []}
        for name, entry in self.entries["constants"].items():
            value, ctype = entry["value"], entry["type"]
            # Values that depend on the CPU are in the supplement.
            if value is None or entry.get("arch") or name in self.facts.system_names or name in self.writer.supplied:
                continue
            if isinstance(value, str):
                lines.append(f"#define {name} {literal(value)}")
            elif not self.accept([ctype], f"constant {name}"):
                continue
            elif isinstance(value, float):
                lines.append(f"static const {ctype} {name} = {literal(value)};")
            elif ctype == "int":
                cast = "(int)" if abs(value) > 0x7FFFFFFF else ""
                plain_enums[ctype].append(f"{name} = {cast}{literal(value)}")
            elif ctype == "unsigned int":
                plain_enums[ctype].append(f"{name} = {literal(value & 0xFFFFFFFF)}")
            elif "*" in ctype:
                lines.append(f"#define {name} (({ctype}){literal(value)})")
            else:
                lines.append(f"static const {ctype} {name} = ({ctype}){literal(value)};")
        for ctype, cases in plain_enums.items():
            if cases:
                lines.append(f"enum : {ctype} {{ {', '.join(cases)} }};")
        return lines

    # Protocols and classes

    def method(self, entry, who, generics=()):
        result = restore_const(plain(entry["ret"]), entry["sel"])
        arguments = [restore_const(plain(ctype), entry["sel"]) for ctype in entry["args"]]
        if not self.accept([result, *arguments], f"{who} {entry['sel']}", generics):
            return None
        name = entry["sel"]
        if ":" in name:
            parts = zip(name.split(":")[:-1], arguments)
            name = " ".join(f"{part}:({parameter(ctype)})a{i}" for i, (part, ctype) in enumerate(parts))
        return f"{entry['k']} ({parameter(result)}){name}{availability(entry)};"

    @staticmethod
    def renamed_properties(entry):
        """Properties with an is… getter: (getter, setter or None, declaration)."""
        methods = {(m["k"], m["sel"]): m for m in entry["methods"]}
        for getter in entry["methods"]:
            match = re.match(r"is([A-Z]\w*)$", getter["sel"])
            if not match or getter["args"] or getter["ret"] != "BOOL":
                continue
            capital = match.group(1)
            name = capital if capital[:2].isupper() and len(capital) > 1 else capital[0].lower() + capital[1:]
            listed = entry.get("props") is None or name in entry["props"]
            if not listed or (getter["k"], name) in methods or name in CPP_KEYWORDS:
                continue
            setter = methods.get((getter["k"], f"set{capital}:"))
            scope = "class, " if getter["k"] == "+" else ""
            access = "" if setter else "readonly, "
            attributes = availability(getter)
            yield getter, setter, f"@property ({scope}{access}getter={getter['sel']}) BOOL {name}{attributes};"

    def protocols(self):
        entries = self.entries["protocols"]
        order = []

        def visit(name):
            for adopted in entries[name]["supers"]:
                if adopted in entries and adopted != "NSObject" and adopted not in order:
                    visit(adopted)
            if name not in order:
                order.append(name)

        for name in entries:
            if name != "NSObject":
                visit(name)
        lines = []
        for name in order:
            lines += self.protocol(name, entries[name])
        return lines

    def protocol(self, name, entry):
        adopted = [
            other
            for other in entry["supers"]
            if other == "NSObject" or other in self.facts.protocol_home or other in self.writer.supplied
        ]
        lines = [f"@protocol {name}" + (f" <{', '.join(adopted)}>" if adopted else "")]
        properties = list(self.renamed_properties(entry))
        replaced = [method for getter, setter, _ in properties for method in (getter, setter)]
        optional = False
        for method in entry["methods"]:
            if any(method is other for other in replaced):
                continue
            if bool(method.get("opt")) != optional:
                optional = not optional
                lines.append("@optional" if optional else "@required")
            text = self.method(method, f"protocol {name}")
            if text:
                lines.append(text)
        for getter, _, text in properties:
            lines += ["@optional" if getter.get("opt") else "@required", text]
        return lines + ["@end"]

    def classes(self):
        entries = self.entries["classes"]
        order = []

        def visit(name):
            parent = entries[name].get("super")
            if parent in entries and not entries[parent].get("ext") and parent not in order:
                visit(parent)
            if name not in order:
                order.append(name)

        for name, entry in entries.items():
            if not entry.get("ext"):
                visit(name)
        order += [name for name, entry in entries.items() if entry.get("ext")]
        lines = []
        for name in order:
            lines += self.cls(name, entries[name])
        return lines

    def cls(self, name, entry):
        generics = self.facts.generics(name)
        if name == "NSObject" or entry.get("ext"):
            head = self.category_head(name, entry)
        else:
            head = self.class_head(name, entry, generics)
        if not head:
            return []
        lines = [head]
        properties = list(self.renamed_properties(entry))
        replaced = [method for getter, setter, _ in properties for method in (getter, setter)]
        for method in entry["methods"]:
            if not method.get("inh") and not any(method is other for other in replaced):
                text = self.method(method, name, generics)
                if text:
                    lines.append(text)
        return lines + [text for _, _, text in properties] + ["@end"]

    def visible_protocols(self, names):
        homes = {**self.facts.protocol_home, **self.writer.supplied, "NSObject": self.name}
        return [name for name in names if homes.get(name) in self.visible]

    def category_head(self, name, entry):
        home = self.facts.class_home.get(name)
        if name != "NSObject" and home not in self.visible:
            self.writer.skipped.append(f"{self.name}: category on unknown {name}")
            return None
        adopted = [] if name == "NSObject" else self.visible_protocols(entry["protocols"])
        if not entry["methods"] and not adopted:
            return None
        return f"@interface {name} (macsdk_{self.name})" + (f" <{', '.join(adopted)}>" if adopted else "")

    def class_head(self, name, entry, generics):
        parent = entry.get("super")
        if parent and parent != "NSObject" and self.facts.class_home.get(parent) not in self.visible:
            self.writer.skipped.append(f"{self.name}: class {name}: superclass {parent} is not visible")
            parent = "NSObject"
        attributes = availability({"intro": entry.get("intro")}).strip()
        if name == "NSProxy":
            attributes += " __attribute__((objc_root_class))"
            parent = None
        if name == "NSException":
            attributes += " __attribute__((objc_exception))"
        adopted = self.visible_protocols(entry["protocols"])
        return (
            # A hook for the fakes of the test suite; empty in a build for macOS.
            f"{attributes} MACSDK_CLASS @interface {name}".lstrip()
            + (f"<{', '.join('__covariant ' + generic for generic in generics)}>" if generics else "")
            + (f" : {parent}" if parent else "")
            + (f" <{', '.join(adopted)}>" if adopted else "")
        )

    # Functions and variables

    def functions(self):
        lines = []
        for name, entry in self.entries["functions"].items():
            if name in self.facts.system_names or name.startswith("_"):
                continue
            result = plain(entry["ret"])
            arguments = [restore_const(decayed(plain(ctype)), name) for ctype in entry["args"]]
            if not self.accept([ctype for ctype in [result, *arguments] if ctype != "..."], f"function {name}"):
                continue
            call = f"{name}({', '.join(parameter(ctype) for ctype in arguments) or 'void'})"
            head = declare(result, call) if re.search(r"\([\^*]", result) else f"{result} {call}"
            lines.append(f"extern {head}{self.ownership(name, entry)}{availability(entry)};")
        return lines

    @staticmethod
    def ownership(name, entry):
        """Says who releases the result where the name misleads the analyser."""
        named_owned = bool(re.search("Create|Copy", name))
        if entry.get("owned") and not named_owned:
            return " __attribute__((cf_returns_retained))"
        if named_owned and not entry.get("owned") and re.match(r"(CF|CG)\w+Ref\b", entry["ret"]):
            return " __attribute__((cf_returns_not_retained))"
        return ""

    def externs(self):
        lines = []
        for name, entry in self.entries["externs"].items():
            ctype = re.sub(r" _Nullable$", "", plain(entry["type"]))
            if name in self.facts.system_names or not self.accept([ctype], f"variable {name}"):
                continue
            text = declare(ctype, "const " + name) if ctype.endswith("*") else f"{ctype} const {name}"
            lines.append(f"extern {text}{availability(entry)};")
        return lines

    def forward_declarations(self):
        lines = []
        for name in sorted(self.forward_classes):
            generics = self.facts.generics(name)
            parameters = f"<{', '.join('__covariant ' + generic for generic in generics)}>" if generics else ""
            lines.append(f"@class {name}{parameters};")
        return lines + [f"@protocol {name};" for name in sorted(self.forward_protocols)]

    def text(self):
        values = self.opaque_types() + self.value_types() + self.constants()
        objects = self.protocols() + self.classes()
        plain_c = self.functions() + self.externs()
        guard = f"MACSDK_{self.name}_H"
        lines = ["// Generated from the API facts; do not edit.", f"#ifndef {guard}", f"#define {guard}"]
        lines.append("#include <macsdk/base.h>")
        lines += [f"#include <{name}/{name}.h>" for name in UMBRELLA_INCLUDES[self.name]]
        if (SUPPLEMENT / f"{self.name}-pre.h").exists():
            lines.append(f"#include <macsdk/{self.name}-pre.h>")
        lines += ["#pragma clang assume_nonnull begin", "#ifdef __OBJC__", *self.forward_declarations(), "#endif"]
        lines += ["#ifdef __cplusplus", 'extern "C" {', "#endif", *values]
        lines += ["#ifdef __OBJC__", *objects, "#endif", *plain_c]
        lines += ["#ifdef __cplusplus", "}", "#endif", "#pragma clang assume_nonnull end"]
        if (SUPPLEMENT / f"{self.name}-post.h").exists():
            lines.append(f"#include <macsdk/{self.name}-post.h>")
        self.writer.declared |= self.declared_here
        return "\n".join(lines + ["#endif", ""])

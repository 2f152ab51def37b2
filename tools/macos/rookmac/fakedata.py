"""Assembly for the recording fakes: every class, function and variable of the facts as data for tests/macos/runtime.

All symbols are weak, so a fake written by hand takes precedence. Types are written in a small code, see TypeCode in
tests/macos/runtime/Types.h:
  v B c C s S i I q Q f d   void, BOOL and numbers        : # * ^   selector, class, C string, other pointer
  ?                         block                          {Name=dd} struct with its flattened fields
  @Name                     object, @ alone for id         &Name     CoreFoundation object of that opaque type
  =                         instancetype                   X         a type the fakes don't support
An object that is never nil ends in "!".

command line: python3 -m rookmac.fakedata OUTPUT.s
"""

import json
import re
import sys
from pathlib import Path

from .facts import Facts

SCALARS = {
    "void": "v", "BOOL": "B", "bool": "B", "Boolean": "C", "char": "c", "signed char": "c", "unsigned char": "C",
    "short": "s", "unsigned short": "S", "int": "i", "unsigned int": "I", "unsigned": "I", "long": "q",
    "unsigned long": "Q", "long long": "q", "unsigned long long": "Q", "size_t": "Q", "float": "f", "double": "d",
    "int8_t": "c", "uint8_t": "C", "int16_t": "s", "uint16_t": "S", "int32_t": "i", "uint32_t": "I", "int64_t": "q",
    "uint64_t": "Q", "SEL": ":", "Class": "#", "NSInteger": "q", "NSUInteger": "Q", "CGFloat": "d", "CFIndex": "q",
    "CFTypeID": "Q", "CFOptionFlags": "Q", "CFHashCode": "Q", "OSStatus": "i", "OSType": "I", "FourCharCode": "I",
    "OptionBits": "I", "OSErr": "s", "UniChar": "S", "UniCharCount": "Q", "ItemCount": "Q", "ByteCount": "Q",
    "ByteOffset": "Q", "IOReturn": "i", "kern_return_t": "i", "mach_port_t": "I", "task_port_t": "I", "pid_t": "i",
    "natural_t": "I", "boolean_t": "i", "NSComparisonResult": "q", "NSRectEdge": "Q", "off_t": "q", "mode_t": "I",
    "mach_vm_address_t": "Q", "mach_vm_size_t": "Q", "vm_address_t": "Q", "ResType": "I", "ScriptCode": "s",
    "UTF32Char": "I", "Size": "q", "Fixed": "i", "Duration": "i", "uid_t": "I", "gid_t": "I", "dev_t": "I",
}  # fmt: skip
STRUCTS = {
    "CGPoint": "dd", "CGSize": "dd", "CGRect": "dddd", "NSPoint": "dd", "NSSize": "dd", "NSRect": "dddd",
    "NSRange": "QQ", "_NSRange": "QQ", "ProcessSerialNumber": "II",
}  # fmt: skip
SCALAR_SIZES = {"B": 1, "c": 1, "C": 1, "s": 2, "S": 2, "i": 4, "I": 4, "q": 8, "Q": 8, "f": 4, "d": 8}


class TypeCodes:
    def __init__(self, facts):
        self.typedefs = facts.merged("typedefs")
        self.enums = facts.merged("enums")
        self.structs = facts.merged("structs")
        self.classes = set(facts.class_home) | facts.outside_classes | {"NSObject"}
        self.core = {}
        for name, entry in facts.merged("opaque").items():
            if entry.get("cf"):
                self.core[entry.get("ref") or name + "Ref"] = name

    def code(self, ctype):
        bare = ctype.strip()
        nullable = bare.endswith("_Nullable") or "(^ _Nullable)" in bare
        bare = re.sub(r"\bconst\b", "", bare.replace(" _Nullable", "")).strip()
        end = "" if nullable else "!"
        if bare == "instancetype":
            return "=" + end
        if "(^" in bare or bare == "id /*block*/" or bare == "dispatch_block_t":
            return "?"
        if "(*" in bare or "[" in bare:
            return "^"
        if bare in ("char *", "signed char *"):
            return "*"
        if bare.startswith("id<") or bare in ("id", "CFTypeRef", "CFPropertyListRef", "Protocol *"):
            return "@" + end
        if bare.startswith("dispatch_"):
            return "@" + end
        match = re.fullmatch(r"(\w+)(<.*>)? \*", bare)
        if match and match.group(1) in self.classes:
            return f"@{match.group(1)}{end}"
        if bare.endswith("*"):
            return "^"
        if bare in SCALARS:
            return SCALARS[bare]
        if bare in STRUCTS:
            return f"{{{bare.replace('NS', 'CG') if bare != 'NSRange' else bare}={STRUCTS[bare]}}}"
        if bare in self.core:
            return f"&{self.core[bare]}{end}"
        if bare in self.enums:
            return self.code(self.enums[bare]["type"])
        if bare in self.typedefs:
            target = self.typedefs[bare]
            return self.code(target + " _Nullable" if nullable and "(^" not in target else target)
        if bare in self.structs:
            return self.struct(bare)
        if re.fullmatch(r"\w+(Ref|Ptr|Handle)", bare):
            return "^"
        if re.fullmatch(r"\w*(Type|Key|Object)\w*", bare):
            return "@" + end  # a generic parameter
        return "X"

    def struct(self, name):
        fields = ""
        for _, ctype in self.structs[name]["f"]:
            code = self.code(ctype)
            if code.startswith("{"):
                code = code[code.index("=") + 1 : -1]
            elif code[0] in "@&:#*^?":
                code = "Q"
            if code == "X" or "v" in code:
                return "X"
            fields += code
        return f"{{{name}={fields}}}"


def size_of(code):
    if code.startswith("{"):
        return sum(max(8, SCALAR_SIZES[letter]) for letter in code[code.index("=") + 1 : -1])
    return max(8, SCALAR_SIZES.get(code[0], 8))


class Assembly:
    def __init__(self, facts):
        self.facts = facts
        self.codes = TypeCodes(facts)
        self.lines = []
        self.strings = {}

    def text(self, value):
        """The label of a C string."""
        return self.strings.setdefault(value, f".Ltext{len(self.strings)}")

    def put(self, *lines):
        self.lines += lines

    def weak(self, symbol):
        self.put(f".weak {symbol}", f"{symbol}:")

    def class_structs(self):
        self.put('.section .data.rel,"aw"', ".balign 8")
        for name, entry in self.classes.items():
            parent = entry["super"] if entry["super"] in self.classes else "NSObject"
            for prefix, isa, flags in (("OBJC_CLASS_$_", f"OBJC_METACLASS_$_{name}", 0),
                                       ("OBJC_METACLASS_$_", "OBJC_METACLASS_$_NSObject", 1)):  # fmt: skip
                self.weak(prefix + name)
                self.put(f".quad {isa}, {prefix}{parent}, 0, 0, .Lro{flags}_{name}")
                self.put(f".Lro{flags}_{name}: .long {flags}, 8, 8, 0", f".quad 0, {self.text(name)}, 0, 0, 0, 0, 0")
        self.put('.section objc_classlist,"aw"')
        self.put(*(f".quad OBJC_CLASS_$_{name}" for name in self.classes))
        self.put('.section .data.rel,"aw"', ".globl fake_class_names", "fake_class_names:")
        self.put(*(f".quad {self.text(name)}" for name in self.classes), ".quad 0")

    def method_rows(self):
        protocols = self.facts.merged("protocols")
        merged = self.facts.merged_classes()

        def protocol_methods(name, seen):
            if name in seen or name not in protocols:
                return []
            seen.add(name)
            methods = list(protocols[name]["methods"])
            for adopted in protocols[name]["supers"]:
                methods += protocol_methods(adopted, seen)
            return methods

        self.put('.section .data.rel,"aw"', ".globl fake_method_rows", "fake_method_rows:")
        for name in [*self.classes, "NSObject"]:
            entry = merged.get(name, {"methods": [], "protocols": []})
            methods = list(entry["methods"])
            for adopted in entry["protocols"]:
                methods += protocol_methods(adopted, set())
            seen = set()
            for method in methods:
                key = method["k"] + method["sel"]
                if key not in seen:
                    seen.add(key)
                    self.put(f".quad {self.text(name)}, {self.text(key)}, {self.text(self.signature(method))}")
        self.put(".quad 0, 0, 0")

    def signature(self, entry):
        return " ".join(self.codes.code(ctype) for ctype in [entry["ret"], *entry["args"]])

    def functions(self):
        rows = []
        self.put(".text")
        for name, entry in self.facts.merged("functions").items():
            if name in self.facts.system_names or "..." in entry["args"] or name.startswith("_"):
                continue
            self.weak(name)
            self.put(f".type {name},@function", f"lea .Lrow_{name}(%rip),%rax", "jmp fake_function_entry")
            rows += [f".Lrow_{name}: .quad {self.text(name)}, {self.text(self.signature(entry))}"]
            rows += [f".quad {1 if entry.get('owned') else 0}"]
        self.put('.section .data.rel,"aw"', *rows)

    def variables(self):
        self.put('.section .data.rel,"aw"', ".balign 16")
        for name, entry in self.facts.merged("externs").items():
            if name in self.facts.system_names:
                continue
            code = self.codes.code(entry["type"])
            self.weak(name)
            if code.startswith(("@NSString", "&CFString")):
                # A constant string that says the variable's name.
                self.put(".quad 1f", "1: .quad __CFConstantStringClassReference, 0x7c8")
                self.put(f".quad {self.text(name)}, {len(name)}")
            elif code == "X":
                self.put(".zero 128")
            else:
                self.put(f".zero {size_of(code)}")

    def write(self):
        self.classes = {name: entry for name, entry in self.facts.merged_classes().items()
                        if name in self.facts.class_home and name != "NSObject"}  # fmt: skip
        self.class_structs()
        self.method_rows()
        self.functions()
        self.variables()
        self.put('.section .rodata.str1.1,"aMS",@progbits,1')
        self.put(*(f"{label}: .asciz {json.dumps(value)}" for value, label in self.strings.items()))
        self.put('.section .note.GNU-stack,"",@progbits')
        return "\n".join(self.lines) + "\n"


if __name__ == "__main__":
    Path(sys.argv[1]).write_text(Assembly(Facts()).write())

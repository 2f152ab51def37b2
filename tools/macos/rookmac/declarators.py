"""C text for types, names and literals."""

import json
import re

CPP_KEYWORDS = set("true false template default class operator new delete private public union struct this".split())
LONG_MIN = -(1 << 63)


def plain(ctype):
    """The facts mark untyped blocks with a comment; C wants none."""
    return ctype.replace("id /*block*/", "id")


def declare(ctype, name):
    """Puts a name into an abstract declarator: int (^)(id) and f give int (^f)(id)."""
    pointer = re.search(r"\(([\^*])( _Nullable)?\)", ctype)
    if pointer:
        star, nullable = pointer.group(1), pointer.group(2) or ""
        return f"{ctype[:pointer.start()]}({star}{nullable} {name}){ctype[pointer.end():]}"
    array = re.match(r"(.*?)((?: \[[^\]]*\])+)$", ctype)
    if array:
        bounds = re.findall(r"\[([^\]]*)\]", array.group(2))
        return f"{array.group(1)} {name}" + "".join(f"[{bound.strip()}]" for bound in reversed(bounds))
    return f"{ctype} {name}"


def parameter(ctype):
    """A parameter's abstract type; arrays are passed as pointers."""
    return re.sub(r" (\[[^\]]*\])", " *", ctype) if "[" in ctype else ctype


def decayed(ctype):
    """I/O Kit's names are arrays of characters; the facts have such a parameter as a pointer to the whole array."""
    return re.sub(r"\b(io_name_t|io_string_t|io_struct_inband_t) \*", "char *", ctype)


def restore_const(ctype, function):
    """The facts lose const on pointers that are never nil; what isn't a getter only reads such an argument."""
    reads = re.fullmatch(r"(void|char|unichar|UniChar|uint8_t|CGFloat|CGPoint|CGSize|CGRect|CGAffineTransform) \*", ctype)
    return "const " + ctype if reads and not re.search("[gG]et|NoCopy|mutable", function) else ctype


def field_name(name):
    return name + "_" if name in CPP_KEYWORDS else name


def literal(value):
    if isinstance(value, bool):
        return "1" if value else "0"
    if isinstance(value, float):
        return repr(value)
    if not isinstance(value, int):
        return json.dumps(value)
    if value > 0x7FFFFFFFFFFFFFFF:
        return f"{value}ULL"
    if value == LONG_MIN:
        return "(-9223372036854775807LL - 1)"
    if abs(value) > 0x7FFFFFFF:
        return f"{value}U" if 0 < value <= 0xFFFFFFFF else f"{value}LL"
    return str(value)


def availability(entry):
    """Attributes for the first macOS version and for deprecation."""
    if entry.get("depver"):
        introduced = entry.get("intro", "10.0")
        return f" __attribute__((availability(macos,introduced={introduced},deprecated={entry['depver']})))"
    text = " __attribute__((deprecated))" if entry.get("dep") else ""
    if entry.get("intro"):
        text += f" __attribute__((availability(macos,introduced={entry['intro']})))"
    return text

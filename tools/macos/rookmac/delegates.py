"""Finds methods that nobody calls: most likely misspelt optional delegate methods.

The compiler accepts any method in an implementation. One is suspicious when the project doesn't declare it, neither a
superclass nor an adopted protocol of the facts has it, no @selector names it and no message of the file sends it.
"""

import difflib
import json

# What every object can override.
ROOT_METHODS = set(
    """init dealloc description debugDescription hash isEqual: copyWithZone: mutableCopyWithZone: forwardInvocation:
    methodSignatureForSelector: respondsToSelector: forwardingTargetForSelector: load initialize new
    allocWithZone:""".split()
)


def selectors(methods):
    return {(method["k"], method["sel"]) for method in methods}


class KnownMethods:
    """What the system declares for a class and its protocols."""

    def __init__(self, facts):
        self.classes = facts.merged_classes()
        self.protocols = facts.merged("protocols")

    def of_protocol(self, name, seen):
        if name in seen or name not in self.protocols:
            return set()
        seen.add(name)
        known = selectors(self.protocols[name]["methods"])
        for adopted in self.protocols[name]["supers"]:
            known |= self.of_protocol(adopted, seen)
        return known

    def of(self, cls, protocols):
        known = selectors(self.classes["NSObject"]["methods"])
        seen = set()
        while cls in self.classes:
            known |= selectors(self.classes[cls]["methods"])
            for adopted in self.classes[cls]["protocols"]:
                known |= self.of_protocol(adopted, seen)
            cls = self.classes[cls]["super"]
        for adopted in protocols:
            known |= self.of_protocol(adopted, seen)
        return known


class Source:
    """The Objective-C declarations of one translation unit, read from clang's syntax tree."""

    def __init__(self, tree):
        self.classes = {}  # name -> super, protocols, methods
        self.protocols = {}  # name -> methods
        self.implemented = []
        self.used = set()
        self.visit(tree, None)

    def entry(self, name):
        return self.classes.setdefault(name, {"super": None, "protocols": set(), "methods": set()})

    def visit(self, node, owner):
        kind, name = node.get("kind"), node.get("name")
        if kind in ("ObjCInterfaceDecl", "ObjCCategoryDecl", "ObjCImplementationDecl", "ObjCCategoryImplDecl"):
            cls = node["interface"]["name"] if "interface" in node else name
            entry = self.entry(cls)
            entry["super"] = node.get("super", {}).get("name") or entry["super"]
            entry["protocols"] |= {protocol["name"] for protocol in node.get("protocols", [])}
            owner = (cls, "Impl" in kind)
        elif kind == "ObjCProtocolDecl":
            methods = [child for child in node.get("inner", []) if child.get("kind") == "ObjCMethodDecl"]
            self.protocols.setdefault(name, set()).update(
                ("-" if method["instance"] else "+", method["name"]) for method in methods)
            return
        elif kind == "ObjCMethodDecl" and owner and not node.get("isImplicit"):
            method = ("-" if node.get("instance") else "+", name)
            if owner[1]:
                self.implemented.append((owner[0], method))
            else:
                self.entry(owner[0])["methods"].add(method)
        elif kind == "ObjCPropertyDecl" and owner:
            setter = f"set{name[0].upper()}{name[1:]}:"
            self.entry(owner[0])["methods"] |= {("-", name), ("-", setter)}
        elif kind in ("ObjCSelectorExpr", "ObjCMessageExpr"):
            self.used.add(node.get("selector"))
        for child in node.get("inner", []):
            if child:
                self.visit(child, owner)


def suspicious(known_methods, tree_text):
    """Yields one line per suspicious method. tree_text: clang's -ast-dump=json, one object after another."""
    decoder = json.JSONDecoder()
    nodes, position = [], tree_text.find("{")
    while position >= 0:
        node, end = decoder.raw_decode(tree_text, position)
        nodes.append(node)
        position = tree_text.find("{", end)
    source = Source({"inner": nodes})
    for cls, method in source.implemented:
        declared, protocols, name = False, set(), cls
        while name in source.classes:
            entry = source.classes[name]
            declared = declared or method in entry["methods"]
            protocols |= entry["protocols"]
            if name in known_methods.classes:
                break
            name = entry["super"]
        known = known_methods.of(name, protocols).union(*(source.protocols.get(adopted, ()) for adopted in protocols))
        selector = method[1]
        if declared or selector in source.used or method in known or selector in ROOT_METHODS or selector[0] == ".":
            continue
        close = difflib.get_close_matches(selector, [other for kind, other in known if kind == method[0]], 1, 0.7)
        hint = f"; did you mean {close[0]}?" if close else ""
        yield f"{method[0]}[{cls} {selector}] is never called: not declared, inherited or in an adopted protocol{hint}"

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: abi_tables.py write XML      the tables of an interface, from what abidw wrote of it
       abi_tables.py compare OLD NEW  what a change of them breaks: exit status 1 if anything

Three tables, each row of which somebody's program was compiled with: the slots of virtual tables, the
layout of records (bits), and the exported names. A row that changes or goes, and a row that comes to a
class that there was, break programs; a class or a name that is new does not."""
import subprocess
import sys
import xml.etree.ElementTree as tree

BUILT_ON = {"pointer-type-def": "*", "reference-type-def": "&"}


class Types:
    def __init__(self, root):
        self.by_id = {}
        for element in root.iter():
            # A definition says more than a declaration with the same id.
            if "id" in element.attrib and (element.attrib["id"] not in self.by_id or
                                           "is-declaration-only" not in element.attrib):
                self.by_id[element.attrib["id"]] = element

    def name(self, identifier):
        element = self.by_id.get(identifier)
        if element is None:
            return "?"
        if element.tag in BUILT_ON:
            kind = "&&" if element.get("kind") == "rvalue" else BUILT_ON[element.tag]
            return self.name(element.get("type-id")) + kind
        if element.tag == "qualified-type-def":
            return "const " + self.name(element.get("type-id"))
        if element.tag == "array-type-def":
            return f"{self.name(element.get('type-id'))}[{int(element.get('size-in-bits'))} bits]"
        return element.get("name") or "a function"


def named_classes(root):
    """(qualified name, element) of each class that is defined, once; none of the compiler's own."""
    found = {}

    def visit(element, scope):
        for child in element:
            name = "::".join(scope + [child.get("name", "")])
            if child.tag == "namespace-decl":
                visit(child, scope + [child.get("name")])
            elif child.tag == "class-decl" and "is-declaration-only" not in child.attrib:
                found.setdefault(name, child)
                visit(child, scope + [child.get("name")])
            elif child.tag in ("abi-instr", "member-type"):
                visit(child, scope)

    visit(root, [])
    return sorted(row for row in found.items() if not row[0].startswith(("std::", "__")))


def slots(classes):
    for name, element in classes:
        rows = []
        for member in element.findall("member-function[@vtable-offset]"):
            function = member.find("function-decl")
            mangled = function.get("mangled-name") or function.get("name")
            rows.append((int(member.get("vtable-offset")), mangled))
        yield from (f"slot {name} {offset} {mangled}" for offset, mangled in sorted(set(rows)))


def records(classes, types):
    for name, element in classes:
        yield f"record {name} {element.get('size-in-bits', '0')} bits"
        for base in element.findall("base-class"):
            where = "virtual" if base.get("is-virtual") == "yes" else base.get("layout-offset-in-bits")
            yield f"record {name} {where} base {types.name(base.get('type-id'))}"
        for member in element.findall("data-member[@layout-offset-in-bits]"):
            variable = member.find("var-decl")
            yield (f"record {name} {member.get('layout-offset-in-bits')} {variable.get('name')}: "
                   f"{types.name(variable.get('type-id'))}")


def names(root):
    for kind, table in (("function", "elf-function-symbols"), ("object", "elf-variable-symbols")):
        for symbol in root.findall(f".//{table}/elf-symbol"):
            yield f"name {symbol.get('name')} {kind} {symbol.get('version', '')}".rstrip()


def write(xml):
    root = tree.parse(xml).getroot()
    classes = named_classes(root)
    rows = [*slots(classes), *records(classes, Types(root)), *sorted(set(names(root)))]
    text = subprocess.run(["c++filt"], input="\n".join(rows), check=True, text=True, stdout=subprocess.PIPE).stdout
    print("\n".join(dict.fromkeys(text.splitlines())))  # a destructor has several names


def broken(old, new):
    """Rows that break programs: those that are gone, and those that come to a class that there was."""
    gone = [f"gone: {row}" for row in old if row not in set(new)]
    known = {tuple(row.split(" ")[:2]) for row in old if not row.startswith("name ")}
    added = [f"new in a class that there was: {row}" for row in new
             if row not in set(old) and tuple(row.split(" ")[:2]) in known]
    return gone + added


def compare(old, new):
    rows = [[line for line in open(path, encoding="utf-8").read().splitlines() if line] for path in (old, new)]
    breaks = broken(*rows)
    print("\n".join(breaks) if breaks else
          "\n".join(f"new: {row}" for row in rows[1] if row not in set(rows[0])))
    return 1 if breaks else 0


if __name__ == "__main__":
    if sys.argv[1:2] == ["write"] and len(sys.argv) == 3:
        write(sys.argv[2])
    elif sys.argv[1:2] == ["compare"] and len(sys.argv) == 4:
        sys.exit(compare(*sys.argv[2:]))
    else:
        sys.exit(__doc__)

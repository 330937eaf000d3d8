#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes of what libabigail's abidw reads in a shared library a text, a line for each thing that programs rely on:

    function GL_count_items: int32_t (GL_list const *)
    record GL_list: 24 bytes
    record GL_list: at   0 GL_node * first
    type GL_test: int (*)(void *)

describe.py <XML >TEXT
"""
import re
import sys
import xml.etree.ElementTree

# What other headers declare is not the library's, or known inside of it alone.
PUBLIC = re.compile(r"(^|/)mova/[a-z]+/(inline/)?[a-z_]+[.]h$")
HEAD = """# SPDX-License-Identifier: MIT
# The binary interface of {}. ./dev abi writes this file.
"""


class Library:
    def __init__(self, corpus):
        self.types = {each.get("id"): each for each in corpus.iter() if each.get("id")}
        self.lines = set()
        for each in corpus.iter():
            add = getattr(self, "add_" + each.tag.replace("-", "_"), None)
            if add and (each.get("elf-symbol-id") or each.tag == "elf-symbol" or PUBLIC.search(each.get("filepath") or "")):
                add(each)

    # ---- how a type is written ----

    def name(self, identifier):
        each = self.types[identifier]
        return getattr(self, "name_of_" + each.tag.replace("-", "_"), lambda named: named.get("name"))(each)

    def name_of_pointer_type_def(self, pointer):
        pointed = self.types[pointer.get("type-id")]
        if pointed.tag == "function-type":
            return self.signature(pointed, "(*)")
        return self.name(pointer.get("type-id")) + " *"

    def name_of_reference_type_def(self, reference):
        return self.name(reference.get("type-id")) + " &"

    def name_of_qualified_type_def(self, qualified):
        words = [word for word in ("const", "volatile", "restrict") if qualified.get(word) == "yes"]
        return " ".join([self.name(qualified.get("type-id")), *words])

    def name_of_array_type_def(self, array):
        return self.name(array.get("type-id")) + "".join(f"[{each.get('length')}]" for each in array.iter("subrange"))

    def name_of_function_type(self, function):
        return self.signature(function, "")

    def signature(self, function, between):
        parameters = ["..." if each.get("is-variadic") else self.name(each.get("type-id")) for each in function.iter("parameter")]
        result = function.find("return")
        return f"{'void' if result is None else self.name(result.get('type-id'))} {between}({', '.join(parameters)})"

    # ---- what programs rely on ----

    def add_elf_symbol(self, symbol):
        size = f", {symbol.get('size')} bytes" if symbol.get("size") else ""
        self.lines.add(f"symbol {symbol.get('name')}: {symbol.get('type')}, {symbol.get('binding')}{size}")

    def add_function_decl(self, function):
        if function.get("elf-symbol-id"):
            self.lines.add(f"function {function.get('elf-symbol-id')}: {self.signature(function, '')}")

    def add_var_decl(self, variable):
        if variable.get("elf-symbol-id"):
            self.lines.add(f"variable {variable.get('elf-symbol-id')}: {self.name(variable.get('type-id'))}")

    def add_typedef_decl(self, typedef):
        named = self.name(typedef.get("type-id"))
        if named != typedef.get("name"):
            self.lines.add(f"type {typedef.get('name')}: {named}")

    def add_class_decl(self, record, kind="record"):
        if record.get("is-declaration-only") == "yes":
            return
        begin = f"{kind} {record.get('name')}: "
        self.lines.add(f"{begin}{int(record.get('size-in-bits')) // 8} bytes")
        for base in record.findall("base-class"):
            at = int(base.get("layout-offset-in-bits"))
            self.lines.add(f"{begin}at {at // 8:3} {self.name(base.get('type-id'))}")
        for member in record.findall("data-member"):
            field = member.find("var-decl")
            if member.get("static") != "yes":
                at = int(member.get("layout-offset-in-bits") or 0)
                self.lines.add(f"{begin}at {at // 8:3} {self.name(field.get('type-id'))} {field.get('name')}")
        for member in record.findall("member-function"):
            if member.get("vtable-offset"):
                function = member.find("function-decl")
                self.lines.add(f"{begin}virtual {member.get('vtable-offset')} {function.get('mangled-name')}")

    def add_union_decl(self, union):
        self.add_class_decl(union, "union")

    def add_enum_decl(self, enum):
        for each in enum.findall("enumerator"):
            self.lines.add(f"enumeration {enum.get('name')}: {each.get('name')} is {each.get('value')}")


def main():
    corpus = xml.etree.ElementTree.parse(sys.stdin).getroot()
    lines = Library(corpus).lines
    # Of an ordinary function the line of its symbol says nothing more.
    functions = {line.split(" ")[1] for line in lines if line.startswith("function ")}
    lines -= {f"symbol {name} func-type, global-binding" for name in functions}
    print(HEAD.format(corpus.get("soname")) + "\n".join(sorted(lines)))


main()

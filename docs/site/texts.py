# SPDX-License-Identifier: MIT
"""Fails where a public name has no text, or where the text of a C function lacks what a caller must know.

python3 texts.py XML-DIRECTORY SOURCE

What a text must say is told from the declaration. The text of a function is its own; what it says of the functions that it
names ("as GL_release") counts for it too, and so does what the head of its header says of all.

  every name      has a text: headers, functions, records, fields, types, constants, macros
  every header    with functions says in its head who owns what, what is raised, what a failure leaves, which threads may call
  a result        is said: "Returns", or what the result is
  a pointer       that comes out, as the result or through a parameter: the text or the head says whose what it points to is
  a size, count,  has a unit, which the text, its field's or parameter's name, or the head gives
    or index
  a raise         that docs/errors.md lists for a function: the function's text says "Raises" or "raises"
"""
import os
import re
import sys

import reference

# The nouns by which a text may speak of what a pointer leads to.
THINGS = [
    (r"_node|_tree_item", r"nodes?|positions?"),
    (r"_list|_array|_tree\b|_table|_stack|_cache|_lookup|_block\b|mb_pool", r"heads?|lists?|arrays?|tables?|records?|stacks?|caches?|lookups?|trees?|pools?"),
    (r"_iter\b|_iterator", r"iterators?"),
    (r"_entry", r"entries|entry"),
    (r"mova_error_handler|_fn\b", r"function|handler"),
    (r"char|void|clut_colour|double|float|u?int", r"items?|elements?|blocks?|storage|bytes|texts?|strings?|pointers?|values?|keys?|buffer|records?|words?|address|constant|colours?|components?"),
]
WHOSE = r"\b(owns?|own|owned|owner|frees?|freed|caller'?s?|library'?s?|program'?s?|takes? back|it gives|constant|new|inside|is left alone|keeps?|stores? in)\b"

AMOUNT = r"(^|_)(size|bytes|count|n|capacity|increment|steps|index|i|position|length|room|alignment|nalloc|nitems|budget|shift)$"
UNIT = r"\b(bytes?|elements?|items?|entries|entry|nodes?|slots?|words?|values?|keys?|numbers?|indices|index|colours?|places?|blocks?|steps|links|bits|doubles|pairs?|ids?|characters)\b"


class Texts:
    def __init__(self, directory, source):
        self.compounds = reference.read(directory)
        self.faults = []
        heads = {each.file: each.doc.text() + " " + " ".join(label for label, _, _ in each.doc.parts)
                 for each in self.compounds if each.kind == "file"}
        # A head that names another header builds on what that says.
        self.heads = {file: " ".join([head] + [heads.get(each, "") for each in re.findall(r"mova/\w+/\w+\.h", head)])
                      for file, head in heads.items()}
        self.members = [member for each in self.compounds if each.kind in ("file", "struct", "class", "namespace")
                        and each.protection != "private" and not each.name.startswith("std")
                        for member in each.members if member.protection == "public" and member.kind != "friend"]
        self.functions = {each.name: each for each in self.members if each.kind == "function" and self.is_c(each)}
        with open(os.path.join(source, "docs/errors.md"), encoding="utf-8") as file:
            self.raising = set(re.findall(r"^\| `[a-zA-Z ]+` \| \d+ \| \d+ \| `(\w+)`", file.read(), re.M))

    @staticmethod
    def is_c(member):
        return "/cxx" not in member.file and member.compound.kind == "file"

    def fault(self, member, text):
        name = member.name if member.compound.kind == "file" else f"{member.compound.name}::{member.name}"
        self.faults.append(f"{member.file}: {name}: {text}")

    def whole_text(self, member, seen=()):
        """Its own, and that of the functions that it names."""
        own = member.doc.text()
        named = [self.functions[word] for word in re.findall(r"\w+", own) if word in self.functions and word not in seen]
        return own + " " + " ".join(self.whole_text(each, (*seen, member.name)) for each in named if each is not member)

    def check_presence(self):
        for compound in self.compounds:
            is_record = compound.kind in ("struct", "class", "union", "concept") and compound.protection != "private"
            is_header = compound.kind == "file" and compound.name.endswith(".h")
            if (is_record or is_header) and not compound.doc:
                self.faults.append(f"{compound.file}: {compound.name}: no text")
        for member in self.members:
            named = not re.match(r"@|$", member.name) or not member.values
            if named and not member.doc:
                self.fault(member, "no text")
            for value in member.values:
                if not value.doc:
                    self.fault(value, "no text")

    def check_heads(self):
        for file in sorted({each.file for each in self.functions.values()}):
            head = self.heads[file]
            for what, expression in (("who owns what", r"\bOwnership\b"), ("what is raised", r"\brais|[Ee]rror"),
                                     ("what a failure leaves", r"Failure|fail|exception|throw"), ("threads", r"[Tt]hread")):
                if not re.search(expression, head) and file not in ("mova/version.h",):
                    self.faults.append(f"{file}: the head does not say: {what}")

    def check_result(self, member, text):
        if member.type not in ("void", "static void") and not re.search(r"\b[Rr]eturns?\b|\bresult\b|answers?\b|^As ", text):
            self.fault(member, "does not say what it returns")

    def check_owner(self, member, text, head):
        out = [member.type] if "*" in member.type else []
        out += [kind for kind, _ in member.parameters if re.search(r"\*\s*\*", kind)]
        for kind in out:
            things = next((nouns for pattern, nouns in THINGS if re.search(pattern, kind)), None)
            sentences = re.split(r"(?<=[.;:])\s", text + " " + head)
            if not things or not any(re.search(rf"\b({things})\b", each) and re.search(WHOSE, each) for each in sentences):
                self.fault(member, f"does not say whose the {kind} is")

    def check_units(self, member, text, head):
        amounts = [name for kind, name in member.parameters
                   if re.search(AMOUNT, name) and re.search(r"int|size_t", kind) and "*" not in kind]
        # What counts or measures says so by its name; its result has a unit likewise.
        if re.search(r"int\d*_t|size_t", member.type) and re.search(r"count|size|check|index|memsize", member.name):
            amounts.append("the result")
        if amounts and not re.search(UNIT, text) and not re.search(r"Units|[Ss]izes? (is|are) .*bytes", head):
            self.fault(member, f"does not give the unit of {', '.join(amounts)}")

    def check_raises(self, member):
        if member.name in self.raising and not re.search(r"\b[Rr]aises?\b", member.doc.text() + " ".join(
                label for label, _, _ in member.doc.parts)):
            head = self.heads[member.file]
            if not re.search(rf"{member.name}\b[^.]*\b(rais|report)|(rais|report)[^.]*\b{member.name}\b", head):
                self.fault(member, "does not say what it raises")

    def check(self):
        self.check_presence()
        self.check_heads()
        for member in self.functions.values():
            text, head = self.whole_text(member), self.heads[member.file]
            self.check_result(member, text)
            self.check_owner(member, text, head)
            self.check_units(member, text, head)
            self.check_raises(member)
        return self.faults


def main(directory, source):
    texts = Texts(directory, source)
    faults = texts.check()
    print("\n".join(faults))
    print(f"{len(texts.members)} names with a text, {len(texts.functions)} of them C functions; {len(faults)} faults")
    sys.exit(1 if faults or len(texts.functions) < 200 else 0)


if __name__ == "__main__":
    main(*sys.argv[1:])

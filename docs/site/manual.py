# SPDX-License-Identifier: MIT
"""Writes the manual, section 3: a page for each C function, one for each header, and the records' and types' names as other
names of that.

python3 manual.py XML-DIRECTORY DIRECTORY VERSION
"""
import os
import re
import sys

import reference

WIDTH = 78


# ---- the marks of the manual ----

def plain(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
    return re.sub(r"[^\x00-\x7f]", lambda found: f"\\[u{ord(found[0]):04X}]", text)


def set_text(text, parameters=()):
    """Prose: code between backticks is bold, a parameter slanted, and so is a page that is named."""
    out = []
    for at, part in enumerate(re.split(r"`([^`]*)`", text)):
        if at % 2:
            font = "I" if part.lstrip("*") in parameters else "B"
            out.append(f"\\f{font}{plain(part)}\\fR")
        else:
            out.append(plain(part))
    text = "".join(out)
    return "\\&" + text if text[:1] in ".'" else text


def paragraph(text, parameters=()):
    return [".PP", set_text(text, parameters)]


def verbatim(text):
    lines = ["\\&" + plain(line) for line in text.strip("\n").split("\n")]
    return [".PP", ".nf", *lines, ".fi"]


def described(doc, parameters=(), labels=True):
    """Every paragraph of a description, with its label ahead of it."""
    out, last = [], ""
    for label, kind, text in doc.parts:
        if labels and label and label != last:
            out += [f'.SS "{plain(label)}"']
        last = label
        if kind == "verbatim":
            out += verbatim(text)
        elif kind == "item":
            mark, rest = text.split(" ", 1)
            out += [f".IP {plain(mark)} 4", set_text(rest, parameters)]
        else:
            out += paragraph(text, parameters)
    return out


def sentences(text):
    return re.split(r"(?<=[.:;])\s+(?=[A-Z`\"0])", text) if text else []


# ---- pages ----

class Manual:
    def __init__(self, xml, directory, version):
        self.directory, self.version = directory, version
        self.compounds = reference.read(xml)
        self.files = {each.file: each for each in self.compounds if each.kind == "file"}
        self.functions = {member.name: member for each in self.files.values() for member in each.members
                          if member.kind == "function"}

    def family(self, file):
        return "mova_" + os.path.splitext(os.path.basename(file))[0]

    def head(self, file, label):
        """What the head of a header, or of the one that it builds on, has under a label."""
        doc = self.files[file].doc
        said = doc.labelled(label) or " ".join(each for each in sentences(doc.text()) if each.startswith(label))
        if not said:
            for other in re.findall(r"mova/\w+/\w+\.h", doc.text()):
                if other in self.files and other != file:
                    return self.head(other, label)
        return said

    def write(self, name, body, of="libmova_container"):
        title = [f'.\\" SPDX-License-Identifier: MIT', f'.TH {name} 3 "" "mova {self.version}" "{of}"']
        with open(os.path.join(self.directory, f"{name}.3"), "w", encoding="utf-8") as file:
            file.write("\n".join(title + body) + "\n")

    @staticmethod
    def name_line(name, doc):
        first = re.sub(r"[`*]", "", sentences(doc.text())[0]).rstrip(".:;")
        if not re.match(r"[A-Z]\w*[A-Z_]|[A-Z]\b", first):
            first = first[0].lower() + first[1:]
        return [".SH NAME", f"{plain(name)} \\- {plain(first)}"]

    @staticmethod
    def prototype(member):
        kind = re.sub(r"^static (inline )?", "", member.type)
        space = "" if kind.endswith("*") else " "
        arguments = re.sub(r"\b(\w+)(?=[,)])", lambda found: found[1] if found[1] == "void" else f'\x01{found[1]}\x02',
                           member.arguments)
        text = f"{kind}{space}{member.name}{arguments};".replace("* ", "*")
        return ["\\fB" + plain(text).replace("\x01", "\\fI").replace("\x02", "\\fB") + "\\fR"]

    def returns(self, member, seen=()):
        """The sentences that say what comes out."""
        own = [each for label, kind, text in member.doc.parts if label != "Raises" and kind == "prose" for each in sentences(text)]
        for expression in (r"^Returns?\b", r"^(?!An? |The |It |Where |After |Else ).*\breturns\b", r"\bresult\b"):
            said = [each for each in own if re.search(expression, each)]
            if said:
                return said
        # "As another, but …": what that returns.
        for name in re.findall(r"\w+", member.doc.text()):
            if name in self.functions and name not in seen and name != member.name:
                return self.returns(self.functions[name], (*seen, member.name))
        return []

    def see_also(self, member):
        named = [each for each in re.findall(r"\b[A-Za-z]\w*_\w+\b", member.doc.text()) if each in self.functions and each != member.name]
        neighbours = [each.name for each in member.compound.members if each.kind == "function"]
        at = neighbours.index(member.name)
        near = neighbours[max(0, at - 2):at] + neighbours[at + 1:at + 3]
        pages = list(dict.fromkeys(named + near))
        return [".SH SEE ALSO"] + [f".BR {plain(each)} (3)," for each in pages] + [f".BR {plain(self.family(member.file))} (3)"]

    def function_page(self, member):
        parameters = {name for _, name in member.parameters}
        returned = self.returns(member) if member.type != "void" else []
        body = self.name_line(member.name, member.doc)
        body += [".SH SYNOPSIS", ".nf", f"\\fB#include <{member.file}>\\fR", ".PP", *self.prototype(member), ".fi", ".SH DESCRIPTION"]
        # The first sentence stands by itself in the XML.
        told = [" ".join(each for each in sentences(text) if not (each in returned and each.startswith("Return")))
                for label, kind, text in member.doc.parts if label != "Raises"]
        told = [each for each in [" ".join(told[:2]).strip(), *told[2:]] if each]
        for each in told:
            body += paragraph(each, parameters)
        if not told:
            body += paragraph(f"The function belongs to a family, which `{self.family(member.file)}`(3) describes: its records, its "
                              "invariants, and what edits do to positions and iterators.")
        if returned:
            body += [".SH RETURN VALUE", *paragraph(" ".join(returned), parameters)[1:]]
        raised = member.doc.labelled("Raises")
        errors = f"Raises {raised[0].lower() + raised[1:]}" if raised else self.head(member.file, "Errors")
        body += [".SH ERRORS", set_text(errors or "The function raises nothing of its own.", parameters)]
        owned = self.head(member.file, "Ownership")
        if owned:
            body += [".SH OWNERSHIP", set_text(owned, parameters)]
        self.write(member.name, body + self.see_also(member))

    def fields(self, record):
        out = [f'.SS "{plain("struct " + record.name)}"', *described(record.doc, labels=False)]
        for each in record.members:
            out += [".TP", f"\\fB{plain(each.type + ' ' if not each.type.endswith('*') else each.type)}{plain(each.name)}\\fR",
                    set_text(each.doc.text() or "\\&")]
        return out

    def header_page(self, header):
        functions = [each for each in header.members if each.kind == "function"]
        name = self.family(header.file)
        body = self.name_line(name, header.doc)
        body += [".SH SYNOPSIS", ".nf", f"\\fB#include <{header.file}>\\fR", ".PP"]
        for each in functions:
            body += self.prototype(each)
        body += [".fi", ".SH DESCRIPTION", *described(header.doc)]
        records = [each for each in self.compounds if each.kind == "struct" and each.file == header.file]
        types = [each for each in header.members if each.kind == "typedef"]
        if records or types:
            body += [".SH TYPES"]
        for each in records:
            body += self.fields(each)
        for each in types:
            body += [".TP", f"\\fB{plain((each.type + ' ' + each.name + each.arguments))}\\fR", set_text(each.doc.text())]
        constants = [value for each in header.members for value in each.values] + [
            each for each in header.members if each.kind in ("define", "variable")]
        if constants:
            body += [".SH CONSTANTS AND VARIABLES"]
        for each in constants:
            body += [".TP", f"\\fB{plain(each.name + (' ' + each.initializer if each.kind != 'variable' else ''))}\\fR",
                     set_text(each.doc.text())]
        if functions:
            body += [".SH SEE ALSO", *[f".BR {plain(each.name)} (3)," for each in functions[:-1]], f".BR {plain(functions[-1].name)} (3)"]
        self.write(name, body)
        for each in [*records, *types]:
            with open(os.path.join(self.directory, f"{each.name}.3"), "w", encoding="utf-8") as file:
                file.write(f".so man3/{name}.3\n")

    def make(self):
        os.makedirs(self.directory, exist_ok=True)
        for header in self.files.values():
            if header.name.endswith(".h") and any(each.kind == "function" for each in header.members):
                self.header_page(header)
        for member in self.functions.values():
            self.function_page(member)
        print(f"{len(os.listdir(self.directory))} pages of the manual")


if __name__ == "__main__":
    Manual(*sys.argv[1:]).make()

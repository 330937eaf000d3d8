# SPDX-License-Identifier: MIT
"""What Doxygen's XML says of the public interface, as plain objects."""
import glob
import os
import re
import xml.etree.ElementTree as ElementTree


def words(element):
    return re.sub(r"\s+", " ", "".join(element.itertext())).strip() if element is not None else ""


class Paragraphs:
    """A description: a list of (label, kind, text). The label is that of the paragraph that opened with it; the kind is prose,
    item or verbatim."""

    def __init__(self, *elements):
        self.parts = []
        for element in elements:
            if element is not None:
                for child in element:
                    self.add(child, "")

    def add(self, element, label):
        if element.tag == "para":
            prose = [element.text or ""]
            for child in element:
                if child.tag in ("verbatim", "htmlonly", "simplesect", "orderedlist", "itemizedlist", "programlisting", "parblock"):
                    self.put(label, "prose", prose)
                    prose = []
                    self.add(child, label)
                elif child.tag == "computeroutput":
                    prose.append("`" + "".join(child.itertext()) + "`")
                else:
                    prose.append("".join(child.itertext()))
                prose.append(child.tail or "")
            self.put(label, "prose", prose)
        elif element.tag == "verbatim":
            self.parts.append((label, "verbatim", element.text or ""))
        elif element.tag == "simplesect":
            title = words(element.find("title")) or element.get("kind")
            for child in element.findall("para"):
                self.add(child, title)
        elif element.tag in ("orderedlist", "itemizedlist"):
            for number, item in enumerate(element, 1):
                mark = f"{number}." if element.tag == "orderedlist" else "-"
                self.parts.append((label, "item", f"{mark} " + marked(item)))
        elif element.tag == "programlisting":
            lines = ("".join(" " if part.tag == "sp" else "" for part in line.iter()) for line in element)
            self.parts.append((label, "verbatim", "\n".join(lines)))
        elif element.tag.startswith("sect"):
            for child in element:
                self.add(child, label)

    def put(self, label, kind, pieces):
        text = re.sub(r"\s+", " ", "".join(pieces)).strip()
        if text:
            self.parts.append((label, kind, text))

    def labelled(self, label):
        """The text of the paragraphs under a label."""
        return " ".join(text for at, kind, text in self.parts if at.split(",")[0].rstrip("s") == label.rstrip("s") and kind != "verbatim")

    def text(self):
        return " ".join(text for _, _, text in self.parts)

    def __bool__(self):
        return bool(self.parts)


def marked(element):
    """The text of an element, with code between backticks."""
    text = element.text or ""
    for child in element:
        inner = marked(child)
        text += ("`" + inner + "`" if child.tag == "computeroutput" else inner) + (child.tail or "")
    return re.sub(r"\s+", " ", text).strip() if element.tag in ("listitem", "para") else text


class Member:
    def __init__(self, element, compound, section):
        self.compound, self.section = compound, section
        self.kind = element.get("kind")
        self.name = words(element.find("name"))
        self.id = element.get("id")
        self.type = words(element.find("type"))
        self.arguments = words(element.find("argsstring"))
        self.protection = element.get("prot")
        self.parameters = [(words(each.find("type")), words(each.find("declname"))) for each in element.findall("param")]
        self.doc = Paragraphs(element.find("briefdescription"), element.find("detaileddescription"))
        self.values = [Member(each, compound, section) for each in element.findall("enumvalue")]
        location = element.find("location")
        self.file = location.get("file") if location is not None else compound.file
        self.initializer = words(element.find("initializer"))
        self.template = element.find("templateparamlist") is not None

    def anchor(self):
        page, _, place = self.id.rpartition("_1")
        return f"{page}.html#{place}"


class Compound:
    def __init__(self, element):
        self.id, self.kind = element.get("id"), element.get("kind")
        self.name = words(element.find("compoundname"))
        self.title = words(element.find("title"))
        self.protection = element.get("prot")
        location = element.find("location")
        self.file = location.get("file") if location is not None else ""
        self.doc = Paragraphs(element.find("briefdescription"), element.find("detaileddescription"))
        self.members = [Member(each, self, words(section.find("header"))) for section in element.findall("sectiondef")
                        for each in section.findall("memberdef")]
        self.records = [words(each) for each in element.findall("innerclass")]
        self.headings = [(each.get("id"), words(each.find("title"))) for each in element.iter() if re.match(r"sect\d", each.tag)]


def read(directory):
    """Every compound, by its name."""
    found = []
    for path in sorted(glob.glob(os.path.join(directory, "*.xml"))):
        if os.path.basename(path) != "index.xml":
            found += [Compound(each) for each in ElementTree.parse(path).getroot().findall("compounddef")]
    return found

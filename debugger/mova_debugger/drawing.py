# SPDX-License-Identifier: MIT
"""Drawings, as Graphviz takes them."""

import itertools
import subprocess

from mova_debugger.memory import Unreadable

MOST_DRAWN = 200
FONT = 'fontname="sans-serif" fontsize=11'


def quoted(text):
    return '"' + str(text).replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n") + '"'


def escaped(text):
    for character, entity in (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;")):
        text = str(text).replace(character, entity)
    return text.replace("\n", "<br/>")


class Drawing:
    """Boxes with names, and links between them. A link may lead to what is drawn later, or never: that is marked."""

    def __init__(self, title):
        self.title = title
        self.lines = []
        self.links = []
        self.names = set()
        self.notes = 0

    def bounded(self, things):
        """As many of them as a drawing holds."""
        things = iter(things)
        yield from itertools.islice(things, MOST_DRAWN)
        if next(things, None) is not None:
            self.note(f"only the first {MOST_DRAWN} are drawn")

    def has_room(self, drawn):
        if drawn == MOST_DRAWN:
            self.note(f"only the first {MOST_DRAWN} are drawn")
        return drawn < MOST_DRAWN

    def read(self, memory, name, address):
        """A record, or None, and then a note."""
        try:
            return memory.record(name, address)
        except Unreadable as fault:
            self.note(str(fault))
            return None

    def box(self, name, text, colour="white"):
        self.names.add(name)
        self.lines.append(f"{quoted(name)} [label={quoted(text)} fillcolor={quoted(colour)}]")

    def note(self, text):
        self.notes += 1
        self.lines.append(f'"note{self.notes}" [label={quoted(text)} shape=note color=red fontcolor=red]')

    def record(self, title, fields):
        name = f"head{len(self.names)}"
        rows = "".join(f"<tr><td>{escaped(field)}</td><td>{escaped(value)}</td></tr>" for field, value in fields)
        self.html(name, f'<tr><td colspan="2" bgcolor="lightyellow">{escaped(title)}</td></tr>{rows}')
        return name

    def html(self, name, rows):
        self.names.add(name)
        self.lines.append(f'{quoted(name)} [shape=plain label=<<table border="0" cellborder="1" cellspacing="0" '
                          f'cellpadding="4">{rows}</table>>]')

    def row(self, name, cells):
        """Cells side by side, each with a heading, a text and a colour."""
        if not cells:
            return
        above = "".join(f'<td port="h{number}">{escaped(heading)}</td>' for number, (heading, _, _) in enumerate(cells))
        below = "".join(f'<td port="c{number}" bgcolor="{colour or "white"}">{escaped(text)}</td>'
                        for number, (_, text, colour) in enumerate(cells))
        self.html(name, f"<tr>{above}</tr><tr>{below}</tr>")

    def arena(self, name, cells, whole):
        """Cells as wide as their sizes are of the whole, as far as their texts let them."""
        if not cells:
            return
        row = "".join(f'<td port="c{port}" bgcolor="{colour}" width="{max(30, 800 * size // max(whole, 1))}">'
                      f"{escaped(heading)}<br/>{escaped(text)}</td>" for heading, text, colour, port, size in cells)
        self.html(name, f"<tr>{row}</tr>")

    def edge(self, start, end, text, **attributes):
        self.links.append((start, end, text, attributes))

    def link(self, start, address, text, **attributes):
        """A link of the program's to a node, where it is not null."""
        if address:
            self.edge(start, f"n{address:x}", text, **attributes)

    def dot(self):
        lines = [f"digraph mova {{ label={quoted(self.title)} labelloc=t {FONT} node [shape=box style=filled fillcolor=white "
                 f"{FONT}] edge [{FONT}]"]
        lines += self.lines
        for start, end, text, attributes in self.links:
            if end.split(":")[0] not in self.names:
                self.names.add(end)
                lines.append(f'{quoted(end)} [label={quoted(end.replace("n", "0x", 1))} shape=plain fontcolor=red]')
            words = "".join(f" {name}={quoted(value)}" for name, value in attributes.items())
            ends = " -> ".join(":".join(quoted(part) for part in each.split(":")) for each in (start, end))
            lines.append(f"{ends} [label={quoted(text)}{words}]")
        return "\n".join(lines + ["}"]) + "\n"


class NotDrawn(Exception):
    pass


def write_drawing(drawing, path):
    """As SVG, or as Graphviz's own text where the file's name ends in .dot."""
    text = drawing.dot()
    try:
        if not path.endswith(".dot"):
            text = subprocess.run(["dot", "-Tsvg"], input=text, capture_output=True, check=True, encoding="utf-8").stdout
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    except FileNotFoundError as fault:
        raise NotDrawn("Graphviz's program dot is not there" if fault.filename == "dot" else f"{path}: {fault.strerror}")
    except subprocess.CalledProcessError as fault:
        raise NotDrawn(f"dot failed: {fault.stderr.strip()}")
    except OSError as fault:
        raise NotDrawn(f"{path}: {fault.strerror}")

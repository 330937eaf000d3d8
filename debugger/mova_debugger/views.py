# SPDX-License-Identifier: MIT
"""What a view of a record gives, and what its children are."""

from collections import namedtuple

from mova_debugger.memory import Unreadable

# ---- children: a debugger shows each in its own way ----

Pointer = namedtuple("Pointer", "address")  # a caller's item
Element = namedtuple("Element", "address size")  # bytes that lie in a container
Word = namedtuple("Word", "value")  # a mova_word
Number = namedtuple("Number", "value")  # a field
Pair = namedtuple("Pair", "key value")  # an entry of a map: two of the above
Record = namedtuple("Record", "name address")  # a record of the library, which has a view itself
Text = namedtuple("Text", "text")

# Walks that only count end here.
MOST_COUNTED = 10000


class Broken(Exception):
    """An invariant is broken: by the number that the header gives it."""

    def __init__(self, number, text):
        super().__init__(text)
        self.number = number
        self.part = ""

    def of(self, part):
        """The same, of a container that belongs to the one that is looked at: the number is that one's."""
        self.part = part
        return self

    def said(self):
        return f"{'of its ' + self.part + ', ' if self.part else ''}invariant {self.number} is broken: {self}"


def counted(number, one, more=None):
    return f"{number} {one if number == 1 else more or one + 's'}"


def damaged(text):
    return Text(f"<damaged: {text}>")


class View:
    """A record of the program, with its fields as attributes of `record`."""

    title = ""  # of the family
    invariants = 0  # that the header numbers
    skipped = {}  # of them those that are not looked at, and why
    in_part = ""  # what else is not looked at
    is_map = False  # whether the children are pairs
    elements = ""  # their type, where the family gives it
    is_sequence = True  # whether their names are only their numbers

    def __init__(self, memory, record):
        self.memory = memory
        self.record = record

    def summary(self):
        return self.title

    def children(self):
        """Yields names with children. Where the walk is stopped by damage, the last is a text that says so."""
        return iter(())

    def check(self):
        """Raises Broken for the first invariant that is broken, in the order in which the library looks at them."""

    def draw(self, drawing):
        """Adds the record, with all that belongs to it, to a drawing."""
        name = drawing.record(self.summary(), [(child, self.text_of(item)) for child, item in self.children()])
        return name

    def text_of(self, item):
        """A child as a text, for drawings."""
        try:
            if isinstance(item, Pointer):
                return self.memory.named(item.address)
            if isinstance(item, Element):
                return self.memory.element_text(item.address, item.size)
            if isinstance(item, Pair):
                return f"{self.text_of(item.key)}: {self.text_of(item.value)}"
            if isinstance(item, Record):
                return f"{item.address:#x}"
            return item.text if isinstance(item, Text) else str(item.value)
        except Unreadable:
            return "unreadable"


class Chain:
    """A walk along links, that ends whatever they say.

    After it, `nodes` is the number of nodes that were met, and `fault` says what stopped the walk before its end."""

    def __init__(self, memory, node, first, ring=False):
        self.memory, self.node, self.first, self.ring = memory, node, first, ring
        self.nodes, self.fault = 0, ""

    def __iter__(self):
        met = set()
        at = self.first
        while at:
            if at in met:
                self.fault = f"the walk comes to {at:#x} a second time"
                return
            met.add(at)
            try:
                node = self.memory.record(self.node, at)
            except Unreadable:
                self.fault = f"there is nothing to be read at {at:#x}, where a link leads"
                return
            self.nodes += 1
            yield node
            at = node.next
            if self.ring and at == self.first:
                return


class Fields(View):
    """A record that is shown by its fields, under a summary that says what they mean together."""

    is_sequence = False
    shown = ()  # the names of pointers
    numbers = ()  # and of numbers

    def children(self):
        for name in self.shown:
            yield name, Pointer(getattr(self.record, name))
        for name in self.numbers:
            yield name, Number(getattr(self.record, name))

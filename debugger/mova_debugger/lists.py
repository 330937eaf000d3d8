# SPDX-License-Identifier: MIT
"""mova/lists: pointer lists, element lists, and what is made of them, simple lists; their nodes and iterators."""

from mova_debugger.memory import Unreadable
from mova_debugger.views import Broken, Chain, Element, Fields, Pointer, View, counted, damaged


class LinkedList(View):
    """The three lists have the same fields and the same four invariants."""

    invariants = 4
    node = ""
    items = ("item", "items")

    @property
    def ring(self):
        return getattr(self.record, "closed", 0) != 0

    def summary(self):
        shape = self.title.replace("list", "ring") if self.ring else self.title
        if self.record.count == 0:
            return f"{shape}, empty"
        return f"{shape}, {counted(self.record.count, *self.items)}{self.size_text()}"

    def size_text(self):
        return ""

    def chain(self):
        return Chain(self.memory, self.node, self.record.first, self.ring)

    def children(self):
        chain = self.chain()
        for number, node in enumerate(chain):
            yield f"[{number}]", self.item_of(node)
        if chain.fault:
            yield "damage", damaged(chain.fault)
        elif chain.nodes != self.record.count:
            yield "damage", damaged(f"`count` is {self.record.count}, the nodes are {chain.nodes}")

    # ---- invariants: mova/lists/internal/invariants.h, step by step ----

    def check(self):
        count, first, last = self.record.count, self.record.first, self.record.last
        if (count == 0) != (first == 0) or (count == 0) != (last == 0):
            raise Broken(2, f"`count` is {count}, `first` is {first:#x}, `last` is {last:#x}")
        if count == 0:
            return
        first_node, last_node = self.end("first"), self.end("last")
        self.check_end("`prev` of `first`", first_node.prev, "last" if self.ring else None)
        self.check_end("`next` of `last`", last_node.next, "first" if self.ring else None)
        self.check_links(first_node)

    def end(self, field):
        address = getattr(self.record, field)
        try:
            return self.memory.record(self.node, address)
        except Unreadable:
            raise Broken(4, f"`{field}` leads to {address:#x}, where there is nothing to be read") from None

    def check_end(self, what, link, field):
        if link != (getattr(self.record, field) if field else 0):
            raise Broken(3, f"the {what} is {link:#x}, not " + (f"`{field}`" if field else "null"))

    def check_links(self, node):
        nodes, count = 0, self.record.count
        reached = None
        while node and nodes < count:
            following = self.following(node) if node.next else None
            reached = node
            nodes += 1
            node = following
        if nodes != count:
            raise Broken(1, f"`count` is {count}, the nodes are {nodes}")
        if reached.address != self.record.last:
            raise Broken(1, f"node {nodes} of {count} lies at {reached.address:#x}, `last` is {self.record.last:#x}")

    def following(self, node):
        try:
            following = self.memory.record(self.node, node.next)
        except Unreadable:
            raise Broken(4, f"the `next` of the node at {node.address:#x} is {node.next:#x}, where there is nothing to be "
                            "read") from None
        if following.prev != node.address:
            raise Broken(4, f"the `next` of the node at {node.address:#x} is {node.next:#x}, whose `prev` is "
                            f"{following.prev:#x}")
        return following

    # ---- drawing ----

    def draw(self, drawing):
        head = drawing.record(self.summary(), [(field, f"{getattr(self.record, field):#x}") for field in ("first", "last")])
        chain = self.chain()
        for number, node in enumerate(drawing.bounded(chain)):
            drawing.box(f"n{node.address:x}", f"[{number}] {self.text_of(self.item_of(node))}")
            drawing.link(f"n{node.address:x}", node.next, "next")
            drawing.link(f"n{node.address:x}", node.prev, "prev")
        drawing.link(head, self.record.first, "first")
        drawing.link(head, self.record.last, "last")
        if chain.fault:
            drawing.note(chain.fault)


class PointerList(LinkedList):
    title = "pointer list"
    node = "GL_node"

    def item_of(self, node):
        return Pointer(node.item)


class ElementList(LinkedList):
    title = "element list"
    node = "EL_node"
    items = ("element",)

    def size_text(self):
        return f" of {counted(self.record.element_size, 'byte')}"

    def item_of(self, node):
        return Element(node.address + 2 * self.memory.word_size, self.record.element_size)


class DoubleList(ElementList):
    title = "double list"
    items = ("number",)
    elements = "double"

    def size_text(self):
        return ""


class ElementStack(ElementList):
    """The last element is the top."""

    title = "element stack"


class SimpleList(LinkedList):
    title = "simple list"
    node = "mova_sl_links"

    def item_of(self, node):
        return Pointer(node.address)


# ---- nodes and iterators ----


class PointerNode(Fields):
    title = "node of a pointer list"
    shown = ("item", "prev", "next")


class LinkedNode(Fields):
    title = "links of an item"
    shown = ("prev", "next")


class ElementNode(LinkedNode):
    title = "node of an element list"


class ListIterator(Fields):
    """Its states have the names that the headers give them."""

    title = "iterator"
    upcoming = "next"

    @property
    def shown(self):
        return "current", self.upcoming, "end", "test"

    def summary(self):
        state = ("exhausted" if not getattr(self.record, self.upcoming) else
                 "delivering" if self.record.current else "fresh")
        return f"{self.title}, {state}, {'forward' if self.record.forward else 'backward'}"


class PointerListIterator(ListIterator):
    title = "iterator of a pointer list"


class ElementListIterator(ListIterator):
    title = "iterator of an element list"


class SimpleListIterator(ListIterator):
    title = "iterator of a simple list"
    upcoming = "upcoming"

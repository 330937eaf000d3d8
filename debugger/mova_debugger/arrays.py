# SPDX-License-Identifier: MIT
"""mova/arrays: block arrays, dynamic arrays, and what is made of them: sorted numbers and id tables."""

from mova_debugger.memory import Unreadable
from mova_debugger.views import Broken, Element, Fields, Pointer, View, counted, damaged


class Array(View):
    """Elements side by side: `data`, and fields for what is in use and what there is room for."""

    in_use, room = "count", "capacity"

    @property
    def used(self):
        return getattr(self.record, self.in_use)

    @property
    def space(self):
        return getattr(self.record, self.room)

    def summary(self):
        return f"{self.shape()}, {counted(self.used, 'element')} of {counted(self.record.element_size, 'byte')}, " \
               f"room for {self.space}"

    def shape(self):
        return self.title

    def element(self, index):
        return Element(self.record.data + index * self.record.element_size, self.record.element_size)

    def children(self):
        if self.used > 0 and not self.record.data:
            yield "damage", damaged("there is no storage")
            return
        for index in range(self.used):
            if index == self.space:
                yield "damage", damaged(f"`{self.in_use}` is {self.used}, and there is room for {self.space}")
                return
            element = self.element(index)
            if element.size and not self.memory.is_readable(*element):
                yield "damage", damaged(f"there is nothing to be read at {element.address:#x}")
                return
            yield f"[{index}]", element

    def check_storage(self, number):
        """The first and the last byte of a block must be there."""
        size = self.space * self.record.element_size
        for address in (self.record.data, self.record.data + size - 1) if size > 0 else ():
            if not self.memory.is_readable(address):
                raise Broken(number, f"`data` is {self.record.data:#x} with room for {self.space}, and there is nothing to be "
                                     f"read at {address:#x}")

    def draw(self, drawing):
        name = drawing.record(self.summary(), [(self.in_use, self.used), (self.room, self.space)])
        cells = [(child.strip("[]"), self.text_of(item), "") for child, item in drawing.bounded(self.children())]
        spare = max(self.space - self.used, 0)
        if spare:
            cells.append((f"{self.used} …", f"{spare} spare", "grey90"))
        drawing.row("data", cells)
        drawing.edge(name, "data", "data")
        if self.is_ring and self.used > 0:
            drawing.edge(f"data:c{min(self.used, len(cells)) - 1}:s", "data:c0:s", "ring")

    is_ring = False


class BlockArray(Array):
    title = "block array"
    invariants = 3
    in_part = "of 2, not how large the block is"

    @property
    def is_ring(self):
        return self.record.closed != 0

    def shape(self):
        return "block array, a ring" if self.is_ring else self.title

    def check(self):
        record = self.record
        if record.count < 0 or record.count > record.capacity:
            raise Broken(1, f"`count` is {record.count}, `capacity` is {record.capacity}")
        if record.capacity > 0 and not record.data:
            raise Broken(2, f"`data` is null, `capacity` is {record.capacity}")
        self.check_storage(2)
        if record.closed not in (0, 1):
            raise Broken(3, f"`closed` is {record.closed}")


class DynamicArray(Array):
    title = "dynamic array"
    invariants = 4
    in_part = "of 4, not how large the block is"
    in_use, room = "nitems", "nalloc"

    def check(self):
        record = self.record
        if (record.data == 0) != (record.nalloc == 0):
            raise Broken(1, f"`data` is {record.data:#x}, `nalloc` is {record.nalloc}")
        if record.increment == 0 or record.nalloc % record.increment != 0:
            raise Broken(2, f"`nalloc` is {record.nalloc}, `increment` is {record.increment}")
        if record.nitems > record.nalloc:
            raise Broken(3, f"`nitems` is {record.nitems}, `nalloc` is {record.nalloc}")
        self.check_storage(4)


class KeyedTable(DynamicArray):
    """The records of one of the typed layer, of which as many are in use as there are links."""

    title = "keyed table"


class SortedNumbers(DynamicArray):
    title = "sorted numbers"
    invariants = 1
    in_part = ""

    def summary(self):
        return f"{self.title}, {self.used}"

    def check(self):
        try:
            super().check()
        except Broken as broken:
            raise broken.of("array") from None
        before = None
        for index, number in enumerate(self.memory.numbers(self.record.data, self.used, 4, True)):
            if before is not None and before >= number:
                raise Broken(1, f"number {index - 1} is {before}, number {index} is {number}")
            before = number


class IdTable(DynamicArray):
    title = "id table"
    invariants = 2
    in_part = ""
    is_sequence = False

    def summary(self):
        reuse = ""
        if self.record.data and self.used > 0 and self.memory.is_readable(self.record.data, self.memory.word_size):
            reuse = ", reuse allowed" if self.memory.integer(self.record.data, self.memory.word_size) & 1 else ""
        return f"{self.title}, ids up to {max(self.used - 1, 0)}{reuse}"

    def children(self):
        """Free ids are passed over; a child's name is its id."""
        try:
            for number, pointer in enumerate(self.memory.words(self.record.data, self.used)):
                if number > 0 and pointer:
                    yield f"[{number}]", Pointer(pointer)
        except Unreadable as fault:
            yield "damage", damaged(str(fault))

    def check(self):
        if self.record.element_size != self.memory.word_size:
            raise Broken(1, f"`element_size` is {self.record.element_size}")
        try:
            super().check()
        except Broken as broken:
            raise Broken(1, f"of the array's, {broken.number}: {broken}") from None
        if self.record.nitems < 1:
            raise Broken(2, f"`nitems` is {self.record.nitems}")
        flags = self.memory.integer(self.record.data, self.memory.word_size)
        if flags > 1:
            raise Broken(2, f"the word of the flags is {flags:#x}")


# ---- iterators ----


class ArrayIterator(Fields):
    title = "iterator of a dynamic array"
    shown = ("array", "test")
    numbers = ("current", "last")

    def summary(self):
        forward, current, last = self.record.forward, self.record.current, self.record.last
        over = current > last if forward else current < last
        return f"{self.title}, {'exhausted' if over else 'looks at ' + str(current) + ' next'}, " \
               f"{'forward' if forward else 'backward'}"


class IdIterator(Fields):
    title = "iterator of an id table"
    shown = ("storage",)
    numbers = ("count", "next")

    def summary(self):
        over = self.record.next >= self.record.count
        return f"{self.title}, {'exhausted' if over else 'looks at id ' + str(self.record.next) + ' next'}"

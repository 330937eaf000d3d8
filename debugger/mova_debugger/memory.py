# SPDX-License-Identifier: MIT
"""What is asked of a debugger, and the layout of every record."""

import functools
from types import SimpleNamespace


class Unreadable(Exception):
    """Of memory that is not there."""

    def __init__(self, address):
        super().__init__(f"the memory at {address:#x} cannot be read")
        self.address = address


# A record's fields, in their order. `word` is a mova_word or a size, `pointer` the same without a sign. The records lie as the
# compiler lays them: each field at a multiple of its alignment, and the whole too.
RECORDS = {
    "GL_node": "pointer prev next item",
    "GL_list": "pointer first last; int32 count",
    "GL_iterator": "pointer current next end; int32 forward; pointer test",
    "EL_node": "pointer prev next",
    "EL_list": "pointer first last; uint16 element_size; int32 count closed",
    "EL_iterator": "pointer current next end; int32 forward; uint32 element_size; pointer test",
    "SL_list": "pointer first last; int32 count closed",
    "SL_iterator": "pointer current upcoming end; int32 forward unused; pointer test",
    "mova_sl_links": "pointer prev next",
    "GB_block": "pointer data; uint32 element_size; int32 count capacity; int16 increment closed",
    "DA_array": "uint32 element_size; int32 increment nalloc nitems; pointer data",
    "DA_iterator": "pointer array; int32 forward current last; pointer test",
    "io_lut_iterator": "pointer storage; int32 count next",
    "GT_tree_item": "pointer item left right prev next; int32 balance",
    "GT_tree": "pointer root first last compare; int32 dupl_allowed; pointer iterators",
    "GT_tree_iter": "pointer cursor current tree condition; int32 mode",
    "HSH_table": "int32 minimum_size capacity count low_water_mark high_water_mark mask shift maximum_shift; pointer keys values",
    "HSH_iterator": "pointer table; int32 index",
    "mova_lookup": "word front_key front_value; pointer table",
    "cc_entry": "pointer prev next item; uint32 handle; pointer size_fn swap_in_fn write_back_fn release_fn; uint8 status",
    "cc_cache": "pointer first last pool",
    "clut_colour": "int16 red green blue",
    "clut_colours": "int32 size; pointer first",
}

# Records that no public header shows. Each is named as the debugging information names it.
INTERNAL_RECORDS = {
    "mova::clut::table_state": "int32 size dirty_index; pointer states colours callback; word client_word",
    "mova::tree_module_record": "pointer name; int32 live_trees live_nodes live_iterators",
    "mova::clut_module_record": "pointer name; int32 first_free_index full_warning initialised static_phase",
    "mova::block_pool::place": "pointer address; uint32 handle",
    "mova::block_pool::block": "pointer size gap; uint32 prev next link_prev link_next",
    "mova::gap_branches": "uint32 parent lower upper",
}

# The head of a pool, up to the index of its gaps. Of the arena and the table stand here the two words of an owner; with
# `record` a record inside begins that has a number of 64 bits.
POOL = ("pointer arena1 arena2 table1 table2 places blocks branches blocks_mask mask; record; pointer budget live_bytes "
        "live_blocks; uint64 moves moved_bytes; uint32 last_handle rover")

SIZES = {"int16": 2, "uint16": 2, "int32": 4, "uint32": 4, "uint8": 1, "uint64": 8}


def aligned(offset, alignment):
    return (offset + alignment - 1) // alignment * alignment


class Layout:
    """Where the fields of a record lie on one machine."""

    def __init__(self, declaration, word_size, wide_alignment):
        self.fields, offset, largest = [], 0, 1
        for part in declaration.split(";"):
            kind, *names = part.split()
            if kind == "record":
                offset = aligned(offset, wide_alignment)
            size = SIZES.get(kind, word_size)
            alignment = wide_alignment if size == 8 and word_size == 4 else size
            for name in names:
                offset = aligned(offset, alignment)
                self.fields.append((name, offset, size, kind[0] in "iw"))
                offset += size
            largest = max(largest, alignment)
        self.size = aligned(offset, largest)


@functools.lru_cache(maxsize=None)
def layout_of(name, word_size, wide_alignment):
    declaration = POOL if name == "mb_pool" else RECORDS.get(name) or INTERNAL_RECORDS[name]
    return Layout(declaration, word_size, wide_alignment)


class Memory:
    """A program's memory. A debugger supplies the first four and the machine's properties."""

    word_size = 8
    byte_order = "little"
    wide_alignment = 8  # of a number of 64 bits

    def read(self, address, size):
        """The bytes there. Raises Unreadable."""
        raise NotImplementedError

    def symbol_at(self, address):
        """The name of what lies there, as in `numbers+4`, or an empty text."""
        return ""

    def address_of(self, name):
        """Where a variable of the library lies, or None."""
        return None

    def compare(self, function, a, b):
        """What the program's comparison returns, or None where no program runs."""
        return None

    # ---- what follows from it ----

    def layout(self, name):
        return layout_of(name, self.word_size, self.wide_alignment)

    def number(self, data, signed=False):
        return int.from_bytes(data, self.byte_order, signed=signed)

    def integer(self, address, size, signed=False):
        return self.number(self.read(address, size), signed)

    def record(self, name, address):
        """The fields of a record, by their names, and its `address`."""
        layout = self.layout(name)
        data = self.read(address, layout.size)
        found = SimpleNamespace(address=address)
        for field, offset, size, signed in layout.fields:
            setattr(found, field, self.number(data[offset:offset + size], signed))
        return found

    def is_readable(self, address, size=1):
        try:
            self.read(address, size)
            return True
        except Unreadable:
            return False

    def numbers(self, address, count, size, signed=False):
        """Each of `count` numbers that lie side by side: as they are asked for, a page at a time."""
        a_page = 4096 // size
        for first in range(0, count, a_page):
            here = min(a_page, count - first)
            data = self.read(address + first * size, here * size)
            for i in range(here):
                yield self.number(data[i * size:i * size + size], signed)

    def words(self, address, count):
        return self.numbers(address, count, self.word_size)

    def as_word(self, number):
        """A pointer's bits as a mova_word, which has a sign."""
        limit = 1 << (8 * self.word_size - 1)
        return number - 2 * limit if number >= limit else number

    def named(self, address):
        """An address, and what lies there: 0x4010 <numbers+4>."""
        symbol = self.symbol_at(address) if address else ""
        return f"{address:#x}" + (f" <{symbol}>" if symbol else "")

    def element_text(self, address, size):
        """An element of which no more is known than its bytes: a number where it has a number's size."""
        data = self.read(address, size)
        if size in (1, 2, 4, 8):
            return str(self.number(data, True))
        return data[:16].hex(" ") + (" …" if size > 16 else "")

# SPDX-License-Identifier: MIT
"""mova/hash: hash tables and pointer lookups."""

from mova_debugger.memory import Unreadable
from mova_debugger.views import Broken, Fields, Pair, View, Word, counted, damaged


def is_table_size(size):
    return size >= 8 and size & (size - 1) == 0


class HashTable(View):
    title = "hash table"
    invariants = 5
    is_map = True
    is_sequence = False

    def summary(self):
        entries = counted(self.record.count, "entry", "entries")
        return f"{self.title}, {entries if self.record.count else 'empty'}, {self.record.capacity} slots"

    def keys(self):
        return self.memory.words(self.record.keys, self.record.capacity)

    def value_in(self, slot):
        size = self.memory.word_size
        return self.memory.integer(self.record.values + slot * size, size, True)

    def children(self):
        """The entries in the order of their slots, without the empty ones."""
        found = 0
        try:
            for slot, key in enumerate(self.keys()):
                if key:
                    yield f"[{found}]", Pair(Word(self.memory.as_word(key)), Word(self.value_in(slot)))
                    found += 1
        except Unreadable as fault:
            yield "damage", damaged(str(fault))
            return
        if found != self.record.count:
            yield "damage", damaged(f"`count` is {self.record.count}, the occupied slots are {found}")

    def home_of(self, key):
        return ((key & 0xFFFFFFFF) >> (self.record.shift & 31)) & self.record.mask

    # ---- invariants: mova/hash/internal/invariants.h ----

    def check(self):
        self.check_record()
        try:
            keys = list(self.keys())
            self.value_in(0)
            self.value_in(self.record.capacity - 1)
        except Unreadable as fault:
            raise Broken(4, str(fault)) from None
        occupied = sum(1 for key in keys if key)
        if occupied != self.record.count:
            raise Broken(4, f"`count` is {self.record.count}, the occupied slots are {occupied}")
        for slot, key in enumerate(keys):
            if key:
                self.check_way(keys, slot)

    def check_record(self):
        record, capacity = self.record, self.record.capacity
        if not is_table_size(record.minimum_size) or not is_table_size(capacity) or capacity < record.minimum_size:
            raise Broken(1, f"`minimum_size` is {record.minimum_size}, `capacity` is {capacity}")
        if record.mask != capacity - 1:
            raise Broken(2, f"`mask` is {record.mask}, `capacity` is {capacity}")
        most = 32 - (capacity.bit_length() - 1)
        if record.shift != min(record.maximum_shift, most):
            raise Broken(2, f"`shift` is {record.shift}, `maximum_shift` is {record.maximum_shift}, `capacity` is {capacity}")
        low, high = 0 if capacity == record.minimum_size else capacity // 4, capacity - capacity // 8
        if record.low_water_mark != low or record.high_water_mark != high:
            raise Broken(3, f"the marks are {record.low_water_mark} and {record.high_water_mark}, of {capacity} slots "
                            f"{low} and {high}")
        if not low <= record.count <= high:
            raise Broken(4, f"`count` is {record.count}, the marks are {low} and {high}")

    def check_way(self, keys, slot):
        at = home = self.home_of(keys[slot])
        while at != slot and keys[at] and keys[at] != keys[slot]:
            at = (at + 1) & self.record.mask
        if at != slot:
            raise Broken(5, f"the key {self.memory.as_word(keys[slot])} in slot {slot} has its home in slot {home}, and slot "
                            f"{at} before it " + ("holds that key too" if keys[at] else "is empty"))

    # ---- drawing: above the homes, below the slots with the keys, and from each home the ways that searches go ----

    def draw(self, drawing):
        drawing.record(self.summary(), [(field, getattr(self.record, field)) for field in ("shift", "mask")])
        self.draw_slots(drawing)

    def draw_slots(self, drawing):
        cells, homes = [], []
        keys = drawing.bounded(enumerate(self.keys())) if is_table_size(self.record.capacity) else ()
        try:
            for slot, key in keys:
                text = f"{self.memory.as_word(key)}\n{self.value_in(slot)}" if key else ""
                cells.append((str(slot), text, "" if key else "grey90"))
                homes.append(self.home_of(key) if key else None)
        except Unreadable as fault:
            drawing.note(str(fault))
        drawing.row("homes", [("home", str(slot), "") for slot in range(len(homes))])
        drawing.row("slots", cells)
        for slot, home in enumerate(homes):
            if home is not None and home < len(homes):
                looks = ((slot - home) & self.record.mask) + 1
                drawing.edge(f"homes:c{home}:s", f"slots:h{slot}:n", f"{looks} looks" if looks > 1 else "")


class PointerLookup(View):
    title = "pointer lookup"
    invariants = 2
    skipped = {2: "only the calls tell"}
    is_map = True
    is_sequence = False

    def table(self):
        return HashTable(self.memory, self.memory.record("HSH_table", self.record.table))

    def summary(self):
        front = "one entry" if self.record.front_key else "nothing"
        try:
            return f"{self.title}, {front} in front, {counted(self.table().record.count, 'entry', 'entries')} in its table"
        except Unreadable:
            return f"{self.title}, {front} in front, damaged"

    def children(self):
        if self.record.front_key:
            yield "[front]", Pair(Word(self.record.front_key), Word(self.record.front_value))
        try:
            yield from self.table().children()
        except Unreadable as fault:
            yield "damage", damaged(str(fault))

    def check(self):
        try:
            table = self.table()
        except Unreadable as fault:
            raise Broken(1, str(fault)) from None
        if table.record.minimum_size != 8 or table.record.maximum_shift != 0:
            raise Broken(1, f"the table's `minimum_size` is {table.record.minimum_size}, its `maximum_shift` "
                            f"{table.record.maximum_shift}")
        try:
            table.check()
        except Broken as broken:
            raise broken.of("table") from None

    def draw(self, drawing):
        drawing.record(self.summary(), [("front", f"{self.record.front_key}: {self.record.front_value}")])
        table = drawing.read(self.memory, "HSH_table", self.record.table)
        if table:
            HashTable(self.memory, table).draw_slots(drawing)


class HashIterator(Fields):
    title = "iterator of a hash table"
    shown = ("table",)
    numbers = ("index",)

    def summary(self):
        try:
            over = self.record.index >= self.memory.record("HSH_table", self.record.table).capacity
        except Unreadable:
            return f"{self.title}, of no table"
        return f"{self.title}, {'exhausted' if over else 'looks at slot ' + str(self.record.index) + ' next'}"

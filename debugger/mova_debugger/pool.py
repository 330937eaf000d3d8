# SPDX-License-Identifier: MIT
"""mova/host: pools of movable blocks. Their invariants stand in mova/host/internal/block_pool.h."""

from types import SimpleNamespace

from mova_debugger.memory import Unreadable, aligned
from mova_debugger.views import Broken, Text, View, counted, damaged

UNIT, SINGLES, IN_A_DOUBLING = 16, 1024, 32
ORIGIN, NONE = 0, 0xFFFFFFFF


def class_of(size):
    """The class of a gap of that size: mova/host/internal/gap_classes.h."""
    units = size // UNIT
    if units < SINGLES:
        return units
    doubling = units.bit_length() - SINGLES.bit_length()
    return SINGLES + doubling * IN_A_DOUBLING + (units >> (doubling + 5)) % IN_A_DOUBLING


def open_bits(index):
    return 0 if index < SINGLES else (index - SINGLES) // IN_A_DOUBLING + 5


class BlockPool(View):
    """The head, which no public header shows, and the three tables that it points to."""

    title = "pool of movable blocks"
    invariants = 5
    is_sequence = False

    def is_one(self):
        """Whether this is a pool of the default host: a program may have pools of its own."""
        capacity = self.record.mask + 1
        try:
            return (capacity >= 64 and capacity & self.record.mask == 0 and self.record.blocks_mask == self.record.mask and
                    self.place(ORIGIN).handle == NONE and
                    self.record.blocks == self.record.places + capacity * self.memory.layout("mova::block_pool::place").size)
        except Unreadable:
            return False

    def in_table(self, table, name, handle):
        size = self.memory.layout(name).size
        return self.memory.record(name, getattr(self.record, table) + (handle & self.record.mask) * size)

    def place(self, handle):
        return self.in_table("places", "mova::block_pool::place", handle)

    def block(self, handle):
        return self.in_table("blocks", "mova::block_pool::block", handle)

    def branches(self, handle):
        return self.in_table("branches", "mova::gap_branches", handle)

    def is_live(self, handle):
        return handle not in (ORIGIN, NONE) and self.place(handle).handle == handle

    def is_known(self, handle):
        return handle == ORIGIN or (handle != NONE and self.place(handle).handle == handle)

    def walk(self):
        """Each block from the origin on in order of address: handle, place and record. `fault` says what stopped it."""
        self.fault = ""
        handle, met = ORIGIN, set()
        while True:
            met.add(handle)
            try:
                block = self.block(handle)
                yield handle, self.place(handle), block
                handle = block.next
                if handle == ORIGIN:
                    return
                if handle in met or not self.is_known(handle):
                    self.fault = f"the block after one leads to {handle}, " + (
                        "where the walk has been" if handle in met else "which is no live handle")
                    return
            except Unreadable as fault:
                self.fault = str(fault)
                return

    def summary(self):
        if not self.is_one():
            return f"{self.title}: not one of the default host's, or damaged"
        gaps = [block.gap for _, _, block in self.walk() if block.gap]
        largest = f", the largest of {counted(max(gaps), 'byte')}" if gaps else ""
        return (f"{self.title}, {self.record.live_bytes} of {counted(self.record.budget, 'byte')} in "
                f"{counted(self.record.live_blocks, 'block')}, {counted(len(gaps), 'gap')}{largest}")

    def children(self):
        """Blocks and gaps in order of address."""
        if not self.is_one():
            return
        for handle, place, block in self.walk():
            if handle != ORIGIN:
                yield f"[{handle}]", Text(f"{counted(block.size, 'byte')} at {place.address:#x}")
            if block.gap:
                yield "gap", Text(f"{counted(block.gap, 'byte')} at {place.address + block.size:#x}")
        if self.fault:
            yield "damage", damaged(self.fault)

    # ---- invariants: mova/host/internal/invariants.h ----

    def check(self):
        if not self.is_one():
            raise Broken(1, "this is no pool of the default host, or its table is lost")
        try:
            live = self.check_handles()
            sums = self.check_arena(live)
            self.check_sums(live, sums)
            self.check_gaps(sums.gaps)
        except Unreadable as fault:
            raise Broken(1, str(fault)) from None
        if not self.is_known(self.record.rover):
            raise Broken(5, f"`rover` is {self.record.rover}, which is no live handle")

    def check_handles(self):
        live = 0
        for place in range(1, self.record.mask + 1):
            handle = self.place(place).handle
            if handle and handle & self.record.mask != place:
                raise Broken(1, f"handle {handle} stands in place {place}")
            live += handle != 0
        return live

    def check_arena(self, live):
        end = self.place(ORIGIN).address
        arena_end = end + self.record.budget
        sums = SimpleNamespace(bytes=0, gaps=0, whole=True)
        handle, walked = ORIGIN, 0
        while True:
            block, place = self.block(handle), self.place(handle)
            if not self.is_known(block.next):
                raise Broken(2, f"the `next` of block {handle} is {block.next}, which is no live handle")
            if place.address != end:
                raise Broken(2, f"block {handle} lies at {place.address:#x}, what is before it ends at {end:#x}")
            if self.block(block.next).prev != handle:
                raise Broken(2, f"the `next` of block {handle} is {block.next}, whose `prev` is {self.block(block.next).prev}")
            end += block.size + block.gap
            sums.bytes += block.size
            sums.gaps += block.gap != 0
            sums.whole = sums.whole and block.size % UNIT == 0 and block.gap % UNIT == 0
            handle = block.next
            if handle == ORIGIN:
                break
            walked += 1
        if walked != live:
            raise Broken(2, f"the blocks along `next` are {walked}, the live handles {live}")
        if end != arena_end:
            raise Broken(2, f"the last gap ends at {end:#x}, the arena at {arena_end:#x}")
        return sums

    def check_sums(self, live, sums):
        if not sums.whole:
            raise Broken(3, f"a size or a gap is no multiple of {UNIT}")
        if sums.bytes != self.record.live_bytes or live != self.record.live_blocks:
            raise Broken(3, f"`live_bytes` is {self.record.live_bytes} and `live_blocks` {self.record.live_blocks}, of "
                            f"{sums.bytes} bytes in {counted(live, 'block')}")

    def roots(self):
        """Of each class of gaps the handle of its tree's root, and whether the index says that it has one."""
        word = self.memory.word_size
        classes = class_of((1 << 8 * word) - 1) + 1
        head = self.memory.layout("mb_pool")
        _, rover, size, _ = head.fields[-1]
        at = self.record.address + aligned(rover + size, self.memory.wide_alignment)
        words = list(self.memory.numbers(at, classes // 64 + 2, 8))
        roots = self.memory.numbers(at + 8 * len(words), classes, 4)
        return [(root, words[index // 64] >> index % 64 & 1) for index, root in enumerate(roots)]

    def check_gaps(self, gaps):
        self.indexed, self.gaps = 0, gaps
        for index, (root, has) in enumerate(self.roots()):
            if (root != NONE) != bool(has):
                raise Broken(4, f"class {index} is {'' if has else 'not '}in the index's set, and its tree has "
                                f"{'no root' if root == NONE else 'the root ' + str(root)}")
            if root == NONE:
                continue
            size = self.gap_of(root)
            if class_of(size) != index:
                raise Broken(4, f"the gap of {size} bytes after block {root} is in class {index}")
            self.check_list(root)
            if open_bits(index):
                self.check_tree(root, NONE, open_bits(index), size // UNIT >> open_bits(index))
        if self.indexed != gaps:
            raise Broken(4, f"the index has {self.indexed} of {gaps} gaps")

    def gap_of(self, handle):
        if not self.is_known(handle):
            raise Broken(4, f"the index has handle {handle}, which is not live")
        return self.block(handle).gap

    def check_list(self, first):
        size, before, handle = self.gap_of(first), NONE, first
        while handle != NONE:
            if self.gap_of(handle) != size or size == 0:
                raise Broken(4, f"the gap of {self.gap_of(handle)} bytes after block {handle} is in the list of {size}")
            block = self.block(handle)
            self.indexed += 1
            if block.link_prev != before or self.indexed > self.gaps:
                raise Broken(4, f"in the list of gaps of {size} bytes, block {handle} comes after {before}, and its link says "
                                f"{block.link_prev}")
            before, handle = handle, block.link_next

    def check_tree(self, handle, parent, open_, prefix):
        branches, size = self.branches(handle), self.gap_of(handle)
        if branches.parent != parent or size // UNIT >> open_ != prefix:
            raise Broken(4, f"the gap of {size} bytes after block {handle} is not where its bits lead, or has another parent")
        for side, child in enumerate((branches.lower, branches.upper)):
            if child == NONE:
                continue
            if open_ == 0:
                raise Broken(4, f"block {handle} has a child where no bit is open")
            self.check_list(child)
            self.check_tree(child, handle, open_ - 1, prefix * 2 + side)

    # ---- drawing: the arena, with widths as its sizes ----

    def draw(self, drawing):
        if not self.is_one():
            drawing.note(self.summary())
            return
        name = drawing.record(self.summary(), [])
        cells = []
        for handle, _, block in drawing.bounded(self.walk()):
            if handle != ORIGIN:
                cells.append((f"{handle}", f"{block.size}", "lightblue", handle, block.size))
            if block.gap:
                cells.append(("gap", f"{block.gap}", "grey90", f"g{handle}", block.gap))
        drawing.arena("arena", cells, self.record.budget)
        drawing.edge(name, "arena", "")
        if self.fault:
            drawing.note(self.fault)

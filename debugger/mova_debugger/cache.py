# SPDX-License-Identifier: MIT
"""mova/cache: swap caches and their entries."""

import itertools

from mova_debugger.memory import Unreadable
from mova_debugger.pool import BlockPool
from mova_debugger.views import MOST_COUNTED, Broken, Chain, Fields, Record, View, counted, damaged

IN_MEMORY, DIRTY = 0x80, 0x40


def state_of(status):
    return {0: "out", IN_MEMORY: "clean", IN_MEMORY | DIRTY: "dirty"}.get(status, f"damaged: status {status:#x}")


class SwapCache(View):
    title = "swap cache"
    invariants = 4

    def chain(self):
        return Chain(self.memory, "cc_entry", self.record.first)

    def pool(self):
        """The pool as a view, or None where it is no pool of the default host."""
        try:
            pool = BlockPool(self.memory, self.memory.record("mb_pool", self.record.pool))
            return pool if pool.is_one() else None
        except Unreadable:
            return None

    def summary(self):
        states = [state_of(entry.status) for entry in itertools.islice(self.chain(), MOST_COUNTED)]
        if not states:
            return f"{self.title}, empty"
        kinds = ", ".join(f"{states.count(state)} {state}" for state in ("dirty", "clean", "out") if state in states)
        more = "more than " if len(states) == MOST_COUNTED else ""
        return f"{self.title}, {more}{counted(len(states), 'entry', 'entries')}: {kinds or 'damaged'}"

    def children(self):
        chain = self.chain()
        for number, entry in enumerate(chain):
            yield f"[{number}]", Record("cc_entry", entry.address)
        if chain.fault:
            yield "damage", damaged(chain.fault)

    # ---- invariants: mova/cache/internal/invariants.h ----

    def check(self):
        if (self.record.first == 0) != (self.record.last == 0):
            raise Broken(2, f"`first` is {self.record.first:#x}, `last` is {self.record.last:#x}")
        pool = self.pool()
        if not pool:
            self.in_part = "of 4, not which handles are live: the pool is none of the default host's"
        reached, at = 0, self.record.first
        while at:
            try:
                entry = self.memory.record("cc_entry", at)
            except Unreadable:
                raise Broken(1, f"a link leads to {at:#x}, where there is nothing to be read") from None
            if entry.prev != reached:
                raise Broken(1, f"the `prev` of the entry at {at:#x} is {entry.prev:#x}, the one before it lies at {reached:#x}")
            self.check_state(entry, pool)
            reached, at = at, entry.next
        if reached != self.record.last:
            raise Broken(1, f"`last` is {self.record.last:#x}, the walk ends at {reached:#x}")

    def check_state(self, entry, pool):
        in_memory = entry.status & IN_MEMORY != 0
        if entry.status & 0x3F or (entry.status & DIRTY and not in_memory):
            raise Broken(3, f"the `status` of the entry at {entry.address:#x} is {entry.status:#x}")
        if not in_memory and entry.handle:
            raise Broken(4, f"the entry at {entry.address:#x} is out, and its `handle` is {entry.handle}")
        if in_memory and not (pool.is_live(entry.handle) if pool else entry.handle):
            raise Broken(4, f"the entry at {entry.address:#x} is in memory, and its `handle`, {entry.handle}, names no live block")

    # ---- drawing: the entries by their states, and the pool with their bodies ----

    def draw(self, drawing):
        head = drawing.record(self.summary(), [])
        drawing.link(head, self.record.first, "first")
        drawing.link(head, self.record.last, "last")
        pool = self.pool()
        chain = self.chain()
        for entry in drawing.bounded(chain):
            name = f"n{entry.address:x}"
            drawing.box(name, f"{self.memory.named(entry.item)}\n{state_of(entry.status)}",
                        {"dirty": "orange", "clean": "lightblue"}.get(state_of(entry.status), "white"))
            drawing.link(name, entry.next, "next")
            drawing.link(name, entry.prev, "prev")
            if pool and entry.handle:
                drawing.edge(name, f"arena:c{entry.handle}", f"handle {entry.handle}", style="dashed")
        if pool:
            pool.draw(drawing)
        if chain.fault:
            drawing.note(chain.fault)


class CacheEntry(Fields):
    title = "cache entry"
    shown = ("item",)
    numbers = ("handle",)

    def summary(self):
        return f"{self.title}, {state_of(self.record.status)}"


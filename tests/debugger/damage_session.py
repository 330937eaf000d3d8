# SPDX-License-Identifier: MIT
# Runs inside gdb: views of the sample program's containers in a memory of which words here and there are others. Whatever they
# meet, they say in a text.
import itertools
import random
import traceback

import gdb
from mova_debugger import gdb_side
from mova_debugger.drawing import Drawing
from mova_debugger.families import describe
from mova_debugger.memory import Unreadable

CONTAINERS = ["*pointer_list", "*element_ring", "*wide_list", "*double_list", "*simple_ring", "*dynamic_array",
              "*sorted_array as sorted_number_array", "*id_table as id_lookup_table", "*balanced_tree", "*hash_table", "*lookup",
              "*movable_blocks", "*swap_cache", "clut_shown", "typed->tree", "typed->queue", "typed->cache", "typed->lookup",
              "typed->keyed", "*tree_walk", "*swap_cache->first"]
ROUNDS, SEED = 500, 7


class DamagedMemory(gdb_side.GdbMemory):
    """Each half of a word is the same at each look."""

    def damage(self, chance):
        DamagedMemory.chance, DamagedMemory.changed = chance, {}

    def read(self, address, size):
        data = bytearray(super().read(address, size))
        for at in range(0, size - 3, 4):
            if address + at not in self.changed:
                self.changed[address + at] = self.other(address + at) if random.random() < self.chance else None
            if self.changed[address + at] is not None:
                data[at:at + 4] = self.changed[address + at]
        return bytes(data)

    def other(self, address):
        number = random.choice([0, 1, 48, 0x7FFFFFFF, 0xFFFFFFFF, address, address + 8, random.getrandbits(32)])
        return (number & 0xFFFFFFFF).to_bytes(4, self.byte_order)


def look_at(expression):
    view, item, key = gdb_side.view_of_expression(expression)
    printer = gdb_side.Printer(view, item, key, 0)
    printer.to_string()
    list(itertools.islice(printer.children(), 300))
    drawing = Drawing(expression)
    view.draw(drawing)
    drawing.dot()
    return " is broken: " in describe(view)


def main():
    random.seed(SEED)
    DamagedMemory().damage(0)
    # The head too is to be damaged.
    gdb_side.GdbMemory, gdb_side.RECORDS = DamagedMemory, {}
    broken = 0
    for _ in range(ROUNDS):
        DamagedMemory().damage(random.choice([0.002, 0.02, 0.1]))
        try:
            broken += look_at(random.choice(CONTAINERS))
        except (Unreadable, gdb.error, gdb.GdbError):
            pass
    print(f"{ROUNDS} looks at damaged memory, {broken} invariants were broken")
    return 0 if broken > ROUNDS / 10 else 1


try:
    status = main()
except Exception:
    traceback.print_exc()
    status = 1
gdb.execute(f"quit {status}")

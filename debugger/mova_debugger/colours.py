# SPDX-License-Identifier: MIT
"""mova/clut: the colour table, of which a program has one. Its record is `clut_shown`; the states of its indices are the
library's own, and are found by the library's symbols."""

from mova_debugger.memory import Unreadable
from mova_debugger.views import Broken, Text, View, damaged

FREE, HARD, DYNAMIC = 0, 1, 2
STATES = ("free", "hard", "dynamic")
RECORDS_BEFORE_THE_TREES, RECORDS_AFTER_THEM = 6, 3


class ColourTable(View):
    title = "colour table"
    invariants = 4
    is_sequence = False

    def table(self):
        """The library's own record, or None where the library has no symbols."""
        address = self.memory.address_of("mova::clut::table")
        table = self.memory.record("mova::clut::table_state", address) if address else None
        return table if table and table.size == self.record.size else None

    def module(self):
        """The words of the family in the module records."""
        address = self.memory.address_of("mova::modules")
        if not address:
            return None
        word = self.memory.word_size
        trees = self.memory.layout("mova::tree_module_record").size
        return self.memory.record("mova::clut_module_record",
                                  address + (RECORDS_BEFORE_THE_TREES + RECORDS_AFTER_THEM) * word + trees)

    def states(self, table):
        """Of each index, and of the spare word after the last."""
        return list(self.memory.numbers(table.states, table.size + 1, 4, True))

    def summary(self):
        if self.record.size == 0:
            return f"{self.title}, not made yet"
        text = f"{self.title}, {self.record.size} indices"
        try:
            table = self.table()
            if table:
                states = self.states(table)[:-1]
                text += ": " + ", ".join(f"{states.count(state)} {name}" for state, name in enumerate(STATES))
        except Unreadable:
            text += ", damaged"
        return text

    def colour(self, index):
        return self.memory.record("clut_colour", self.record.first + index * self.memory.layout("clut_colour").size)

    def children(self):
        """The indices that are taken; all, where nothing tells which those are."""
        try:
            table = self.table()
            states = self.states(table) if table else None
            for index in range(self.record.size):
                if states and states[index] == FREE:
                    continue
                colour = self.colour(index)
                state = "" if not states else f", {STATES[states[index]]}" if states[index] in (1, 2) else ", damaged state"
                yield f"[{index}]", Text(f"{colour.red} {colour.green} {colour.blue}{state}")
        except Unreadable as fault:
            yield "damage", damaged(str(fault))

    # ---- invariants: mova/clut/internal/invariants.h ----

    def check(self):
        if self.record.size == 0:
            return
        table, module = self.table(), self.module()
        if not table or not module:
            self.skipped = dict.fromkeys(range(1, 5), "the library has no symbols, which say where its states are")
            return
        try:
            states = self.states(table)
        except Unreadable as fault:
            raise Broken(1, str(fault)) from None
        spare = states.pop()
        for index, state in enumerate(states):
            if state not in (FREE, HARD, DYNAMIC):
                raise Broken(1, f"the state of index {index} is {state}")
        if spare != FREE:
            raise Broken(2, f"the spare word is {spare}")
        self.check_phase(table, module, states)
        for index, state in enumerate(states[:max(module.first_free_index, 0)]):
            if state == FREE:
                raise Broken(4, f"index {index} is free, the first free index is {module.first_free_index}")

    def check_phase(self, table, module, states):
        if module.static_phase:
            if table.dirty_index != 0 or DYNAMIC in states:
                raise Broken(3, f"in the static phase the dirty index is {table.dirty_index}, and {states.count(DYNAMIC)} "
                                "indices are dynamic")
        elif not 0 <= table.dirty_index < len(states) or states[table.dirty_index] != DYNAMIC:
            raise Broken(3, f"after the static phase the dirty index, {table.dirty_index}, is not dynamic")

    def draw(self, drawing):
        drawing.record(self.summary(), [])
        cells = []
        for name, item in drawing.bounded(self.children()):
            red, green, blue, *state = item.text.replace(",", "").split() if name != "damage" else (0, 0, 0, item.text)
            shade = "".join(f"{int(part) & 255:02x}" for part in (red, green, blue))
            cells.append((name.strip("[]"), " ".join(state), f"#{shade}"))
        drawing.row("colours", cells)

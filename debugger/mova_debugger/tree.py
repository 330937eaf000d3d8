# SPDX-License-Identifier: MIT
"""mova/tree: balanced trees, their nodes and iterators."""

import itertools

from mova_debugger.lists import PointerList
from mova_debugger.memory import Unreadable
from mova_debugger.views import MOST_COUNTED, Broken, Chain, Fields, Pointer, View, counted, damaged


def balance_text(node):
    return f"balance {node.balance:+}" if node.balance else "balance 0"


class BalancedTree(View):
    title = "balanced tree"
    invariants = 5

    def chain(self):
        return Chain(self.memory, "GT_tree_item", self.record.first)

    def iterators(self):
        """The list of iterators, as a view."""
        return PointerList(self.memory, self.memory.record("GL_list", self.record.iterators))

    def summary(self):
        nodes = sum(1 for _ in itertools.islice(self.chain(), MOST_COUNTED))
        many = f"more than {MOST_COUNTED} items" if nodes == MOST_COUNTED else counted(nodes, "item")
        text = f"{self.title}, {many if nodes else 'empty'}"
        if self.record.dupl_allowed:
            text += ", duplicates allowed"
        try:
            live = self.iterators().record.count
            return text + (f", {counted(live, 'live iterator')}" if live else "")
        except Unreadable:
            return text + ", damaged iterators"

    def children(self):
        chain = self.chain()
        for number, node in enumerate(chain):
            yield f"[{number}]", Pointer(node.item)
        if chain.fault:
            yield "damage", damaged(chain.fault)

    # ---- invariants: mova/tree/internal/invariants.h ----

    def check(self):
        nodes = list(self.check_chain())
        self.check_balances(nodes)
        self.check_order()
        try:
            self.check_iterators()
        except Unreadable as fault:
            raise Broken(5, str(fault)) from None

    def in_order(self):
        """The nodes in the order of the tree, each once."""
        path, met, at = [], set(), self.record.root
        while path or at:
            while at:
                if at in met:
                    raise Broken(1, f"the tree comes to the node at {at:#x} a second time")
                met.add(at)
                try:
                    node = self.memory.record("GT_tree_item", at)
                except Unreadable:
                    raise Broken(1, f"the tree leads to {at:#x}, where there is nothing to be read") from None
                path.append(node)
                at = node.left
            node = path.pop()
            yield node
            at = node.right

    def check_chain(self):
        before = None
        for node in self.in_order():
            link, name = (before.next, f"the `next` of the node at {before.address:#x}") if before else \
                (self.record.first, "`first`")
            if link != node.address:
                raise Broken(1, f"{name} is {link:#x}, the tree goes on with the node at {node.address:#x}")
            if node.prev != (before.address if before else 0):
                raise Broken(2, f"the `prev` of the node at {node.address:#x} is {node.prev:#x}")
            before = node
            yield node
        last = before.address if before else 0
        if self.record.last != last or (not last and self.record.first):
            raise Broken(1, f"`first` is {self.record.first:#x}, `last` is {self.record.last:#x}, the tree ends with {last:#x}")
        if before and before.next:
            raise Broken(2, f"the `next` of `last` is {before.next:#x}")

    def check_balances(self, nodes):
        """Below a node come those in its order: heights are known from the leaves up."""
        by_address = {node.address: node for node in nodes}
        heights = {0: 0}
        order = [self.record.root] if self.record.root else []
        for address in order:
            node = by_address[address]
            order += [child for child in (node.left, node.right) if child]
        for address in reversed(order):
            node = by_address[address]
            left, right = heights[node.left], heights[node.right]
            if right - left != node.balance or not -1 <= node.balance <= 1:
                raise Broken(3, f"the `balance` of the node at {address:#x} is {node.balance}, the heights below are {left} "
                                f"and {right}")
            heights[address] = 1 + max(left, right)

    def check_order(self):
        before = None
        for node in self.chain():
            if before:
                order = self.memory.compare(self.record.compare, node.item, before.item)
                if order is None:
                    self.skipped = {4: "it asks the tree's comparison, which takes a running program"}
                    return
                if order < 0 or (order == 0 and not self.record.dupl_allowed):
                    raise Broken(4, f"the item of the node at {node.address:#x} compares "
                                    f"{'less than' if order else 'equal to'} the one before it")
            before = node

    def check_iterators(self):
        iterators = self.iterators()
        try:
            iterators.check()
        except Broken as broken:
            raise Broken(5, f"of the list of iterators, {broken.number}: {broken}") from None
        met = set()
        for node in iterators.chain():
            tree = self.memory.record("GT_tree_iter", node.item).tree
            if tree != self.record.address:
                raise Broken(5, f"the iterator at {node.item:#x} is of the tree at {tree:#x}")
            if node.item in met:
                raise Broken(5, f"the iterator at {node.item:#x} is there twice")
            met.add(node.item)

    # ---- drawing: the tree from above, the chain and the iterators beside it ----

    def draw(self, drawing):
        head = drawing.record(self.summary(), [])
        drawing.link(head, self.record.root, "root")
        met, here = set(), [self.record.root]
        while here:
            at = here.pop(0)
            if not at or at in met or not drawing.has_room(len(met)):
                continue
            met.add(at)
            node = drawing.read(self.memory, "GT_tree_item", at)
            if node:
                drawing.box(f"n{at:x}", f"{self.memory.named(node.item)}\n{balance_text(node)}")
                for side in ("left", "right"):
                    drawing.link(f"n{at:x}", getattr(node, side), side)
                drawing.link(f"n{at:x}", node.next, "next", style="dashed", color="grey", constraint="false")
                here += [node.left, node.right]
        self.draw_iterators(drawing, met)

    def draw_iterators(self, drawing, met):
        iterators = drawing.read(self.memory, "GL_list", self.record.iterators)
        for node in Chain(self.memory, "GL_node", iterators.first) if iterators else ():
            iterator = drawing.read(self.memory, "GT_tree_iter", node.item)
            if iterator:
                name = drawing.record(TreeIterator(self.memory, iterator).summary(), [])
                for field in ("current", "cursor"):
                    drawing.link(name, getattr(iterator, field), field, style="dotted", constraint="false")


class TreeNode(Fields):
    title = "node of a balanced tree"
    shown = ("item", "left", "right", "prev", "next")

    def summary(self):
        return f"{self.title}, {balance_text(self.record)}"


class TreeIterator(Fields):
    title = "iterator of a balanced tree"
    shown = ("current", "cursor", "tree", "condition")

    def summary(self):
        record = self.record
        if not (record.tree or record.cursor or record.current):
            state = "dead: its tree was released"
        elif not record.cursor:
            state = "exhausted"
        else:
            state = "delivering" if record.current else "fresh, or current removed"
        mode = {0: "every item", 1: "those accepted", 2: "up to the first rejected"}.get(record.mode, f"mode {record.mode}")
        return f"{self.title}, {state}, {mode}"

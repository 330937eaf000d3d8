# SPDX-License-Identifier: MIT
"""Which view belongs to which type of a program."""

from collections import namedtuple

from mova_debugger import arrays, cache, colours, hash, lists, pool, tree
from mova_debugger.views import Broken

# By the names of the C records.
VIEWS = {
    "GL_list": lists.PointerList,
    "GL_node": lists.PointerNode,
    "GL_iterator": lists.PointerListIterator,
    "EL_list": lists.ElementList,
    "EL_node": lists.ElementNode,
    "EL_iterator": lists.ElementListIterator,
    "SL_list": lists.SimpleList,
    "SL_iterator": lists.SimpleListIterator,
    "mova_sl_links": lists.LinkedNode,
    "GB_block": arrays.BlockArray,
    "DA_array": arrays.DynamicArray,
    "DA_iterator": arrays.ArrayIterator,
    "io_lut_iterator": arrays.IdIterator,
    "GT_tree": tree.BalancedTree,
    "GT_tree_item": tree.TreeNode,
    "GT_tree_iter": tree.TreeIterator,
    "HSH_table": hash.HashTable,
    "HSH_iterator": hash.HashIterator,
    "mova_lookup": hash.PointerLookup,
    "cc_cache": cache.SwapCache,
    "cc_entry": cache.CacheEntry,
    "mb_pool": pool.BlockPool,
    "clut_colours": colours.ColourTable,
}

# Families whose record is another family's: by the name of its type, and after `as`.
OTHER_NAMES = {
    "DBLL_list": ("EL_list", lists.DoubleList),
    "ES_stack": ("EL_list", lists.ElementStack),
    "double_list": ("EL_list", lists.DoubleList),
    "element_stack": ("EL_list", lists.ElementStack),
    "sorted_number_array": ("DA_array", arrays.SortedNumbers),
    "id_lookup_table": ("DA_array", arrays.IdTable),
}

# A class of the typed layer: the record that it owns, by which field where it is no head, the view where it is not the
# record's own, which of the template's arguments its items and its keys have, and a field with as many elements as are in use.
Typed = namedtuple("Typed", "record view item field key, count", defaults=(None, 0, None, None, None))

TYPED = {
    "pointer_list": Typed("GL_list"),
    "element_list": Typed("EL_list"),
    "element_ring": Typed("EL_list"),
    "double_list": Typed("EL_list", lists.DoubleList, None),
    "element_stack": Typed("EL_list", lists.ElementStack),
    "intrusive_list": Typed("SL_list"),
    "intrusive_ring": Typed("SL_list"),
    "block_array": Typed("GB_block", field="block_"),
    "dynamic_array": Typed("DA_array"),
    "sorted_numbers": Typed("DA_array", arrays.SortedNumbers, None),
    "id_table": Typed("DA_array", arrays.IdTable),
    "keyed_table": Typed("DA_array", arrays.KeyedTable, field="records_", count="links_"),
    "basic_tree": Typed("GT_tree"),
    "hash_table": Typed("HSH_table", item=1, key=0),
    "pointer_lookup": Typed("mova_lookup", item=1, key=0),
    "swap_cache": Typed("cc_cache"),
    "block_pool": Typed("mb_pool", item=None),
}


def describe(view):
    """What `mova check` says."""
    if not view.invariants:
        return f"{view.title}: there is no invariant to look at"
    try:
        view.check()
    except Broken as broken:
        return f"{view.title}: {broken.said()}"
    held = [number for number in range(1, view.invariants + 1) if number not in view.skipped]
    said = [f"{listed(held)} hold{'s' if len(held) == 1 else ''}"] if held else []
    for number, reason in list(view.skipped.items())[:1 if not held else None]:
        said.append(f"{number if held else 'no invariant'} is not looked at: {reason}")
    return f"{view.title}: {'; '.join(said)}" + (f" ({view.in_part})" if view.in_part else "")


def listed(numbers):
    """invariant 1, invariants 1 and 2, invariants 1 to 4, invariants 1, 2, 3 and 5"""
    if len(numbers) == 1:
        return f"invariant {numbers[0]}"
    if len(numbers) > 2 and numbers[-1] == len(numbers):
        return f"invariants 1 to {len(numbers)}"
    return "invariants " + ", ".join(str(number) for number in numbers[:-1]) + f" and {numbers[-1]}"

# SPDX-License-Identifier: MIT
"""What the typed layer's members mean that bear the names of the C++ standard, and so stand without a text in the headers:
said once, for all classes."""
import re

# In the order in which they are tried: the first that matches what is declared. {} is the class.
MEANINGS = [
    (r"using (value_type|reference|difference_type|iterator_concept|iterator_category) =",
     "As the standard's ranges and iterators name it."),
    (r"using (const_)?(iterator|position) =", "What a walk over the container goes by."),
    (r"\{class}\(const \{class} ?& ?\w*\)", "Another one that stands where this one does."),
    (r"\{class}\(\{class} ?&& ?\w*\)", "Takes over what the other one holds, which holds nothing then."),
    (r"operator=\(\{class} ?&& ?\w*\)", "Lets go of what it holds, and takes over what the other one holds, which holds nothing then."),
    (r"~\{class}\(\)", "Releases what it holds, with the items that it owns."),
    (r"\{class}\(std::initializer_list<", "Makes one of these, in this order."),
    (r"\{class}\((Range &&)", "Makes one of what the range delivers, in its order. After an exception there is none."),
    (r"\{class}\(std::nullptr_t\)", "Makes one of nothing: it is null."),
    (r"(iterator|circulator|steps|\w*_iterator)\(\)", "Makes one that stands nowhere."),
    (r"\{class}\(\)", "Makes an empty one. It owns its memory."),
    (r"\w+\((None|Ends|At|Position)(\.\.\.)?( \w+)?\) ?&", "Refused, with the compiler's words for what to write in its place."),
    (r"(iterator|position|steps|circulator|\w+_circulator|\w+_iterator|iterator_range|array_walk|tree_cursor)\(\w",
     "Made by what the container returns."),
    (r"capacity\(\)", "The number of elements that the storage has room for."),
    (r"get\(\)", "What it holds, for the C functions. It goes on holding it."),
    (r"release\(\)", "What it holds, which is the caller's from now on."),
    (r"reversed\(\)", "The same, last to first."),
    (r"positions(_if|_reversed)?\(", "A walk during which what was delivered may be removed."),
    (r"(\w+ )?(begin|cbegin)\(\)", "Where a walk starts."),
    (r"(end|cend)\(\)", "Where a walk ends: past the last."),
    (r"size\(\)", "The number of items. Of a null owner 0."),
    (r"empty\(\)", "Whether there is no item."),
    (r"front\(\)", "The first item. Requires one."),
    (r"back\(\)", "The last item. Requires one."),
    (r"data\(\)", "The first of the elements, which lie one behind the other; null where there is no storage. The container's."),
    (r"top\(\)", "The top element. Requires one."),
    (r"operator\*\(\)", "What it stands at."),
    (r"operator->\(\)", "A member of what it stands at."),
    (r"operator\[\]\(", "The element of this index, which is not checked."),
    (r"operator\+\+\(", "Goes on to the next."),
    (r"operator--\(", "Goes back to the one before."),
    (r"operator==\(", "Whether both are equal."),
    (r"operator<=>\(", "Compares item by item, as the standard's containers do."),
    (r"operator bool\(\)", "Whether it holds anything."),
    (r"contains\(", "Whether there is one with this key, or of this value."),
    (r"cut\(", "Takes out `n` elements, from element `i` on, which must all be there. Linear in the elements beyond."),
]


def meaning(declaration, class_name):
    for pattern, text in MEANINGS:
        if re.search(r"(?<!\w)" + pattern.replace(r"\{class}", re.escape(class_name)), declaration):
            return text
    return None

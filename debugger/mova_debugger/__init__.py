# SPDX-License-Identifier: MIT
"""Looks at the library's containers from outside: in a program that a debugger holds, or in what is left of one.

    memory.py                           what is asked of a debugger, and the layout of every record
    views.py                            what a view of a record gives: a summary, children, its invariants, a drawing
    lists, arrays, tree, hash, cache,   the views, a module for each room
    pool, colours
    families.py                         which view belongs to which type of the program
    drawing.py                          drawings, as Graphviz takes them
    gdb_side.py, lldb_side.py           one debugger each; no other module knows of either

A view reads memory and nothing else. What it meets may be damaged: links may lead anywhere, in circles too, and counts may be
anything. Each walk keeps the addresses that it has met, and says in one line what stopped it.
"""

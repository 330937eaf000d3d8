#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Keeps the figures of docs/proof.md those that the tools produce.

proof.py write|compare PAGE FILE...

A tool that has a figure prints a line of it, which is looked for in the files:

    figure faults.lists 1234 points at which a call on a list fails

Of the page, what stands between `<!-- figures: faults fuzz -->` and `<!-- end -->` is a table of all figures whose names begin
with those words. `write` makes the tables anew; `compare` fails where one would become another.
"""
import pathlib
import re
import sys

BLOCK = re.compile(r"(<!-- figures: ([a-z_ ]+) -->\n)(.*?)(<!-- end -->\n)", re.DOTALL)


def figures_in(files):
    figures = {}
    for file in files:
        text = pathlib.Path(file).read_text(errors="replace")
        for name, value, words in re.findall(r"^figure ([a-z_]+(?:\.[a-z0-9_]+)+) (\S+) ?(.*)$", text, re.MULTILINE):
            if figures.setdefault(name, (value, words)) != (value, words):
                sys.exit(f"proof.py: {name} is {figures[name][0]} and {value}")
    return figures


def table(rooms, figures):
    shown = sorted(name for name in figures if name.split(".")[0] in rooms)
    if not shown:
        sys.exit(f"proof.py: no tool printed a figure of {' or '.join(rooms)}")
    rows = []
    for name in shown:
        value, words = figures[name]
        if re.fullmatch(r"\d+", value):
            value = f"{int(value):,}"
        rows.append(f"| {value} | {words or '`' + name + '`'} |\n")
    return "".join(["| Figure | Of what |\n|---:|---|\n", *rows])


def written(page, figures):
    shown = {room for block in BLOCK.finditer(page) for room in block[2].split()}
    without = [name for name in sorted(figures) if name.split(".")[0] not in shown]
    if without:
        print(f"proof.py: the page has no place for {', '.join(without)}")
    return BLOCK.sub(lambda block: block[1] + table(block[2].split(), figures) + block[4], page)


def main():
    command, name, *files = sys.argv[1:]
    path = pathlib.Path(name)
    page = path.read_text()
    anew = written(page, figures_in(files))
    if command == "write":
        path.write_text(anew)
        return
    old, new = page.splitlines(), anew.splitlines()
    different = [f"- {line}" for line in old if line not in new] + [f"+ {line}" for line in new if line not in old]
    if anew != page:
        sys.exit("\n".join([f"{name} is not what the tools say:", *different, "./dev proof writes it anew"]))


main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails where a page of docs/ names a function, a type, a field or a member of the typed layer that no header has.

names.py ROOT

Looked at is what stands `in code` on the pages: words that begin with a family's prefix, everywhere; in the tables whose second
column is "Ours", of that column every call, `class::member` and `record->field`.
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
families = (root / "cmake/families.cmake").read_text()
prefixes = ["mova_sl_"]
for of_a_family in re.findall(r'^ +"[a-z_]+ +[a-z]+ +(\S+) ', families, re.MULTILINE):
    prefixes += of_a_family.split(",")
NAMED = re.compile(rf"\b(?:{'|'.join(prefixes)})[a-z]\w*")
OURS = re.compile(r"^\|[^|]*\| Ours \|[^\n]*\n\|[-|]*\|\n((?:\|.*\n)*)", re.MULTILINE)

headers = {path.relative_to(root): path.read_text() for path in (root / "mova").rglob("*.h")}
everything = "\n".join(headers.values())
known = set(re.findall(r"\w+", re.sub(r"/\*.*?\*/", "", everything, flags=re.DOTALL)))
declared = set(re.findall(r"^[A-Za-z][\w *]*[ *](\w+)\(", everything, re.MULTILINE))
fields = set()
for names in re.findall(r"^ +[\w *]+[ *](\w+(?:, \*?\w+)*);", everything, re.MULTILINE):
    fields.update(re.findall(r"\w+", names))
failed = False


def complain(page, text):
    global failed
    failed = True
    print(f"{page.name}: {text}")


def typed_text(name):
    """The header of a class of the typed layer, and those of mova/cxx/ that it takes in."""
    defined = re.compile(rf"\b(?:class {name} :|class {name} \{{|using {name} =)")
    texts, left = {}, [path for path, text in headers.items() if defined.search(text)]
    while left:
        path = left.pop()
        texts[path] = headers[path]
        included = map(pathlib.Path, re.findall(r"^#include <(mova/cxx/.*)>", headers[path], re.MULTILINE))
        left += [each for each in included if each not in texts]
    return "\n".join(texts.values())


def compare_call(page, code):
    for name, member in re.findall(r"\b(\w+)::(\w+)\(", code):
        if name != "std" and not re.search(rf"\b{member}\(", typed_text(name)):
            complain(page, f"{name}::{member} is in no header")
    for name in re.findall(r"(?<![:\w])(\w+)\(", code):
        if name not in declared:
            complain(page, f"{name} is in no header")
    for field in re.findall(r"->(\w+)", code):
        if field not in fields:
            complain(page, f"no record has a field {field}")


tables = 0
for page in sorted((root / "docs").glob("*.md")):
    text = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.DOTALL | re.MULTILINE)
    for code in re.findall(r"`([^`\n]+)`", text):
        for name in NAMED.findall(code):
            if name not in known:
                complain(page, f"{name} is in no header")
    for table in OURS.findall(text):
        tables += 1
        for row in table.splitlines():
            for code in re.findall(r"`([^`]+)`", row.split(" | ")[1]):
                compare_call(page, code)
if not tables:
    print("no page has a table of what is ours")
sys.exit(failed or not tables)

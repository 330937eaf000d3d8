# SPDX-License-Identifier: MIT
"""Finishes what Doxygen made: writes names.js, in which the pages' search looks, every name and every heading with where it
stands; and takes out what leads nowhere.

python3 finish.py DIRECTORY   the directory that holds xml/ and html/
"""
import json
import pathlib
import re
import shutil
import sys

import reference


def first_sentence(doc):
    return re.split(r"(?<=\.) ", doc.text(), 1)[0][:110]


def entries(compounds):
    for each in compounds:
        if each.protection == "private" or each.kind in ("dir", "namespace") and not each.members:
            continue
        if each.kind in ("struct", "class", "file") and each.doc:
            yield each.name, each.kind.replace("file", "header"), f"{each.id}.html", first_sentence(each.doc)
        elif each.kind == "page":
            file = each.name.replace("guide_", "")
            yield each.title, "guide", "index.html" if each.id == "indexpage" else f"{each.id}.html", file
            for place, title in each.headings:
                page, _, anchor = place.rpartition("_1")
                yield title, "guide", f"{page}.html#{anchor}" if page != "indexpage" else f"index.html#{anchor}", each.title
        elif each.kind == "example":
            yield each.name, "example", f"{each.id}.html", first_sentence(each.doc)
        for member in each.members:
            if member.protection != "public" or not (member.doc or member.values):
                continue
            owner = "" if each.kind == "file" else each.name + "::"
            if not member.name.startswith("@"):
                kind = {"variable": "field" if owner else "variable", "define": "constant"}.get(member.kind, member.kind)
                yield owner + member.name, kind, member.anchor(), first_sentence(member.doc)
            for value in member.values:
                yield value.name, "constant", value.anchor(), first_sentence(value.doc)


def tidy(page):
    """Of a class whose nested classes are its own Doxygen links to a list that it does not make; the scripts are for what the
    pages have not."""
    text = page.read_text(encoding="utf-8")
    if 'id="nested-classes"' not in text and 'name="nested-classes"' not in text:
        text = re.sub(r'<a href="#nested-classes">[^<]*</a>( &#124;)?\s*', "", text)
    page.write_text(text, encoding="utf-8")


def main(directory):
    directory = pathlib.Path(directory)
    found = sorted({each for each in entries(reference.read(directory / "xml"))}, key=lambda each: (len(each[0]), each))
    (directory / "html/names.js").write_text(
        "const names = " + json.dumps(found, ensure_ascii=False, separators=(",", ":")) + ";\n", encoding="utf-8")
    shutil.copy(pathlib.Path(__file__).parent / "find.js", directory / "html")
    for page in (directory / "html").glob("*.html"):
        tidy(page)
    for script in ("jquery.js", "dynsections.js"):
        (directory / "html" / script).unlink()
    print(f"{len(found)} names to search")


if __name__ == "__main__":
    main(*sys.argv[1:])

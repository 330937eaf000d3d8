# SPDX-License-Identifier: MIT
"""Has gdb draw the containers of the sample program, and counts what is in the drawings.

    drawings_test.py DIRECTORY COMMAND...    the debugger's command; it runs the commands of MOVA_COMMANDS
"""
import os
import re
import subprocess
import sys
import xml.etree.ElementTree

# What is drawn; how many boxes and links that gives; and texts that are there.
DRAWINGS = {
    "pointer_list": (5, 8, ["pointer list, 4 items", "[0] 0x# <numbers>", "next", "prev", "first", "last"]),
    "empty_list": (1, 0, ["pointer list, empty"]),
    "element_ring": (5, 10, ["element ring, 4 elements of 4 bytes", "[0] 20", "[3] 10"]),
    "long_list": (204, 401, ["only the first 200 are drawn"]),
    "block_ring": (2, 2, ["9 spare", "ring", "data"]),
    "id_table as id_lookup_table": (2, 1, ["id table, ids up to 3, reuse allowed", "0x# <numbers+8>"]),
    "balanced_tree": (9, 15, ["balance -1", "balance 0", "balance +1", "left", "right", "root", "current", "cursor"]),
    "hash_table": (3, 7, ["home", "22", "100", "4 looks"]),
    "lookup": (3, 2, ["front", "48: 3"]),
    "swap_cache": (6, 9, ["clean", "dirty", "out", "handle 2", "gap", "816"]),
    "movable_blocks": (2, 1, ["gap", "64", "112", "32", "816"]),
    "clut_shown": (2, 0, ["42", "dynamic"]),
    "typed->tree": (4, 5, ["balanced tree, 3 items"]),
    "tree_walk": (1, 0, ["iterator of a balanced tree, delivering, every item"]),
    "broken.pointers_wild_4": (5, 3, ["there is nothing to be read at 0x#, where a link leads"]),
    "broken.tree_endless_1": (6, 10, ["left"]),
    "broken.tree_wild_1": (6, 5, ["the memory at 0x# cannot be read"]),
    "broken.hash_wild_4": (2, 0, ["the memory at 0x# cannot be read"]),
    "broken.cache_wild_1": (7, 5, ["there is nothing to be read at 0x#, where a link leads"]),
}
SVG = "{http://www.w3.org/2000/svg}"


def looked_at(path):
    """The numbers of boxes and links, and the texts."""
    root = xml.etree.ElementTree.parse(path).getroot()
    classes = [group.get("class") for group in root.iter(f"{SVG}g")]
    texts = {re.sub("0x[0-9a-f]+", "0x#", text.text) for text in root.iter(f"{SVG}text")}
    return classes.count("node"), classes.count("edge"), texts


def main():
    directory, *command = sys.argv[1:]
    os.makedirs(directory, exist_ok=True)
    paths = {drawn: os.path.join(directory, f"{number}.svg") for number, drawn in enumerate(DRAWINGS)}
    for path in paths.values():
        if os.path.exists(path):
            os.remove(path)
    commands = os.path.join(directory, "commands.txt")
    with open(commands, "w", encoding="utf-8") as file:
        file.writelines(f"mova draw {drawn} {path}\n" for drawn, path in paths.items())
        file.write(f"mova draw pointer_list {directory}/nowhere/x.svg\nmova draw pointer_list\n")
    ran = subprocess.run(command, env={**os.environ, "MOVA_COMMANDS": commands}, capture_output=True, encoding="utf-8",
                         timeout=100)
    faults = [f"gdb does not say {text}" for text in ("nowhere/x.svg: No such file", "mova draw takes an expression and a file")
              if text not in ran.stdout]
    for drawn, (boxes, links, texts) in DRAWINGS.items():
        if not os.path.exists(paths[drawn]):
            faults.append(f"{drawn}: not drawn")
            continue
        found_boxes, found_links, found_texts = looked_at(paths[drawn])
        if (found_boxes, found_links) != (boxes, links):
            faults.append(f"{drawn}: {found_boxes} boxes and {found_links} links, not {boxes} and {links}")
        faults += [f"{drawn}: \"{text}\" is not among {sorted(found_texts)}" for text in texts if text not in found_texts]
    if faults:
        print("\n".join(faults))
        print(ran.stdout[-2000:], ran.stderr[-1000:])
        sys.exit(1)
    print(f"{len(DRAWINGS)} drawings")


if __name__ == "__main__":
    main()

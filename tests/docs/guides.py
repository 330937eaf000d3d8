#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares a guide with the programs that it shows, and with what they print.

guides.py PAGE PROGRAMS [MOVA_CHECK]

The fenced blocks of the page:

    ```c, ```cpp     after a link to a file of examples/: it stands in that file as it is. One with an include is the whole file
    ```text          after `NAME.txt`: what programs find in that file
    ```console       each line "$ command" is followed by what a terminal then shows, whichever of the section's programs
                     ./NAME is. PROGRAMS is the directory that they were built in

Where MOVA_CHECK is given, each such program runs under it too: it misuses nothing and leaves nothing. All files of the folders
that the page links to are shown.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
LINK = re.compile(r"\]\(\.\./(examples/[a-z]+/\w+\.(?:cpp|c))\)")
DATA = re.compile(r"`(\w+\.txt)`")
HEADING = re.compile(r"^#+ .*$", re.MULTILINE)
NOTHING_WRONG = re.compile(rb"^mova: \d+ calls checked, 0 misuses; 0 containers and 0 blocks left\r?$", re.MULTILINE)

page = pathlib.Path(sys.argv[1])
built = pathlib.Path(sys.argv[2]).resolve()
mova_check = pathlib.Path(sys.argv[3]).resolve() if len(sys.argv) > 3 else None
root = page.resolve().parent.parent
failed = False


def complain(text):
    global failed
    failed = True
    print(f"{page.name}: {text}")


def text_of(file):
    return re.sub(r"^/\* SPDX.*\n", "", (root / file).read_text())


def compare_text(block, file):
    shown, whole = block, text_of(file)
    if shown not in whole or ("#include" in shown and shown != whole):
        complain(f"{file} is not what is shown of it:\n{block}")


def terminal_of(command, directory):
    """What a terminal shows of the command: it has the lines of both outputs in their order."""
    main, side = os.openpty()
    with open(side, "wb") as terminal:
        running = subprocess.Popen(["bash", "-c", command], cwd=directory, stdout=terminal, stderr=terminal)
    shown = b""
    while True:
        try:
            more = os.read(main, 65536)
        except OSError:  # the last writer is gone
            break
        if not more:
            break
        shown += more
    os.close(main)
    running.wait(60)
    return shown


def run(session, file):
    with tempfile.TemporaryDirectory() as directory:
        for name, content in data.items():
            (pathlib.Path(directory) / name).write_text(content)
        printed = ""
        for command in re.findall(r"^\$ (.*)$", session, re.MULTILINE):
            name = re.search(r"\./(\w+)", command)[1]
            link = pathlib.Path(directory) / name
            link.unlink(missing_ok=True)
            link.symlink_to(built / re.sub(r"\W", "_", file.removeprefix("examples/")))
            printed += f"$ {command}\n" + terminal_of(command, directory).decode().replace("\r\n", "\n")
            if mova_check:
                said = terminal_of(command.replace("./", f"{mova_check} ./", 1), directory)
                if not NOTHING_WRONG.search(said):
                    complain(f"{file} is not in order:\n{said.decode()}")
        if printed != session:
            complain(f"{file} does not print what is shown, but:\n{printed}")


text = page.read_text()
data = {}
section, linked, named = [], None, None
shown, ran = set(), set()
fences = list(FENCE.finditer(text))
events = [*fences, *LINK.finditer(text), *DATA.finditer(text), *HEADING.finditer(text)]
for event in sorted(events, key=lambda match: match.start()):
    if event.re is not FENCE and any(fence.start() < event.start() < fence.end() for fence in fences):
        continue
    if event.re is HEADING:
        section, linked = [], None
    elif event.re is LINK:
        linked = event[1]
        section.append(linked)
    elif event.re is DATA:
        named = event[1]
    elif event[1] == "text":
        data[named] = event[2]
    elif event[1] == "console":
        for file in section:
            run(event[2], file)
        ran.update(section)
        if not section:
            complain(f"no program prints this:\n{event[2]}")
    elif linked:
        compare_text(event[2], linked)
        shown.add(linked)
    else:
        complain(f"of no file:\n{event[2]}")

folders = {(root / file).parent for file in shown}
for file in sorted(str(path.relative_to(root)) for folder in folders for path in folder.iterdir()):
    if file not in shown or file not in ran:
        complain(f"{file} is not shown, with what it prints")
if not shown:
    complain("shows no program")
sys.exit(failed)

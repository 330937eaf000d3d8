#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The fuzzers' corpora, as tests/fuzz/corpus/ holds them: a file for each family, an input a line, in hexadecimal.

corpus.py unpack FILE DIRECTORY              makes a file of each input
corpus.py pack DIRECTORY FILE SECONDS RUNS   makes a line of each file, and counts for how long the family was fuzzed
corpus.py figures FILE...                    prints what docs/proof.md says of them
"""
import pathlib
import re
import sys

HEAD = """# SPDX-License-Identifier: MIT
# What ./dev fuzz kept of {runs} runs in {seconds} seconds: the inputs that reach everything that any of them reached.
"""


def counted(file):
    """For how many seconds and runs the file's family was fuzzed, and its inputs."""
    if not file.exists():
        return 0, 0, []
    lines = file.read_text().splitlines()
    runs, seconds = map(int, re.search(r"of (\d+) runs in (\d+) seconds", lines[1]).groups())
    return seconds, runs, [bytes.fromhex(line) for line in lines[2:]]


def unpack(file, directory):
    directory.mkdir(parents=True, exist_ok=True)
    for number, each in enumerate(counted(file)[2]):
        (directory / f"{number:04}").write_bytes(each)


def pack(directory, file, seconds, runs):
    seconds_before, runs_before, _ = counted(file)
    inputs = sorted({each.read_bytes() for each in directory.iterdir()}, key=lambda each: (len(each), each))
    head = HEAD.format(runs=runs_before + runs, seconds=seconds_before + seconds)
    file.parent.mkdir(exist_ok=True)
    file.write_text(head + "".join(each.hex() + "\n" for each in inputs if each))


def figures(files):
    for file in files:
        seconds, runs, inputs = counted(file)
        print(f"figure fuzz.{file.stem} {runs} runs of {file.stem} in {seconds} seconds, {len(inputs)} inputs kept")


def main():
    command, *words = sys.argv[1:]
    paths = [pathlib.Path(word) for word in words]
    if command == "unpack":
        unpack(*paths)
    elif command == "pack":
        pack(*paths[:2], int(words[2]), int(words[3]))
    else:
        figures(paths)


main()

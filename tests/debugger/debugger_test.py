# SPDX-License-Identifier: MIT
"""Has a debugger look at the sample program, and compares all that it says with a file of what it is to say.

    debugger_test.py EXPECTED SCRIPT STATE COMMAND...    the debugger's command; it runs the commands of MOVA_COMMANDS

EXPECTED holds commands, after `> `, and below each what it prints. Lines `@live` and `@core` begin a part for programs that
live and for cores, `@all` ends it. Addresses and the numbers of values are told apart by nobody: 0x#, $#.
"""
import difflib
import os
import re
import subprocess
import sys


def parts_for(text, state):
    """The lines for programs in that state."""
    kept, part = [], "all"
    for line in text.splitlines():
        if line.startswith("@"):
            part = line[1:]
        elif part in ("all", state):
            kept.append(line)
    return kept


def without_addresses(text):
    text = re.sub(r"0x[0-9a-f]+", lambda found: "0x0" if found[0] == "0x0" else "0x#", text)
    return re.sub(r"^\$\d+ = ", "$# = ", text, flags=re.MULTILINE)


def check_numbers(lines):
    """What is said of `broken.tree_order_4` names invariant 4."""
    faults = []
    for command, said in zip(lines, lines[1:]):
        sought = re.match(r"> mova check broken\.\w+_(\d)\b", command)
        if sought and f"invariant {sought[1]} is broken" not in said:
            faults.append(f"{command}\n{said}")
    return faults


def main():
    expected_file, state, *command = sys.argv[1:]
    with open(expected_file, encoding="utf-8") as file:
        expected = [line for line in parts_for(file.read(), state) if line and not line.startswith("#")]
    commands_file = os.path.abspath(f"commands_{os.getpid()}.txt")
    with open(commands_file, "w", encoding="utf-8") as file:
        file.writelines(line[2:] + "\n" for line in expected if line.startswith("> "))
    try:
        ran = subprocess.run(command, env={**os.environ, "MOVA_COMMANDS": commands_file, "LC_ALL": "C.UTF-8"},
                             capture_output=True, encoding="utf-8", errors="replace", timeout=100)
    finally:
        os.remove(commands_file)
    _, _, printed = ran.stdout.partition("==== begin\n")
    printed = without_addresses(printed.partition("==== end\n")[0])
    # lldb adds advice, which begins so.
    said = [line for line in printed.splitlines() if line and not line.startswith("***")]
    faults = check_numbers(said)
    difference = list(difflib.unified_diff(expected, said, "expected", "said", lineterm=""))
    if difference or faults or not expected:
        print("\n".join(difference + faults))
        print(f"the debugger ended with {ran.returncode}; before it began it said:\n{ran.stdout[:2000]}\n{ran.stderr[-2000:]}")
        sys.exit(1)
    print(f"{sum(line.startswith('> ') for line in expected)} commands print what they are to print")


if __name__ == "__main__":
    main()

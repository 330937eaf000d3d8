# SPDX-License-Identifier: MIT
# Runs inside gdb: the commands of a file, each with what it prints below it.
import os

import gdb

print("==== begin")
with open(os.environ["MOVA_COMMANDS"], encoding="utf-8") as commands:
    for command in commands.read().splitlines():
        print("> " + command)
        try:
            print(gdb.execute(command, to_string=True).rstrip("\n"))
        except gdb.error as fault:
            print(fault)
print("==== end")

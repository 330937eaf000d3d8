# SPDX-License-Identifier: MIT
# Runs inside gdb: the commands of a file, each with what it prints below it. Then the records' layouts must be the compiler's.
import os

import gdb
from mova_debugger import gdb_side, memory


def said_by_compiler(name, fields):
    type_ = gdb.lookup_type(name)
    return type_.sizeof, [(field, type_[field].bitpos // 8, type_[field].type.sizeof) for field, *_ in fields]


print("==== begin")
with open(os.environ["MOVA_COMMANDS"], encoding="utf-8") as commands:
    for command in commands.read().splitlines():
        print("> " + command)
        try:
            print(gdb.execute(command, to_string=True).rstrip("\n"))
        except gdb.error as fault:
            print(fault)
for name in memory.RECORDS:
    layout = gdb_side.GdbMemory().layout(name)
    if (layout.size, [field[:3] for field in layout.fields]) != said_by_compiler(name, layout.fields):
        print(f"{name} is laid out otherwise")
print("==== end")

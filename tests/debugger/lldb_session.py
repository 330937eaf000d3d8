# SPDX-License-Identifier: MIT
# Runs inside lldb: the commands of a file, each with what it prints below it. Then how many children a long list has.
import os

import lldb


def __lldb_init_module(debugger, _):
    print("==== begin")
    with open(os.environ["MOVA_COMMANDS"], encoding="utf-8") as commands:
        for command in commands.read().splitlines():
            print("> " + command)
            said = lldb.SBCommandReturnObject()
            debugger.GetCommandInterpreter().HandleCommand(command, said)
            print((said.GetOutput() or "") + (said.GetError() or ""))
    long_list = debugger.GetSelectedTarget().FindFirstGlobalVariable("long_list").Dereference()
    last = long_list.GetChildAtIndex(long_list.GetNumChildren() - 1)
    print(f"of long_list {long_list.GetNumChildren()} children, {last.GetName()} {last.GetSummary()}")
    print("==== end")

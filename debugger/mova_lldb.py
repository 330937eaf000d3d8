# SPDX-License-Identifier: MIT
# Views of libmova_container's containers in lldb: `command script import` this file, in ~/.lldbinit for all programs.
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(os.path.expanduser(__file__))))
# A debugger that root runs is to leave no files where the library is installed.
writes, sys.dont_write_bytecode = sys.dont_write_bytecode, True
from mova_debugger import lldb_side  # noqa: E402
from mova_debugger.lldb_side import Children, summary  # noqa: E402,F401

sys.dont_write_bytecode = writes


def __lldb_init_module(debugger, _):
    lldb_side.register(debugger, __name__)

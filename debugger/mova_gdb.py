# SPDX-License-Identifier: MIT
# Views of libmova_container's containers in gdb: `source` this file. (Where the shared library is installed, gdb does so
# by itself.)
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(os.path.expanduser(__file__))))
# A debugger that root runs is to leave no files where the library is installed.
writes, sys.dont_write_bytecode = sys.dont_write_bytecode, True
from mova_debugger import gdb_side  # noqa: E402

sys.dont_write_bytecode = writes
gdb_side.register()

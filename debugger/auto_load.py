# SPDX-License-Identifier: MIT
# Where the shared library is installed, this file has its name, in the folder that gdb looks into by itself.
import os
import sys

sys.path.insert(0, os.path.abspath(__file__).partition("/gdb/auto-load/")[0] + "/mova/debugger")
import mova_gdb  # noqa: E402,F401

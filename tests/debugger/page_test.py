# SPDX-License-Identifier: MIT
"""Compares what a page shows of gdb with what the tests expect of it.

    page_test.py PAGE EXPECTED
"""
import re
import sys

from debugger_test import without_addresses


def main():
    page, expected = (open(path, encoding="utf-8").read() for path in sys.argv[1:])
    shown = re.findall(r"^    \(gdb\) (.*)\n    (.*)$", page, flags=re.MULTILINE)
    missing = [f"{command}\n{said}" for command, said in shown
               if f"> {command}\n{without_addresses(said)}\n" not in expected]
    print("\n".join(missing) or f"{len(shown)} commands print what the page says")
    sys.exit(bool(missing) or not shown)


if __name__ == "__main__":
    main()

#!/bin/sh
# SPDX-License-Identifier: MIT
# emulated_core.sh DIRECTORY COMMAND...: runs the command, which ends by a signal, and leaves the emulator's core of its
# program in the directory, under the name core.
set -eu
rm -rf "$1"
mkdir -p "$1"
cd "$1"
shift
ulimit -c unlimited
"$@" || echo "ended with $?"
mv qemu_*.core core

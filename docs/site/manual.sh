#!/bin/sh
# SPDX-License-Identifier: MIT
# manual.sh SOURCE DIRECTORY VERSION: writes the manual of the C functions into DIRECTORY/man3.
set -eu
site=$1/docs/site
python3 -B "$site/prepare.py" --headers "$1" "$2"
cd "$2"
export MOVA_SITE="$site" MOVA_SOURCE="$1" MOVA_VERSION="$3"
(cat "$site/Doxyfile" && echo GENERATE_HTML=NO && echo USE_MDFILE_AS_MAINPAGE=) | doxygen -
python3 -B "$site/manual.py" xml man3 "$3"

# SPDX-License-Identifier: MIT
# Installs a build, moves what was installed, and builds and runs programs against it.
#
# cmake -DBUILD=... -DSOURCE=... -DDIRECTORY=... -DGENERATOR=... -DPKG_CONFIG=... -DC_COMPILER=...
#       -DCXX_COMPILER=... -DC_FLAGS=... -DCXX_FLAGS=... -DLIBDIR=... -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/use.cmake)
set(prefix ${DIRECTORY}/moved)

file(REMOVE_RECURSE ${DIRECTORY})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${DIRECTORY}/installed)
file(RENAME ${DIRECTORY}/installed ${prefix})
use_installed()

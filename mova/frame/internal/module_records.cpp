/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/module_records.h>

namespace mova {

module_records modules = {
    .cache = {"cache"},
    .unused_egenlist = {"egenlist"},
    .genlist = {"genlist"},
    .egenlist = {"egenlist"},
    .egenstack = {"egenstack"},
    .sgenlist = {"sgenlist"},
    .gentree = {{"gentree"}, 0, 0, 0},
    .darray = {"darray"},
    .sortar = {"sortar"},
    .plut = {"plut"},
    .rgblut = {{"RGBLUT"}, 20, 0, 0, 1},
};

} // namespace mova

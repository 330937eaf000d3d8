/* SPDX-License-Identifier: MIT */
/* The module records: the name under which each module's errors are reported, and the module's own words. */
#ifndef MOVA_FRAME_INTERNAL_MODULE_RECORDS_H
#define MOVA_FRAME_INTERNAL_MODULE_RECORDS_H

#include <mova/frame/host.h>

namespace mova {

/* What every record begins with. */
struct module_record {
    const char *name;
};

/* The balanced tree's record counts the live records of its family. */
struct tree_module_record : module_record {
    int32_t live_trees;
    int32_t live_nodes;
    int32_t live_iterators;
};

/* The colour table's record holds where its search for a free index starts, and three flags. */
struct clut_module_record : module_record {
    int32_t first_free_index;
    int32_t full_warning;
    int32_t initialised;
    int32_t static_phase;
};

/* All records, in the order in which they are laid out. Two modules bear the name "egenlist", so their errors
   read the same. Flags and words that a program may set by name are not kept here: a program that is linked at a
   fixed address owns the copy of every variable that it names, and a field of a record cannot move there. */
struct module_records {
    module_record cache;
    module_record unused_egenlist;
    module_record genlist;
    module_record egenlist;
    module_record egenstack;
    module_record sgenlist;
    tree_module_record gentree;
    module_record darray;
    module_record sortar;
    module_record plut;
    clut_module_record rgblut;
};

extern module_records modules;

/* Reports an error of `module`. A host may return from it: what follows the call must be safe then. */
inline void raise(const module_record &module, int32_t line, int32_t code)
{
    EX_raise_exception_line(module.name, line, code);
}

} // namespace mova

#endif

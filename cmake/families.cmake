# SPDX-License-Identifier: MIT
# Every family of the library, once: the tests, the models and their fuzzers, the programs in C and the benchmarks
# follow from this table, and its rooms give the libraries their sources and headers. tests/docs/families.cmake
# compares with it what people read: the umbrella header, the link maps, the tables in the documents.
#
#   room      mova/<room>/<name>.h and .cpp; tests/<room>/<name>_test.cpp
#   prefixes  of the public names; the documents give the first
#   has       what it has besides:
#               model    tests/model/<name>_model.cpp, which the model tests and a fuzzer run
#               c        tests/c_api/<name>.c, which defines drive_<name>
#               checked  mova/checked/<name>.h, by whose rows the checked library checks it
#               bench    bench/<room>/<name>_bench.cpp
#             and what it is:
#               process  its state is the process's, all of which belongs to one thread at a time
set(family_table
    # name                room    prefixes                    has
    "block_array          arrays  GB_                         model c checked"
    "dynamic_array        arrays  DA_                         model c bench checked"
    "id_lookup_table      arrays  io_lut_                     model c checked"
    "sorted_number_array  arrays  SA_                         model c checked"
    "swap_cache           cache   cc_                         model c bench checked"
    "colour_table         clut    CLUT_,RGBLUT_,clut_,GE_     model c bench checked process"
    "hash_table           hash    HSH_,mova_hash_             model c bench checked"
    "pointer_lookup       hash    mova_lu_                    model c checked"
    "double_list          lists   DBLL_                       model c checked"
    "element_list         lists   EL_                         model c bench checked"
    "element_stack        lists   ES_                         model c checked"
    "generic_list         lists   GL_                         model c bench checked"
    "simple_list          lists   SL_                         model c bench checked"
    "balanced_tree        tree    GT_                         model c bench checked process"
    "errors               host    EX_,mova_error_,mova_set_   c process"
    "memory               host    MM_,mova_memory_            c bench"
    "memory_blocks        host    mb_                         model c bench"
    "messages             host    MSG_,debug_,mova_dprintf    c process")

# families(<result> [ROOM <room>] [WITH model|c|bench|checked|process]): the names of those families, in the table's order.
# For each name it sets <name>_room and <name>_prefixes too.
function(families result)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "ROOM;WITH" "")
    set(names)
    foreach(row IN LISTS family_table)
        separate_arguments(has UNIX_COMMAND "${row}")
        list(POP_FRONT has name room prefixes)
        if((NOT arg_ROOM OR room STREQUAL arg_ROOM) AND (NOT arg_WITH OR arg_WITH IN_LIST has))
            list(APPEND names ${name})
            string(REPLACE "," ";" prefixes ${prefixes})
            set(${name}_room ${room} PARENT_SCOPE)
            set(${name}_prefixes ${prefixes} PARENT_SCOPE)
        endif()
    endforeach()
    set(${result} ${names} PARENT_SCOPE)
endfunction()

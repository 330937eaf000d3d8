# SPDX-License-Identifier: MIT
# Fails where the optimised object calls the library for what has a body in a header, or one of the others does not: the one that
# is not optimised, and the one that asked for calls.
#
# cmake -DNM=... -DOPTIMISED=... -DUNOPTIMISED=... -DASKED_FOR_CALLS=... -P <this file>
cmake_minimum_required(VERSION 3.21)
foreach(object OPTIMISED UNOPTIMISED ASKED_FOR_CALLS)
    execute_process(COMMAND ${NM} -u ${${object}} OUTPUT_VARIABLE ${object}_calls COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(OPTIMISED_calls MATCHES "[A-Z]+_[a-z]|io_lut_|mova_lu_")
    message(SEND_ERROR "the optimised loop calls the library:\n${OPTIMISED_calls}")
endif()
foreach(step GL_next_item EL_next_item EL_next_item_copy EL_next_position SL_next_item HSH_next HSH_contains_key
             mova_lu_get GL_count_items SL_count_items GB_count_items DBLL_size ES_inspect_top ES_count_items io_lut_look_ptr
             DA_nitems)
    foreach(object UNOPTIMISED ASKED_FOR_CALLS)
        if(NOT ${object}_calls MATCHES "${step}\n")
            message(SEND_ERROR "${object} does not call ${step}:\n${${object}_calls}")
        endif()
    endforeach()
endforeach()

# SPDX-License-Identifier: MIT
# Fails where the optimised object calls the library for a step, or the other one calls it for none.
#
# cmake -DNM=... -DOPTIMISED=... -DUNOPTIMISED=... -P <this file>
cmake_minimum_required(VERSION 3.21)
foreach(object OPTIMISED UNOPTIMISED)
    execute_process(COMMAND ${NM} -u ${${object}} OUTPUT_VARIABLE ${object}_calls COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(OPTIMISED_calls MATCHES "[EGS]L_|HSH_")
    message(SEND_ERROR "the optimised loop calls the library:\n${OPTIMISED_calls}")
endif()
foreach(step GL_next_item EL_next_item EL_next_item_copy EL_next_position SL_next_item HSH_next)
    if(NOT UNOPTIMISED_calls MATCHES "${step}\n")
        message(SEND_ERROR "the loop that is not optimised does not call ${step}:\n${UNOPTIMISED_calls}")
    endif()
endforeach()

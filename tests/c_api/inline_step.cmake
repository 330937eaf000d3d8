# Fails where the optimised object calls the library for a step, or the other one does not.
#
# cmake -DNM=... -DOPTIMISED=... -DUNOPTIMISED=... -P <this file>
cmake_minimum_required(VERSION 3.21)
foreach(object OPTIMISED UNOPTIMISED)
    execute_process(COMMAND ${NM} -u ${${object}} OUTPUT_VARIABLE ${object}_calls COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(OPTIMISED_calls MATCHES "GL_")
    message(SEND_ERROR "the optimised loop calls the library:\n${OPTIMISED_calls}")
endif()
if(NOT UNOPTIMISED_calls MATCHES "GL_next_item")
    message(SEND_ERROR "the loop that is not optimised does not call the exported step:\n${UNOPTIMISED_calls}")
endif()

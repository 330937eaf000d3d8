# SPDX-License-Identifier: MIT
# What the scripts that compare lists of names share.

# A declaration that is exported begins its line, and stands by itself on it as far as its name. Comments begin with
# a star or are indented.
# declared_names(<header> <result> [<variables>]): the names, and which of them are no functions.
function(declared_names header result)
    file(STRINGS ${header} lines)
    set(names)
    set(variables)
    foreach(line IN LISTS lines)
        if(line MATCHES "^(static|MOVA_INLINE_PART|typedef|#|/|class|struct|namespace)")
            continue()
        endif()
        if(line MATCHES "^[A-Za-z][A-Za-z0-9_ ]*[ *]([A-Za-z][A-Za-z0-9_]*)\\(")
            list(APPEND names ${CMAKE_MATCH_1})
        elseif(line MATCHES "^extern [a-z0-9_]+ ([A-Za-z0-9_, ]+);")
            string(REGEX MATCHALL "[A-Za-z0-9_]+" declared ${CMAKE_MATCH_1})
            list(APPEND names ${declared})
            list(APPEND variables ${declared})
        endif()
    endforeach()
    set(${result} ${names} PARENT_SCOPE)
    if(ARGC GREATER 2)
        set(${ARGV2} ${variables} PARENT_SCOPE)
    endif()
endfunction()

# Says what is in `found` and not in `expected`.
function(report_surplus complaint found expected)
    list(REMOVE_ITEM found ${expected})
    if(found)
        message(SEND_ERROR "${complaint}: ${found}")
    endif()
endfunction()

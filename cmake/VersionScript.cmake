# cmake -D DEF=... -D OUTPUT=... -D NODE=... -P VersionScript.cmake: writes an ELF version script that exports exactly
# the names listed in a module definition file, with the version NODE.

file(STRINGS "${DEF}" lines)
set(names "")
set(in_exports FALSE)
foreach(line IN LISTS lines)
    string(REGEX REPLACE ";.*" "" line "${line}")
    string(STRIP "${line}" line)
    if(line STREQUAL "EXPORTS")
        set(in_exports TRUE)
    elseif(in_exports AND line MATCHES "^[A-Za-z_][A-Za-z0-9_]*$")
        string(APPEND names "        ${line};\n")
    elseif(in_exports AND NOT line STREQUAL "")
        message(FATAL_ERROR "${DEF}: not a plain name: ${line}")
    endif()
endforeach()

set(global "")
if(names)
    set(global "    global:\n${names}")
endif()
file(WRITE "${OUTPUT}" "${NODE} {\n${global}    local:\n        *;\n};\n")

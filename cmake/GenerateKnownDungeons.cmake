# cmake -DTSV=<table> -DROWS=<output> -P GenerateKnownDungeons.cmake
#
# Writes a line WQ_KNOWN_DUNGEON(0xKEY, "entrance", "name") for each row of the table.

# A C++ string literal of any text. "??" is broken up since some compilers see trigraphs in it.
function(as_literal text result)
    string(REPLACE "\\" "\\\\" text "${text}")
    string(REPLACE "\"" "\\\"" text "${text}")
    string(REPLACE "??" "?\\?" text "${text}")
    set(${result} "\"${text}\"" PARENT_SCOPE)
endfunction()

file(READ ${TSV} rest)
string(REPLACE "\r\n" "\n" rest "${rest}")
set(output "// Generated from known_dungeons.tsv.\n")
set(number 0)

# Not a CMake list of lines: semicolons and brackets in names would break it up.
while(NOT rest STREQUAL "")
    math(EXPR number "${number} + 1")
    string(FIND "${rest}" "\n" end)
    string(SUBSTRING "${rest}" 0 ${end} line)
    if(end EQUAL -1)
        set(rest "")
    else()
        math(EXPR end "${end} + 1")
        string(SUBSTRING "${rest}" ${end} -1 rest)
    endif()

    if(line STREQUAL "" OR line MATCHES "^#")
        continue()
    endif()
    if(NOT line MATCHES "^([0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f])\t([^\t]*)\t([^\t]+)$")
        message(FATAL_ERROR "${TSV}:${number}: malformed row, wanted four hexadecimal digits, "
            "entrance (may be empty) and name, set apart by tabs: ${line}")
    endif()
    set(key ${CMAKE_MATCH_1})
    set(name "${CMAKE_MATCH_3}")
    as_literal("${CMAKE_MATCH_2}" entrance)
    as_literal("${name}" name)
    string(APPEND output "WQ_KNOWN_DUNGEON(0x${key}, ${entrance}, ${name})\n")
endwhile()

file(WRITE ${ROWS} "${output}")

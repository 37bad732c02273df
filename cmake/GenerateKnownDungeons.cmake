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

function(refuse number reason)
    message(FATAL_ERROR "${TSV}:${number}: ${reason}")
endfunction()

# Where a byte is zero, CMake reads less of a text than there is.
file(READ ${TSV} bytes HEX)
string(REGEX MATCHALL ".." bytes "${bytes}")
list(FIND bytes 00 place)
if(NOT place EQUAL -1)
    list(SUBLIST bytes 0 ${place} bytes)
    list(FILTER bytes INCLUDE REGEX 0a)
    list(LENGTH bytes number)
    math(EXPR number "${number} + 1")
    refuse(${number} "a byte is zero, so that this is no text")
endif()

file(READ ${TSV} rest)
string(REPLACE "\r\n" "\n" rest "${rest}")
set(output "// Generated from known_dungeons.tsv.\n")
set(number 0)
string(ASCII 1 first)
string(ASCII 31 last)
string(ASCII 127 delete)
set(entrance "[0-9]+(\\.[0-9]+)?[NS] [0-9]+(\\.[0-9]+)?[EW]")

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
        refuse(${number} "malformed row, wanted four hexadecimal digits, entrances (may be empty) \
and name, set apart by tabs: ${line}")
    endif()
    set(key ${CMAKE_MATCH_1})
    set(entrances "${CMAKE_MATCH_2}")
    set(name "${CMAKE_MATCH_3}")
    if(NOT entrances MATCHES "^(${entrance}(, ${entrance})*)?$")
        refuse(${number} "entrances are coordinates such as \"9.8S 38.0E\", joined by \", \", or \
nothing: ${entrances}")
    endif()
    if(name MATCHES "[${first}-${last}${delete}]")
        refuse(${number} "there is a control character in the name")
    endif()
    as_literal("${entrances}" entrances)
    as_literal("${name}" name)
    string(APPEND output "WQ_KNOWN_DUNGEON(0x${key}, ${entrances}, ${name})\n")
endwhile()

file(WRITE ${ROWS} "${output}")

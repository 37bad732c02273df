# The table of known dungeons is content: data/known_dungeons.tsv becomes rows of C++ at build time.
# A target that links plotterra_known_dungeons may write
#
#     #define WQ_KNOWN_DUNGEON(key, entrance, name) ...
#     #include "data/KnownDungeonRows.inc"
#     #undef WQ_KNOWN_DUNGEON
include_guard(GLOBAL)

set(tsv ${PROJECT_SOURCE_DIR}/data/known_dungeons.tsv)
set(script ${PROJECT_SOURCE_DIR}/cmake/GenerateKnownDungeons.cmake)
set(rows ${PROJECT_BINARY_DIR}/generated/data/KnownDungeonRows.inc)

add_custom_command(OUTPUT ${rows}
    COMMAND ${CMAKE_COMMAND} -DTSV=${tsv} -DROWS=${rows} -P ${script}
    DEPENDS ${tsv} ${script}
    COMMENT "Generating the known-dungeon rows"
    VERBATIM)
add_custom_target(plotterra_known_dungeon_rows DEPENDS ${rows})

add_library(plotterra_known_dungeons INTERFACE)
add_dependencies(plotterra_known_dungeons plotterra_known_dungeon_rows)
target_include_directories(plotterra_known_dungeons INTERFACE ${PROJECT_BINARY_DIR}/generated)

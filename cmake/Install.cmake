# What `cmake --install` puts where. Everything is found relative to the program's own folder, so
# that an installed prefix can be moved. Two components: the programs, and the library for others.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(programs Plotterra plotterra-sample plotterra-data plotterra-web)
install(TARGETS ${programs} RUNTIME COMPONENT programs)
install(TARGETS plotterra-lettering
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/plotterra COMPONENT programs)
install(DIRECTORY decoders/ DESTINATION ${CMAKE_INSTALL_DATADIR}/plotterra/decoders
    COMPONENT programs FILES_MATCHING PATTERN "*.lua")
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/plotterra COMPONENT programs)

# Man pages, compressed as systems keep them, without the time of day.
find_program(GZIP gzip REQUIRED)
foreach(program IN LISTS programs)
    set(page ${PROJECT_BINARY_DIR}/man/${program}.1.gz)
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
        COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/docs/${program}.1 > ${page}
        DEPENDS ${PROJECT_SOURCE_DIR}/docs/${program}.1
        VERBATIM)
    list(APPEND pages ${page})
endforeach()
add_custom_target(plotterra_man_pages ALL DEPENDS ${pages})
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)

# Completions, where the shells of a system look for them. zsh keeps a folder for what packages bring
# apart from that for what is installed by hand.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_folder vendor-completions)
else()
    set(zsh_folder site-functions)
endif()
foreach(program IN LISTS programs)
    install(FILES completions/${program}.bash COMPONENT programs RENAME ${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES completions/${program}.zsh COMPONENT programs RENAME _${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})
    install(FILES completions/${program}.fish COMPONENT programs
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endforeach()

# The library: a target and the headers of each layer, found by find_package or pkg-config. The test
# PublicHeaders compiles each header alone.
foreach(layer io archive game map_land map_overlay map_png map decode)
    get_target_property(folder plotterra_${layer} SOURCE_DIR)
    file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
    target_sources(plotterra_${layer} PUBLIC
        FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
    set_target_properties(plotterra_${layer} PROPERTIES
        EXPORT_NAME ${layer} VERIFY_INTERFACE_HEADER_SETS ON)
    install(TARGETS plotterra_${layer} EXPORT PlotterraTargets
        ARCHIVE COMPONENT development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/plotterra COMPONENT development)
endforeach()
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Plotterra)
install(EXPORT PlotterraTargets NAMESPACE Plotterra:: DESTINATION ${package}
    COMPONENT development)
configure_package_config_file(cmake/PlotterraConfig.cmake.in PlotterraConfig.cmake
    INSTALL_DESTINATION ${package} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(PlotterraConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/PlotterraConfig.cmake
    ${PROJECT_BINARY_DIR}/PlotterraConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

file(RELATIVE_PATH prefix_of_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/plotterra.pc.in plotterra.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/plotterra.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Debian packages: `cpack -G DEB` in a build that is installed under /usr; see scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plotterra)
set(CPACK_PACKAGE_VENDOR "The Plotterra authors")
set(CPACK_PACKAGE_CONTACT "The Plotterra authors <plotterra@example.org>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL programs development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# One package for each release of Debian, each newer than that for the one before.
cmake_host_system_information(RESULT debian QUERY DISTRIB_VERSION_ID)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1~deb${debian})

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME plotterra)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_RECOMMENDS fonts-liberation)
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION
"draw and explore the world of an online role-playing game
Reads the client data archives of an online role-playing game, draws the
terrain of its world as one picture, makes a page to wander about in it,
shows what changed between two clients, and looks into the archives.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libplotterra-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "plotterra (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), libssl-dev, libtbb-dev, libisal-dev, liblua5.4-dev, rapidjson-dev, pkg-config")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"library for the archives and maps of an online role-playing game
The library under Plotterra: block files and their directories, the game's
records, comparison, maps with overlays, records as trees. Static libraries,
headers, a CMake package and a pkg-config file.")

# What Debian wants to find of every package.
find_program(GZIP gzip REQUIRED)
set(changelog ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
add_custom_command(OUTPUT ${changelog}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packaging
    COMMAND ${GZIP} -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog > ${changelog}
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog
    VERBATIM)
add_custom_target(plotterra_package_files ALL DEPENDS ${changelog})
foreach(pair programs:plotterra development:libplotterra-dev)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 component)
    list(GET pair 1 name)
    install(FILES ${changelog} packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
        COMPONENT ${component})
endforeach()
include(CPack)

# Puts the page's parts and its libraries into an object file, so that plotterra-web stands alone.
find_file(LEAFLET_SCRIPT leaflet.min.js PATH_SUFFIXES share/javascript/leaflet REQUIRED)
find_file(LEAFLET_STYLE leaflet.css PATH_SUFFIXES share/javascript/leaflet REQUIRED)
find_file(LEAFLET_LICENCE copyright PATH_SUFFIXES share/doc/libjs-leaflet REQUIRED)
find_file(THREE_SCRIPT three.min.js PATH_SUFFIXES share/javascript/three REQUIRED)
find_file(THREE_LICENCE copyright PATH_SUFFIXES share/doc/libjs-three REQUIRED)

set(generated ${PROJECT_BINARY_DIR}/generated/web)
set(page ${PROJECT_SOURCE_DIR}/web/page)

# A script of modules, each after those that it imports.
function(join_scripts output)
    list(TRANSFORM ARGN PREPEND ${page}/)
    list(JOIN ARGN "|" modules)
    set(script ${PROJECT_SOURCE_DIR}/cmake/JoinScripts.cmake)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DOUTPUT=${output} "-DMODULES=${modules}" -P ${script}
        DEPENDS ${ARGN} ${script}
        VERBATIM)
endfunction()

function(write_if_different file text)
    set(written "")
    if(EXISTS ${file})
        file(READ ${file} written)
    endif()
    if(NOT written STREQUAL text)
        file(WRITE ${file} "${text}")
    endif()
endfunction()

# A file of a library, without the line that tells debuggers where its sources are: the page loads
# nothing.
function(take_library input output)
    file(READ ${input} text)
    string(REGEX REPLACE "\n(//|/\\*)# sourceMappingURL=[^\n]*" "" text "${text}")
    write_if_different(${output} "${text}")
endfunction()
take_library(${LEAFLET_SCRIPT} ${generated}/leaflet.js)
take_library(${LEAFLET_STYLE} ${generated}/leaflet.css)

# What the land is read with, in the page and in its workers.
set(land_modules
    land.js unpack.js colors.js light.js points.js surface.js changekinds.js mixer.js grain.js mask.js tints.js roads.js
    contours.js tile.js relief/sea.js relief/shadows.js relief/ground.js)
join_scripts(${generated}/worker.js ${land_modules} worker.js)
join_scripts(${generated}/application.js ${land_modules}
    events.js dom.js coordinates.js placelooks.js world.js settings.js painter.js landtiles.js lettering.js flatmap.js
    contourlabels.js graticule.js legend.js overview.js scalebar.js icons.js fullscreen.js blockchanges.js readout.js layers.js gathering.js spotlayout.js places.js search.js changes.js plotfile.js marks.js windowedlist.js herelist.js marklayer.js markpanel.js link.js profile.js measure.js save.js
    shell.js menu.js longpress.js shortcuts.js pointing.js
    relief/camera.js relief/tree.js relief/shaders.js relief/waves.js relief/pick.js relief/skin.js
    relief/scene.js relief/sight.js relief/labels.js relief/overlay.js relief/stops.js relief/compass.js
    relief/gestures.js relief.js reliefswitch.js navigation.js address.js main.js)

set(licences "")
foreach(licence ${PROJECT_SOURCE_DIR}/LICENSE ${LEAFLET_LICENCE} ${THREE_LICENCE})
    file(READ ${licence} text)
    string(APPEND licences "${text}\n\n")
endforeach()
write_if_different(${generated}/licences.txt "${licences}")

set(embedded "#include \"web/WQWebAssets.h\"\n")
set(inputs)
function(embed name file)
    string(APPEND embedded "
__asm__(\".pushsection .rodata\\n${name}_begin: .incbin \\\"${file}\\\"\\n${name}_end: .popsection\");
extern \"C\" const char ${name}_begin[], ${name}_end[];
const std::string_view WQWebAssets::${name}(${name}_begin, ${name}_end);
")
    set(embedded "${embedded}" PARENT_SCOPE)
    set(inputs ${inputs} ${file} PARENT_SCOPE)
endfunction()
embed(page ${page}/page.html)
embed(style ${page}/style.css)
embed(application ${generated}/application.js)
embed(worker ${generated}/worker.js)
embed(flatLibrary ${generated}/leaflet.js)
embed(flatLibraryStyle ${generated}/leaflet.css)
embed(reliefLibrary ${THREE_SCRIPT})
embed(licences ${generated}/licences.txt)
write_if_different(${generated}/WebAssets.cpp "${embedded}")
set_source_files_properties(${generated}/WebAssets.cpp PROPERTIES OBJECT_DEPENDS "${inputs}")

add_library(plotterra_web_assets OBJECT ${generated}/WebAssets.cpp)
target_link_libraries(plotterra_web_assets PUBLIC plotterra_options)

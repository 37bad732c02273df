include(GNUInstallDirs)

# Every target links plotterra_options, so that warnings and the rules for
# floating-point arithmetic hold for the whole tree and for nothing outside it.
add_library(plotterra_options INTERFACE)
target_include_directories(plotterra_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(plotterra_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    # What a compiler that nobody has tried yet warns of must not keep a user from building.
    $<$<BOOL:${PLOTTERRA_WERROR}>:-Werror>
    # Where it was built is nobody's business.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    # Nobody asks for errno after a square root, and code that sets it cannot be vectorised.
    -fno-math-errno
    # A fused multiply-add would colour pixels differently from machine to machine.
    -ffp-contract=off)

if(PLOTTERRA_SANITIZE)
    set(sanitize -fsanitize=${PLOTTERRA_SANITIZE})
    target_compile_options(plotterra_options INTERFACE
        ${sanitize} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(plotterra_options INTERFACE ${sanitize})
    target_compile_definitions(plotterra_options INTERFACE PLOTTERRA_SANITIZED)
endif()

# One static library a layer, named plotterra_<layer>, of all sources in its folder but a program's
# main.cpp, and of those that stand for its platform.
function(plotterra_layer name)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/platform/${PLOTTERRA_PLATFORM}/*.cpp)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    add_library(plotterra_${name} STATIC ${sources})
    add_library(Plotterra::${name} ALIAS plotterra_${name})
    target_include_directories(plotterra_${name} PUBLIC
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/plotterra>)
    target_compile_features(plotterra_${name} PUBLIC cxx_std_20)
    target_link_libraries(plotterra_${name} PUBLIC $<BUILD_INTERFACE:plotterra_options> ${ARGN})
endfunction()

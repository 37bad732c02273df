# The engine of the page that needs nothing installed: the layers and programs as WebAssembly.
add_compile_options(-fwasm-exceptions -msimd128)
# Whatever is narrowed to the 32 bits of a size there was held against a size before, which the
# compiler does not see.
target_compile_options(plotterra_options INTERFACE -Wno-shorten-64-to-32)
add_link_options(-fwasm-exceptions)
add_subdirectory(io)
add_subdirectory(archive)
add_subdirectory(game)
add_subdirectory(map)
add_subdirectory(tool EXCLUDE_FROM_ALL)
add_subdirectory(browser)

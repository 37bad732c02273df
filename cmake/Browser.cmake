# The engine of the page that needs nothing installed: the layers and programs as WebAssembly.
add_compile_options(-fwasm-exceptions -msimd128)
add_link_options(-fwasm-exceptions)
add_subdirectory(io)
add_subdirectory(archive)
add_subdirectory(game)
add_subdirectory(map)
add_subdirectory(tool EXCLUDE_FROM_ALL)
add_subdirectory(browser)

# cmake -DOUTPUT=<file> -DMODULES=<file>|<file>|... -P JoinScripts.cmake
#
# Makes one script of modules, each after those that it imports. A module becomes a function that
# gives what it exports; its other names stay its own. A name may be exported once only, which the
# browser says at once. Each export stands at the start of a line and declares one name.
string(REPLACE "|" ";" modules "${MODULES}")
set(keywords "(async function|function|const|let|class)")
file(WRITE ${OUTPUT} "'use strict';\n")
foreach(module IN LISTS modules)
    file(READ ${module} text)
    string(REGEX MATCHALL "\nexport ${keywords} [A-Za-z_0-9]+" exports "${text}")
    list(TRANSFORM exports REPLACE "\nexport ${keywords} " "")
    list(JOIN exports ", " names)
    string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
    string(REGEX REPLACE "\nexport " "\n" text "${text}")
    file(APPEND ${OUTPUT} "const {${names}} = (() => {\n${text}return {${names}};\n})();\n")
endforeach()

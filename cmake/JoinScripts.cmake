# cmake -DOUTPUT=<file> -DMODULES=<file>|<file>|... -P JoinScripts.cmake
#
# Makes one script of modules, each after those that it imports. The words "import" and "export" go:
# in one script everything sees everything, so no two modules may use the same name at their top
# level, which the browser says at once.
string(REPLACE "|" ";" modules "${MODULES}")
file(WRITE ${OUTPUT} "'use strict';\n")
foreach(module IN LISTS modules)
    file(READ ${module} text)
    string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
    string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
    file(APPEND ${OUTPUT} "${text}")
endforeach()

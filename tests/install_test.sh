#!/usr/bin/env bash
# install_test.sh <build folder> <source folder> <sample world> <older sample world>
#
# Installs the build, moves it elsewhere, and uses it there: the programs on a sample world, the
# library from programs of its own.
set -euo pipefail
build=$1 source=$2 world=$3 older=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() {
    echo "$*" >&2
    exit 1
}

cmake --install "$build" --prefix "$folder/first" >/dev/null
mv "$folder/first" "$folder/moved"
prefix=$folder/moved

# Nothing in what is installed tells where it was built.
! grep -rlF -e "$build" -e "$source/" -e "$folder/first" "$prefix" || fail "a path of the build"

# The programs, and with them what they find beside themselves.
cd "$folder"
"$prefix/bin/Plotterra" -g "$world" map 2>log
[ -s map.png ] || fail "no map: $(cat log)"
! grep "shapes and labels are missing" log
"$prefix/bin/plotterra-web" "$world" page.html >/dev/null 2>&1
[ -s page.html ] || fail "no page"
"$prefix/bin/plotterra-data" decoders >decoders 2>log
for decoder in "$source"/decoders/*.lua; do
    grep -qF "$prefix/share/plotterra/decoders/${decoder##*/}" decoders || fail "$decoder is not found"
done
! grep -F "$prefix" log || fail "a folder that is not installed is missed"

# Man pages and completions, which know every option that the man page tells of.
for program in Plotterra plotterra-sample plotterra-data plotterra-web; do
    page=$prefix/share/man/man1/$program.1.gz
    completions=("$prefix/share/bash-completion/completions/$program"
        "$prefix"/share/zsh/*/_$program "$prefix/share/fish/vendor_completions.d/$program.fish")
    bash -n "${completions[0]}"
    for other in Plotterra sample data web; do
        [ $program = ${other/#[a-z]*/plotterra-$other} ] ||
            zcat "$page" | grep -qE "^\.Xr (plotterra.-)?$other 1" || fail "$program's page leads not to $other's"
    done
    for option in $(zcat "$page" | grep -oE 'Fl \\-[a-z\-]+' | sed 's/Fl .-//; s/\\//g' | sort -u); do
        for file in "${completions[@]}"; do
            grep -qE -- "(--|-l )$option\b" "$file" || fail "${file##*/} does not know --$option"
        done
    done
done

for library in $(grep -oE 'libjs-[a-z]+' "$source/cmake/WebAssets.cmake" | sort -u); do
    grep -q "$library" "$prefix/share/doc/plotterra/copyright" || fail "the licence of $library is not told"
done

# DESTDIR goes before the prefix.
DESTDIR=$folder/staged cmake --install "$build" --prefix /usr/games >/dev/null
[ -x "$folder/staged/usr/games/bin/Plotterra" ] || fail "DESTDIR is not honoured"

# The library, by CMake and by pkg-config.
cmake -G Ninja -S "$source/examples" -B "$folder/examples" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$folder/examples" >build.log || fail "$(cat build.log)"
[[ $("$folder/examples/highest-point" "$world" 2>/dev/null | tail -1) == [1-9]*" at "*[NS]" "*[EW] ]] ||
    fail "no highest point"
"$folder/examples/compare-records" "$older" "$world" 2>/dev/null |
    grep -q "^changed ffff0001 WQVersion$" || fail "no changed version record"
"$folder/examples/own-overlay" "$world" own.png 2>log >/dev/null
! grep "missing" log
[ -s own.png ] || fail "no picture"

# Without the programs, for a program that wants some layers, which say nothing of their own accord.
cmake --install "$build" --component development --prefix "$folder/library" >/dev/null
mkdir layers
cat >layers/CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Probe CXX)
find_package(Plotterra REQUIRED COMPONENTS archive game)
add_executable(probe probe.cpp)
target_link_libraries(probe PRIVATE Plotterra::game)
END
echo '#include "archive/ZPGorvaneClientData.h"
int main() { return !ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::first); }' >layers/probe.cpp
cmake -G Ninja -S layers -B layers/build -DCMAKE_PREFIX_PATH="$folder/library" >/dev/null
cmake --build layers/build >build.log || fail "$(cat build.log)"
layers/build/probe >log 2>&1 && [ ! -s log ] || fail "some layers alone: $(cat log)"

printf '#include "archive/ZPGorvaneClientData.h"\nint main() { return ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::first) == nullptr; }\n' >probe.cpp
export PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name plotterra.pc)")
# No installed header asks for one that stayed behind.
find "$prefix/include/plotterra" -name '*.h' -printf '#include "%P"\n' >headers.cpp
c++ -fsyntax-only headers.cpp $(pkg-config --cflags plotterra lua5.4-c++)
c++ probe.cpp $(pkg-config --cflags --libs plotterra) -o probe
./probe 2>/dev/null || fail "pkg-config's program knows no game"

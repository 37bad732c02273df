#!/usr/bin/env bash
# readme_test.sh <build folder> <README.md>
#
# Runs every command of the README's blocks marked sh, as written, one after another in a folder such as
# the reader's.
set -euo pipefail
build=$1 readme=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export PATH=$build:$PATH
sed -n '/^```sh$/,/^```$/{/^```/!p}' "$readme" >commands
[ "$(wc -l <commands)" -ge 10 ] || { echo "hardly any commands in $readme" >&2; exit 1; }
bash -euo pipefail commands >output 2>log || {
    tail -5 output log >&2
    exit 1
}
for made in map.png print.png changes.png changes.txt places.png world.html palettes heights.tif; do
    [ -s "$made" ] || { echo "$made was not made" >&2; exit 1; }
done
grep -q '^Removed land blocks:$' output
grep -q '^[0-9a-f]\{4\} .* -- [A-Z]' output
# What it shows of the log is what the log says.
sed -n '/^    outputPath: /,/^$/{/^    /s///p}' "$readme" >shown
[ "$(wc -l <shown)" = 4 ]
while read -r line; do
    grep -qF "] $line" log || { echo "the log lacks: $line" >&2; exit 1; }
done <shown

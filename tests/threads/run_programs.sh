#!/usr/bin/env bash
# Each program once over the sample worlds, for ThreadSanitizer to watch; its reports have status 66.
set -euo pipefail
programs=$1 world=$2 older=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

watched() {
    "$programs/$1" "${@:2}" >"$folder/log" 2>&1 || {
        cat "$folder/log"
        exit 1
    }
}

watched plotterra-sample "$folder/world"
watched Plotterra -g -s 8 -p "$world/towns.txt" "$world" "$folder/map.png"
watched Plotterra -g --old "$older" --save-changes "$folder/changes.txt" "$world" "$folder/changes.png"
watched Plotterra -h "$world" "$folder/heights.png"
watched plotterra-data check "$world"
watched plotterra-data diff --digests --records "$world" "$world"
watched plotterra-data extract "$world" "$folder/files" --type WQPalette
watched plotterra-web --old "$older" --plot "$world/towns.txt" "$world" "$folder/page.html"

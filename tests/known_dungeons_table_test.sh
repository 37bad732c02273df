#!/usr/bin/env bash
# known_dungeons_table_test.sh <source folder>
#
# A table of dungeons that would lose rows or trouble every run ends the build, with the line.
set -euo pipefail
generator=$1/cmake/GenerateKnownDungeons.cmake
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

generate() { # <table, for printf>
    rm -f "$folder/rows"
    printf "$1" >"$folder/table.tsv"
    cmake -DTSV="$folder/table.tsv" -DROWS="$folder/rows" -P "$generator" >"$folder/log" 2>&1
}

while IFS='|' read -r line reason table; do
    if generate "$table" || [ -e "$folder/rows" ] ||
        ! tr -s ' \n' ' ' <"$folder/log" | grep -qF "table.tsv:$line: $reason"; then
        echo "not refused as it should be: $table" >&2
        cat "$folder/log" >&2
        exit 1
    fi
done <<'END'
2|entrances are coordinates|0001\t\tA\n0002\tin the woods\tB\n
1|entrances are coordinates|0001\t9.8S 38.0E,1N 2W\tA\n
4|a byte is zero|0001\t\tA\n\n0002\t\tB\n0003\t\tC\0D\n0004\t\tE\n
1|a byte is zero|\0
3|there is a control character|# names\n\n0001\t\tA\033[31m\n
1|there is a control character|0001\t\tA\177\n
2|malformed row|\n0001\tA\n
1|malformed row|001\t\tA\n
END

generate '# names\r\n0001\t9.8S 38.0E, 1N 2.25W\tÄ [x]; "y"?? \\\r\n00fF\t\tB'
diff - "$folder/rows" <<'END'
// Generated from known_dungeons.tsv.
WQ_KNOWN_DUNGEON(0x0001, "9.8S 38.0E, 1N 2.25W", "Ä [x]; \"y\"?\? \\")
WQ_KNOWN_DUNGEON(0x00fF, "", "B")
END

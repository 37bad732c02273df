#compdef plotterra-sample

_arguments \
    '--seed[which world]:number:' \
    '--cells[how many dungeon cells]:number:' \
    '--older[the same world some years earlier]' \
    '--force[replace files that this program did not make]' \
    '(- *)--help[print the usage]' \
    '(- *)--version[print the version]' \
    '1:directory:_files -/'

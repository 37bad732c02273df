#compdef Plotterra

_arguments -s \
    '(-a --alpha)'{-a,--alpha}'[land without data is transparent]' \
    '(-g --grid)'{-g,--grid}'[draw coordinate grid, compass and title]' \
    '(-h --height-map)'{-h,--height-map}'[draw height indexes in grey]' \
    '(-o --old)'{-o,--old}'[mark what changed since an older client]:directory:_files -/' \
    '(-p --plot)'{-p,--plot}'[mark the places of a list]:plot file:_files' \
    '--save-changes[list the changed land blocks]:file:_files' \
    '(-s --scale)'{-s,--scale}'[pixels a land point]:scale:(1 2 3 4 5 6 7 8)' \
    '--snow[snow on plains]' \
    '(-w --water)'{-w,--water}'[bright water]' \
    '1:directory with dat files:_files -/' \
    '2:output:_files'

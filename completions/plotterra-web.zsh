#compdef plotterra-web

_arguments \
    '(-o --old)'{-o,--old}'[show what changed since an older client]:directory:_files -/' \
    '(-p --plot)'{-p,--plot}'[show the places of a list]:plot file:_files' \
    '(-t --title)'{-t,--title}'[the title of the page]:text:' \
    '(- *)'{-h,--help}'[print the usage]' \
    '(- *)--version[print the version]' \
    '1:directory with dat files:_files -/' \
    '2:output file:_files'

#compdef plotterra-data

local -a selection=(
    '*--type[files of a type]:type:'
    '*--id[files with an identifier, or from one to another]:identifiers:'
    '*--block[files of a land block]:block:'
    '--larger[files of more bytes]:size:'
    '--newer[files changed since]:date:'
    '(--sound)--damaged[files that cannot be read]'
    '(--damaged)--sound[files that can be read]'
    '--ids-from[files that a list names]:list:_files')
local -a commands=(
    'info:family, header and a table of the files'
    'list:one line a file'
    'cat:one file'
    'extract:write files to a folder'
    'check:what is wrong with an archive'
    'diff:what changed between two archives'
    'export:land for GIS programs'
    'decoders:the decoders that are there')

_arguments -C \
    '--game[the family of the archives]:game:(ostvale ostvale-retail ostvale2)' \
    '*--decoders[look for decoders here first]:folder:_files -/' \
    '--verbose[log every step]' \
    '(- *)'{-h,--help}'[print the usage]' \
    '(- *)--version[print the version]' \
    '1:command:{ _describe command commands }' \
    '*::argument:->argument'
[[ $state == argument ]] || return
case $words[1] in
    list) _arguments $selection '--format[of the output]:format:(text tsv json)' \
        '--sort[by]:key:(size date id -size -date -id)' '*:archive:_files' ;;
    cat) _arguments '--archive[which]:name:(portal cell highres local)' '--hex[a dump]' \
        '--text[the decoded record]' '--offsets[with places of values]' \
        '--json[the decoded record]' '1:archive:_files' '2:identifier:' ;;
    extract) _arguments $selection '--text[decoded records]' '--json[decoded records]' \
        '--again[also what is there]' '1:archive:_files' '2:folder:_files -/' ;;
    check) _arguments $selection '--format[of the output]:format:(text tsv)' '*:archive:_files' ;;
    diff) _arguments $selection '--format[of the output]:format:(text tsv)' \
        '--digests[with SHA-1]' '--records[fields that changed]' '--land[land blocks]' \
        '*:archive:_files' ;;
    export) _arguments '1:archive:_files' '2:what:(heights types roads blocks places)' \
        '*:file:_files' ;;
    info) _arguments '*:archive:_files' ;;
esac

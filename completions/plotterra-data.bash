# bash completion for plotterra-data

_plotterra_data() {
    local cur prev words cword
    _init_completion || return
    local selection='--type --id --block --larger --newer --damaged --sound --ids-from'
    local command= word
    for word in "${words[@]:1:cword-1}"; do
        case $word in
            info | list | cat | extract | check | diff | export | decoders) command=$word && break ;;
        esac
    done
    case $prev in
        --game) COMPREPLY=($(compgen -W 'ostvale ostvale-retail ostvale2' -- "$cur")); return ;;
        --decoders) _filedir -d; return ;;
        --ids-from) _filedir; return ;;
        --format)
            local formats='text tsv'
            [[ $command == list ]] && formats+=' json'
            COMPREPLY=($(compgen -W "$formats" -- "$cur"))
            return
            ;;
        --sort) COMPREPLY=($(compgen -W 'size date id -size -date -id' -- "$cur")); return ;;
        --archive) COMPREPLY=($(compgen -W 'portal cell highres local' -- "$cur")); return ;;
        --type | --id | --block | --larger | --newer) return ;;
    esac
    if [[ $cur == -* ]]; then
        local options='--help'
        case $command in
            '') options+=' --game --decoders --verbose --version' ;;
            list) options+=" --format --sort $selection" ;;
            cat) options+=' --archive --hex --text --offsets --json' ;;
            extract) options+=" --text --json --again $selection" ;;
            check) options+=" --format $selection" ;;
            diff) options+=" --format --digests --records --land $selection" ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ -z $command ]]; then
        COMPREPLY=($(compgen -W 'info list cat extract check diff export decoders' -- "$cur"))
    elif [[ $command == export && $prev != export ]]; then
        COMPREPLY=($(compgen -W 'heights types roads blocks places' -- "$cur"))
        _filedir
    else
        _filedir
    fi
}
complete -F _plotterra_data plotterra-data

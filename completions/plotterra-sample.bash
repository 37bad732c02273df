# bash completion for plotterra-sample

_plotterra_sample() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --seed | --cells) return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--seed --cells --older --force --help --version' -- "$cur"))
    else
        _filedir -d
    fi
}
complete -F _plotterra_sample plotterra-sample

# bash completion for plotterra-web

_plotterra_web() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --old | -o) _filedir -d; return ;;
        --plot | -p) _filedir; return ;;
        --title | -t) return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--help -h --old -o --plot -p --title -t --version' -- "$cur"))
    else
        _filedir
    fi
}
complete -F _plotterra_web plotterra-web

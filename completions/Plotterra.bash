# bash completion for Plotterra

_plotterra() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --old | -o) _filedir -d; return ;;
        --plot | -p | --save-changes) _filedir; return ;;
        --scale | -s) COMPREPLY=($(compgen -W '1 2 3 4 5 6 7 8' -- "$cur")); return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--alpha -a --grid -g --height-map -h --old -o --plot -p
            --save-changes --scale -s --snow --water -w' -- "$cur"))
    else
        _filedir
    fi
}
complete -F _plotterra Plotterra

# Completion of canbench for bash. Commands and options are asked of the program itself, so that
# they are those of the version at hand.

_canbench()
{
    local program=$1 word=$2 before=$3 command=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W "--help --version $("$program" --help 2>/dev/null |
            sed -n 's/^  \([a-z]*\) .*/\1/p')" -- "$word"))
        return
    fi
    case $before in
    --plugin | --trace | --report | --output | -o | --link | --scenario | --control)
        compopt -o filenames
        COMPREPLY=($(compgen -f -- "$word"))
        return ;;
    --device)
        COMPREPLY=($(compgen -f -- "${word:-/dev/tty}"))
        return ;;
    --format)
        COMPREPLY=($(compgen -W "candump pcapng html" -- "$word"))
        return ;;
    --set)
        compopt -o nospace
        COMPREPLY=($(compgen -S = -W "$("$program" run --list-values 2>/dev/null |
            cut -d' ' -f1)" -- "$word"))
        return ;;
    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$("$program" "$command" --help 2>/dev/null |
            grep -oE '^ +(-[a-z], )?--[a-z-]+' | grep -oE -- '--[a-z-]+')" -- "$word"))
    elif [[ $command != run && $command != tour && $command != soak ]]; then
        compopt -o filenames
        COMPREPLY=($(compgen -f -- "$word"))
    fi
}
complete -F _canbench canbench

# Completion of canbench for bash. Commands, options and the words that they take are asked of the
# program itself, so that they are those of the version at hand.

# Words that the program lists, one a line, blanks included.
_canbench_words()
{
    local IFS=$'\n'
    COMPREPLY=($(compgen -W "$("$@" 2>/dev/null)" -- "$word"))
}

# Files that end so first; where there is none, all.
_canbench_files()
{
    local IFS=$'\n'
    compopt -o filenames
    COMPREPLY=($(compgen -f -X "!*.$1" -- "$word") $(compgen -d -- "$word"))
    ((${#COMPREPLY[@]})) || COMPREPLY=($(compgen -f -- "$word"))
}

_canbench()
{
    local program=$1 word=$2 before=$3 command=${COMP_WORDS[1]} commands at
    COMPREPLY=()
    commands=$("$program" --help 2>/dev/null | sed -n 's/^  \([a-z]*\) .*/\1/p')
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W "--help --version help $commands" -- "$word"))
        return
    fi
    # NAME=VALUE is three words for bash.
    if [[ $before == "=" || $word == "=" ]]; then
        [[ $word == "=" ]] && word="" at=$((COMP_CWORD - 1)) || at=$((COMP_CWORD - 2))
        [[ ${COMP_WORDS[at - 1]} != --set ]] ||
            _canbench_words "$program" names --of "${COMP_WORDS[at]}"
        return
    fi
    case "$command $before" in
    *" --plugin" | *" --output" | *" -o") _canbench_files so ;;
    *" --trace") _canbench_files trace ;;
    *" --scenario") _canbench_files scenario ;;
    *" --report" | *" --junit" | *" --link" | *" --control") _canbench_files html ;;
    *" --device") COMPREPLY=($(compgen -f -- "${word:-/dev/tty}")) ;;
    *" --format") COMPREPLY=($(compgen -W "candump pcapng html" -- "$word")) ;;
    *" --set")
        compopt -o nospace
        _canbench_words "$program" names --of set
        COMPREPLY=("${COMPREPLY[@]/%/=}") ;;
    *" --faults" | *" --press" | *" --model" | *" --only" | *" --of")
        _canbench_words "$program" names --of "${before#--}" ;;
    "help "*) COMPREPLY=($(compgen -W "$commands" -- "$word")) ;;
    *)
        if [[ $word == -* ]]; then
            COMPREPLY=($(compgen -W "$("$program" "$command" --help 2>/dev/null |
                grep -oE '^ +(-[a-z], )?--[a-z-]+' | grep -oE -- '--[a-z-]+')" -- "$word"))
        elif [[ $command == play ]]; then
            _canbench_files scenario
        elif [[ $command != @(run|tour|soak|names|box) ]]; then
            _canbench_files trace
        fi ;;
    esac
}
complete -F _canbench canbench

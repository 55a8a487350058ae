# Completion of kd_db for bash. The program itself knows what fits.

# The word as the program would get it: without quotation marks and backslashes.
_kd_db_plain()
{
    local word=$1
    case $word in
    [\"\']*)
        word=${word:1}
        word=${word%[\"\']}
        ;;
    *) word=${word//\\/} ;;
    esac
    [[ $word == \~/* ]] && word=$HOME/${word#\~/}
    REPLY=$word
}

_kd_db()
{
    local words=() line candidate ending i REPLY
    for ((i = 1; i <= COMP_CWORD; ++i)); do
        _kd_db_plain "${COMP_WORDS[i]}"
        words+=("$REPLY")
    done
    local current=$REPLY
    [ "$current" = = ] && current=''
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        :files*)
            compopt -o filenames 2>/dev/null
            while IFS= read -r candidate; do
                ending=" ${candidate##*.} "
                if [[ $line == :files || -d $candidate || " ${line#:files } " == *"${ending,,}"* ]]; then
                    COMPREPLY+=("$candidate")
                fi
            done < <(compgen -f -- "$current")
            ;;
        *)
            candidate=${line%%$'\t'*}
            COMPREPLY+=("$candidate")
            [[ $candidate == *= || $candidate == *' '* ]] && compopt -o nospace 2>/dev/null
            ;;
        esac
    done < <("${COMP_WORDS[0]}" __complete "${words[@]}" 2>/dev/null)
    # A single candidate would end the quoted statement; with a second one, longer by a blank, it goes on.
    if [[ ${#COMPREPLY[@]} = 1 && ${COMPREPLY[0]} == *' '* && ${COMP_WORDS[COMP_CWORD]} == [\"\']* ]]; then
        COMPREPLY+=("${COMPREPLY[0]} ")
    fi
}
complete -F _kd_db kd_db

# Completion of kd_db for bash. The program itself knows what fits.
_kd_db()
{
    local words=("${COMP_WORDS[@]:1:COMP_CWORD}") line candidate ending
    local current=${COMP_WORDS[COMP_CWORD]}
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
}
complete -F _kd_db kd_db

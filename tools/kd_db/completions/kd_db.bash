# Completion of kd_db for bash.
_kd_db()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands='show list memory script load import query'
    local command='' options='' files='' word
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ " $commands " == *" $word "* ]]; then
            command=$word
            break
        fi
    done
    case $previous in
    --columns | --key | --table)
        return
        ;;
    --into)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    esac
    case $command in
    show) options='--columns' files='dbf csv tab tsv txt' ;;
    list) options='--columns --unquote --deleted' files='dbf csv tab tsv txt' ;;
    memory) files='mem' ;;
    script) options='--key --definition-only' files='dbf' ;;
    load) options='--columns --unquote --into --table' files='dbf csv tab tsv txt' ;;
    import) options='--into' files='*' ;;
    query) files='*' ;;
    *)
        mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$current")
        return
        ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options --help" -- "$current")
        return
    fi
    compopt -o filenames 2>/dev/null
    local file
    while IFS= read -r file; do
        if [[ $files == '*' || -d $file || " $files " == *" ${file##*.} "* || " ${files^^} " == *" ${file##*.} "* ]]; then
            COMPREPLY+=("$file")
        fi
    done < <(compgen -f -- "$current")
}
complete -F _kd_db kd_db

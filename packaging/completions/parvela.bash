# Completion of the "parvela" command in bash.

_parvela_offer() {
    local choice
    for choice in "$@"; do
        if [[ $choice == "$word"* ]]; then COMPREPLY+=("$choice"); fi
    done
}

# Boards and keys come from the program, which answers from its cache where it can.
_parvela_ask() {
    local choice _
    # Names hold blanks; readline quotes them, and undoes what was quoted before.
    word=${word#[\"\']}
    word=${word//\\/}
    compopt -o filenames 2>/dev/null
    while IFS=$'\t' read -r choice _; do
        if [[ ${choice,,} == "${word,,}"* ]]; then COMPREPLY+=("$choice"); fi
    done < <("${COMP_WORDS[0]}" words "$1" 2>/dev/null </dev/null)
}

_parvela() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command="" i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case $before in
        --board) _parvela_ask boards; return ;;
        --due) _parvela_offer today tomorrow monday tuesday wednesday thursday friday saturday sunday eow eom; return ;;
        --priority) _parvela_offer low medium high urgent; return ;;
        --today) return ;;
    esac
    case $command in
        "")
            if [[ $word == -* ]]; then
                _parvela_offer --local --demo --background --version --help
            else
                _parvela_offer add parse due boards open complete quick-add link-token unlink doctor
            fi
            ;;
        add) if [[ $word == -* ]]; then _parvela_offer --board --due --priority --json --help; fi ;;
        parse) if [[ $word == -* ]]; then _parvela_offer --today --lines --json --help; fi ;;
        open | complete) if [[ $word == -* ]]; then _parvela_offer --json --help; else _parvela_ask keys; fi ;;
        due | boards | link-token | unlink | doctor) _parvela_offer --json --help ;;
    esac
}

complete -F _parvela parvela

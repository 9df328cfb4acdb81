# Completion of the "parvela" command in bash.

_parvela_offer() {
    local choice
    for choice in "$@"; do
        if [[ $choice == "$value"* ]]; then COMPREPLY+=("$choice"); fi
    done
}

# Boards and keys come from the program, which answers from its cache where it can. Other people name them, so every name is quoted
# here: readline leaves "$" and "`" alone in what it takes for file names, and the shell would run what is between them.
_parvela_ask() {
    local program=${COMP_WORDS[0]/#\~\//"$HOME"/} kept=${value%"$piece"} typed=$piece open="" choice _
    type "$program" &>/dev/null || program=parvela
    if [[ $piece == [\"\']* ]]; then open=${piece:0:1} typed=${piece:1}; fi
    # A quote inside is one that ends: nothing is offered there.
    case $open in
        \') if [[ $typed == *\'* ]]; then return; fi ;;
        \") if [[ ${typed//\\?/} == *\"* ]]; then return; fi ;;
        *) if [[ ${typed//\\?/} == *[\"\']* ]]; then return; fi ;;
    esac
    # Without "-r", "read" takes backslashes as the shell does.
    # shellcheck disable=SC2162
    IFS= read kept <<<"$kept"
    # shellcheck disable=SC2162
    if [[ $open != \' ]]; then IFS= read typed <<<"$typed"; fi
    typed=$kept$typed
    while IFS=$'\t' read -r choice _; do
        if [[ ${choice,,} != "${typed,,}"* ]]; then continue; fi
        choice=${choice:${#kept}}
        case $open in
            \")
                choice=${choice//\\/\\\\} choice=${choice//\$/\\\$} choice=${choice//\`/\\\`} choice=${choice//\"/\\\"}
                choice=${choice//!/\"\\!\"}
                ;;
            \') choice=${choice//\'/\'\\\'\'} ;;
            *) printf -v choice %q "$choice" ;;
        esac
        # Readline closes a quote unless the name seems to have done so.
        if [[ $open && $choice == *"$open" ]]; then choice+=$open; fi
        COMPREPLY+=("$choice")
    done < <("$program" words "$1" 2>/dev/null </dev/null)
}

_parvela() {
    local words=() rest=$COMP_LINE blanks piece value before command="" i
    COMPREPLY=()
    # Readline breaks words at "=" and ":" too, and completes only the last "piece" of them.
    for ((i = 0; i <= COMP_CWORD; i++)); do
        piece=${COMP_WORDS[i]}
        blanks=${rest%%[![:space:]]*}
        rest=${rest#"$blanks"}
        rest=${rest#"$piece"}
        if [[ $i -gt 0 && -z $blanks ]]; then words[-1]+=$piece; else words+=("$piece"); fi
    done
    if [[ $piece != *[!=:@]* ]]; then piece=""; fi
    if ((${#words[@]} < 2)); then return; fi
    value=${words[-1]} before=${words[-2]}
    for i in "${words[@]:1:${#words[@]}-2}"; do
        if [[ $i != -* ]]; then
            command=$i
            break
        fi
    done
    if [[ $value == --*=* ]]; then before=${value%%=*} value=${value#*=}; fi
    case $before in
        --board) _parvela_ask boards; return ;;
        --due) _parvela_offer today tomorrow monday tuesday wednesday thursday friday saturday sunday eow eom; return ;;
        --priority) _parvela_offer low medium high urgent; return ;;
        --today) return ;;
    esac
    case $command in
        "")
            if [[ $value == -* ]]; then
                _parvela_offer --local --demo --background --version --help
            else
                _parvela_offer add parse due boards open complete quick-add link-token unlink doctor
            fi
            ;;
        add) if [[ $value == -* ]]; then _parvela_offer --board --due --priority --json --help; fi ;;
        parse) if [[ $value == -* ]]; then _parvela_offer --today --lines --json --help; fi ;;
        open | complete) if [[ $value == -* ]]; then _parvela_offer --json --help; else _parvela_ask keys; fi ;;
        due | boards | link-token | unlink | doctor) _parvela_offer --json --help ;;
    esac
}

complete -F _parvela parvela

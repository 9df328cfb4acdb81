# Completion of the "parvela" command in fish.

set -l commands add parse due boards open complete quick-add link-token unlink doctor
set -l none "not __fish_seen_subcommand_from $commands"

complete -c parvela -f
complete -c parvela -n $none -l local -d "Use the Parvela service of this machine"
complete -c parvela -n $none -l demo -d "With --local: fill an empty workspace with examples"
complete -c parvela -n $none -l background -d "Start without a window"
complete -c parvela -n $none -l version -d "Show the version and end"
complete -c parvela -s h -l help -d "Show help and end"

complete -c parvela -n $none -a add -d "Add a task from a line of quick add"
complete -c parvela -n $none -a parse -d "Show what quick add makes of a line"
complete -c parvela -n $none -a due -d "Show the open tasks due today"
complete -c parvela -n $none -a boards -d "Show the boards"
complete -c parvela -n $none -a open -d "Open a task in the window"
complete -c parvela -n $none -a complete -d "Mark a task done"
complete -c parvela -n $none -a quick-add -d "Show the quick-add field"
complete -c parvela -n $none -a link-token -d "Save a personal access token"
complete -c parvela -n $none -a unlink -d "Revoke and forget the token"
complete -c parvela -n $none -a doctor -d "Check what Parvela needs"

# Boards and keys come from the program, which answers from its cache where it can.
complete -c parvela -n "__fish_seen_subcommand_from add" -l board -x -a "(parvela words boards 2>/dev/null)" -d Board
complete -c parvela -n "__fish_seen_subcommand_from add" -l due -x -d "Due date" \
    -a "today tomorrow monday tuesday wednesday thursday friday saturday sunday eow eom"
complete -c parvela -n "__fish_seen_subcommand_from add" -l priority -x -a "low medium high urgent" -d Priority
complete -c parvela -n "__fish_seen_subcommand_from parse" -l today -x -d "The date on which the line is typed"
complete -c parvela -n "__fish_seen_subcommand_from parse" -l lines -d "Read lines from standard input"
complete -c parvela -n "__fish_seen_subcommand_from open complete" -a "(parvela words keys 2>/dev/null)"
complete -c parvela -n "__fish_seen_subcommand_from add parse due boards open complete link-token unlink doctor" \
    -l json -d "Show the result as JSON"

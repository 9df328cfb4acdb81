#!/bin/sh
# A day with Parvela, as a script.
#
#   day.sh morning          what is due, and the tasks of every working day
#   day.sh note WORDS...    a thought that must not get lost, whatever the network does
#   day.sh evening          what was not done today goes on for tomorrow's list
#
# Exit status: that of the first command that failed (see docs/scripting.md), else 0.
set -eu

: "${PARVELA:=parvela}"

morning() {
    # The plain text is for people, the JSON for scripts. Scripts compare keys and titles, never the sentences.
    "$PARVELA" due
    due=$("$PARVELA" due --json)
    overdue=$(printf '%s' "$due" | jq --arg today "$(date +%F)" '[.[] | select(.dueDate < $today)] | length')
    if [ "$overdue" -gt 0 ]; then echo "$overdue of them are late."; fi

    # Standing tasks, unless they are there already.
    for title in "Read the inbox" "Water the plants"; do
        if printf '%s' "$due" | jq -e --arg title "$title" 'any(.[]; .title == $title)' >/dev/null; then continue; fi
        "$PARVELA" add "$title" --due today --priority low
    done
}

note() {
    # A line that cannot be sent is kept and added later; that is a success too. "task" is then null.
    answer=$("$PARVELA" add --json -- "$@")
    printf '%s' "$answer" | jq -r 'if .task then "Noted as " + .task.key else .note end'
}

evening() {
    # A pipe would hide the command's exit status from "set -e", so its answer is kept first.
    due=$("$PARVELA" due --json)
    for key in $(printf '%s' "$due" | jq -r '.[] | select(.priority == "low") | .key'); do
        "$PARVELA" complete "$key"
    done
    due=$("$PARVELA" due --json)
    printf '%s' "$due" | jq -r '"\(length) left for tomorrow."'
}

case ${1:-} in
    morning | evening) "$1" ;;
    note) shift; note "$@" ;;
    *) sed -n '3,7s/^# \{0,1\}//p' "$0"; exit 2 ;;
esac

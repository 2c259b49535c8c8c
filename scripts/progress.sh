# shellcheck shell=bash
# The live line of a step on a terminal. Sourced by setup.sh.

# Copies a command's output and shows, in a line that is rewritten in place, how far it is:  watch_progress "name"
# The terminal is descriptor 3. Ctrl-C is the command's business: its end of file ends this too.
watch_progress() {
    trap '' INT
    local name=$1 columns part status line='' latest='' number=0 total=0
    local -A seen=()
    read -r _ columns < <(stty size <&3)
    SECONDS=0
    while draw_progress >&3; IFS= read -rt 1 part; status=$?; [ $status -ne 1 ]; do    # >128: nothing for a second
        line+=$part
        if [ $status -eq 0 ]; then
            printf '%s\n' "$line"
            count_progress
            latest=${line#\[*\] } line=''
        fi
    done
    printf '%s' "$line$part"
    printf '\r\033[K' >&3
}

# Learns from a line of ninja, apt-get or make_set how much there is to do and how much is done.
count_progress() {
    if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
        number=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]}
    elif [[ $line =~ ^([0-9]+)\ upgraded,\ ([0-9]+)\ newly ]]; then
        total=$((BASH_REMATCH[1] + BASH_REMATCH[2]))
    elif [[ $line =~ ^(Get|Unpacking|Setting) ]]; then
        local kind=${BASH_REMATCH[1]}
        number=$((${seen[$kind]:-0} + 1)) seen[$kind]=$number
    fi
}

draw_progress() {
    local text bar=''
    if [ "$number" -gt 0 ] && [ "$total" -ge "$number" ]; then
        printf -v bar '%*s' $((12 * number / total)) ''
        printf -v bar ' [%-12s] %d/%d' "${bar// /#}" "$number" "$total"
    fi
    text="$name: $SECONDS s$bar ${latest//[^[:print:]]/ }"
    printf '\r%s\033[K' "${text:0:${columns:-80} - 3}"    # room for the ^C of a Ctrl-C
}

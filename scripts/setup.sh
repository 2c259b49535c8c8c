# shellcheck shell=bash
# Set-up shared by ./run and ./test: progress, packages, the cached virtual set. Sourced, never run.
#
# Everything kept between two runs lies below $MOVO_CACHE (default ${XDG_CACHE_HOME:-$HOME/.cache}/movo-net);
# what ./run builds lies below build/.

setup_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export MOVO_CACHE=${MOVO_CACHE:-${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/movo-net}

setup_start=${EPOCHREALTIME/[.,]/}
setup_live=no
if [ -t 0 ] && [ -t 1 ] && [ "${TERM:-dumb}" != dumb ] && [ -z "${CI:-}" ]; then
    setup_live=yes
    # shellcheck source=scripts/progress.sh
    . "$setup_root/scripts/progress.sh"
fi
trap 'exit 130' INT    # whatever the command in the foreground makes of Ctrl-C

# Seconds since a moment of EPOCHREALTIME without its point: "12.3".
seconds_since() {
    local tenths=$(((${EPOCHREALTIME/[.,]/} - $1) / 100000))
    echo $((tenths / 10)).$((tenths % 10))
}

# Prints a step's name with the time since the start: "[  12.3 s] name".
step() {
    printf '[%6s s] %s\n' "$(seconds_since "$setup_start")" "$*"
}

# Ends the script with one line that says what is wrong and what to do.
die() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Runs a command as a step, whose output matters only when it fails:  quietly "name of the step" command...
quietly() {
    attempt "$@" || give_up "$1" "When that is mended, start again; what was done until here is kept."
}

# As quietly, but returns the command's status; its output is in setup_output.
attempt() {
    local name=$1 begin=${EPOCHREALTIME/[.,]/} status interrupted=no watch=(cat)
    shift
    if [ $setup_live = yes ]; then watch=(watch_progress "$name"); else step "$name"; fi
    trap interrupted=yes INT    # the live line is erased before this script ends
    { setup_output=$("$@" 2>&1 3>&- | "${watch[@]}"; exit "${PIPESTATUS[0]}"); } 3>&1
    status=$?
    trap 'exit 130' INT
    [ $interrupted = no ] || exit 130
    [ $status -ne 0 ] || step "$name: $(seconds_since "$begin") s"
    return $status
}

# Ends the script after a failed attempt:  give_up "name of the step" "what to do"
give_up() {
    local cause
    tail -n 20 <<< "$setup_output" >&2
    cause=$(grep -m 1 -E '^(E|Err|sudo|virtual set|CMake Error)\b|error: |No space left' <<< "$setup_output") \
        || cause=$(tail -n 1 <<< "$setup_output")
    die "$1 failed: ${cause:-it printed nothing}. $2"
}

# Runs a command with root's rights; ask_for_root comes before, as a password is not asked for under a live line.
as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

ask_for_root() {
    [ "$(id -u)" != 0 ] || return 0
    command -v sudo > /dev/null || die "neither root nor sudo here; as root run: $*"
    sudo -n true 2> /dev/null || sudo -v || die "sudo is not allowed; as root run: $*"
}

apt_get() {
    as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0 "$@"
}

# Installs what is not there yet:  need_packages "what for" package...
need_packages() {
    local reason=$1 package missing=()
    shift
    command -v apt-get > /dev/null \
        || die "this is not a Debian; needed $reason: $*"
    for package; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    echo "Needed $reason: ${missing[*]}"
    ask_for_root "apt-get install ${missing[*]}"
    need_package_lists
    attempt "Installing packages" apt_get install -y --no-install-recommends "${missing[@]}" \
        || give_up "Installing packages" "Is there a network to the package mirror, and room on the disk?"
}

# Fetches the lists of packages, once per run.
need_package_lists() {
    [ -z "${setup_lists_fresh:-}" ] || return 0
    ask_for_root "apt-get update"
    attempt "Fetching the lists of packages" apt_get update \
        || give_up "Fetching the lists of packages" "Is there a network to the package mirror?"
    setup_lists_fresh=yes
}

# Makes the virtual set's root and kernel in the cache; does nothing when they are there and current.
need_virtual_set() {
    local set=$MOVO_CACHE/set stamp
    stamp=$(cat "$setup_root"/virtualset/{make_set,guest/init} | sha256sum)
    mkdir -p "$MOVO_CACHE" 2> /dev/null || die "cannot write to $MOVO_CACHE; MOVO_CACHE=FOLDER names another place"
    exec 9> "$MOVO_CACHE/lock"
    flock -n 9 || { echo "Waiting for another ./run or ./test, which builds the virtual set"; flock 9; }
    if [ "$(cat "$set/stamp" 2> /dev/null)" != "$stamp" ]; then
        build_virtual_set "$set.new"
        echo "$stamp" > "$set.new/stamp"
        rm -rf "$set"
        mv "$set.new" "$set"
    fi
    exec 9>&-
}

build_virtual_set() {
    local make=("Building the virtual set" "$setup_root/virtualset/make_set" "$1")
    echo "Needed to boot the television: about 100 MB of packages, unpacked in $MOVO_CACHE, never installed"
    apt-cache show linux-image-amd64 > /dev/null 2>&1 || need_package_lists
    attempt "${make[@]}" && return
    need_package_lists    # the mirror may have moved on since they were fetched
    attempt "${make[@]}" || give_up "${make[0]}" "Is there a network to the package mirror, and room in $MOVO_CACHE?"
}

# CMake refuses a build folder that was made for a tree elsewhere: this one was moved or copied. One that is older than
# the presets may have another compiler; CMake would take up the new one and lose the flags, the sanitizers among them.
drop_stale_builds() {
    local cache home why
    for cache in "$setup_root"/build/*/CMakeCache.txt; do
        home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache" 2> /dev/null)
        [ -n "$home" ] || continue
        if ! [ "$home" -ef "$setup_root" ]; then
            why="it was made for a tree in $home"
        elif [ "$setup_root/CMakePresets.json" -nt "$cache" ]; then
            why="the presets have changed"
        else
            continue
        fi
        echo "Removing ${cache%/*}: $why"
        rm -rf "${cache%/*}"
    done
}
drop_stale_builds

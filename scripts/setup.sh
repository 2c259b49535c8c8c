# shellcheck shell=bash
# Set-up shared by ./run and ./test: progress, packages, the cached virtual set. Sourced, never run.
#
# Everything kept between two runs lies below $MOVO_CACHE (default ${XDG_CACHE_HOME:-$HOME/.cache}/movo-net);
# what ./run builds lies below build/.

setup_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export MOVO_CACHE=${MOVO_CACHE:-${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/movo-net}

# Prints a step's name with the time since the start: "[  12.3 s] name".
step() {
    local tenths=$(((${EPOCHREALTIME/[.,]/} - setup_start) / 100000))
    printf '[%4d.%d s] %s\n' $((tenths / 10)) $((tenths % 10)) "$*"
}
setup_start=${EPOCHREALTIME/[.,]/}

# Ends the script with one line that says what is wrong and what to do.
die() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Runs a command whose output matters only when it fails:  quietly "what it is for" command...
quietly() {
    local purpose=$1 output status
    shift
    output=$(mktemp)
    if "$@" > "$output" 2>&1; then
        rm -f "$output"
        return
    else
        status=$?
    fi
    tail -n 40 "$output" >&2
    rm -f "$output"
    die "$purpose failed (status $status); its last lines stand above"
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo -n true 2> /dev/null || echo "    sudo may ask for your password" >&2
        sudo "$@"
    fi
}

# apt-get with root's rights and without questions; a failure is told in one line.
apt_quietly() {
    local output
    if ! output=$(as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@" 2>&1); then
        die "apt-get $1 failed; is there a network to the package mirror? $(grep -m 1 -E '^(E:|Err:|sudo:)' <<< "$output")"
    fi
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

    [ "$(id -u)" = 0 ] || command -v sudo > /dev/null \
        || die "neither root nor sudo here; as root run: apt-get install ${missing[*]}   (needed $reason)"
    step "Installing ${missing[*]} ($reason)"
    need_package_lists
    apt_quietly install -y --no-install-recommends "${missing[@]}"
}

# Fetches the lists of packages, once per run.
need_package_lists() {
    [ -z "${setup_lists_fresh:-}" ] || return 0
    apt_quietly update
    setup_lists_fresh=yes
}

# Builds the virtual set's root and kernel in the cache; does nothing when they are there and current.
need_virtual_set() {
    local set=$MOVO_CACHE/set stamp
    stamp=$(cat "$setup_root"/virtualset/{make_set,guest/init} | sha256sum)
    [ "$(cat "$set/stamp" 2> /dev/null)" != "$stamp" ] || return 0

    step "Building the virtual set in $MOVO_CACHE (about 100 MB of packages, unpacked there, never installed)"
    mkdir -p "$MOVO_CACHE" 2> /dev/null || die "cannot write to $MOVO_CACHE; MOVO_CACHE=FOLDER names another place"
    apt-cache show linux-image-amd64 > /dev/null 2>&1 || need_package_lists
    (
        flock 9
        if ! "$setup_root/virtualset/make_set" "$set.new" 2> "$MOVO_CACHE/make_set.log"; then
            need_package_lists    # the mirror may have moved on since they were fetched
            "$setup_root/virtualset/make_set" "$set.new" 2> "$MOVO_CACHE/make_set.log" \
                || die "$(tail -n 1 "$MOVO_CACHE/make_set.log")"
        fi
        echo "$stamp" > "$set.new/stamp"
        rm -rf "$set" "$MOVO_CACHE/make_set.log"
        mv "$set.new" "$set"
    ) 9> "$MOVO_CACHE/lock" || exit
}

# Shell functions of ./run and ./test: the build folder and the progress display. To be sourced.

# The physical folder of the checkout, whatever link it was called through.
top=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.." && pwd -P)

# The folder for all builds: KD_BUILD_DIR, or build/ in the checkout. If the checkout cannot be written, it is a folder for
# this checkout among the user's caches.
buildRoot()
{
    if [ -n "${KD_BUILD_DIR:-}" ]; then
        mkdir -p "$KD_BUILD_DIR" && (cd "$KD_BUILD_DIR" && pwd -P)
    elif mkdir -p "$top/build" 2>/dev/null && [ -w "$top/build" ]; then
        echo "$top/build"
    else
        echo "${XDG_CACHE_HOME:-$HOME/.cache}/kd_db/$(printf %s "$top" | cksum | cut -d' ' -f1)"
    fi
}

# useFolder FOLDER: creates and locks it until this process ends. A folder that was configured for another source
# folder, or was moved, is emptied first, because CMake cannot use it.
useFolder()
{
    mkdir -p "$1"
    exec 9>"$1.lock"
    flock 9
    local cache=$1/CMakeCache.txt
    if [ -f "$cache" ] && ! { grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$top" "$cache" &&
        grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$1" "$cache"; }; then
        rm -rf "$1"
        mkdir -p "$1"
    fi
}

# showCounter DONE ALL WHAT: on a terminal a line that is overwritten, otherwise a line every 15 seconds.
counterShown=$SECONDS
showCounter()
{
    if [ -t 2 ]; then
        printf '\r\033[K%s: %s of %s' "$3" "$1" "$2" >&2
    elif [ $((SECONDS - counterShown)) -ge 15 ]; then
        counterShown=$SECONDS
        echo "$3: $1 of $2" >&2
    fi
}

clearCounter()
{
    [ ! -t 2 ] || printf '\r\033[K' >&2
}

# buildIn FOLDER COMMAND...: runs a build command with its output in FOLDER/log. If it fails, shows the failed step.
buildIn()
{
    local log=$1/log status=0 line
    shift
    "$@" 2>&1 </dev/null 9>&- | tee "$log" | while IFS= read -r line; do
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
            showCounter "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" "Building"
        fi
    done || status=1
    clearCounter
    if [ $status -ne 0 ]; then
        # The lines from the first failed step on, without successful steps.
        if grep -q '^FAILED: ' "$log"; then
            sed -n '/^FAILED: /,$p' "$log" | grep -vE '^\[[0-9]+/[0-9]+\] ' >&2
        else
            cat "$log" >&2
        fi
        echo "The build failed; its log is $log" >&2
    fi
    return $status
}

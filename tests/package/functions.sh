# For the scripts of this folder. SCRATCH is the folder that a script works in, which is empty at first.
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
rm -rf "$SCRATCH"
mkdir -p "$SCRATCH"
cd "$SCRATCH"

fail()
{
    echo "$*" >&2
    exit 1
}

# quietly COMMAND...: shows the command's output only if it fails.
quietly()
{
    "$@" >"$SCRATCH/command.log" 2>&1 || { cat "$SCRATCH/command.log" >&2; fail "failed: $*"; }
}

# expectOutput PROGRAM: the output of examples/consumer, byte for byte.
expectOutput()
{
    local expected=$'item price\nsaw 8.75\nhammer 12.5\nkd_lib 1.1\n.'
    local output
    output=$("$1" </dev/null && echo .) || fail "$1 failed"
    [ "$output" = "$expected" ] || fail "$1 printed: $output"
}

# makePackages: makes the Debian packages and sets `made` to their build tree. If they were made before, only changed
# files are compiled.
makePackages()
{
    made=$top/build/packages
    [ -w "$top" ] || made=$SCRATCH/made
    quietly "$top/tools/dev/packages" "$made"
}

# installLibraries BUILD_TREE PREFIX: the files that a client and the program need, without the program.
installLibraries()
{
    local component
    for component in kd_udf kd_db kd_exchange kd_postgresql kd_mariadb development; do
        quietly cmake --install "$1" --prefix "$2" --component $component
    done
}

# consume PREFIX shared|static: builds and runs examples/consumer against an installed tree, by CMake and by
# pkg-config.
consume()
{
    local prefix=$1 kind=$2 make_flags=()
    [ "$kind" = shared ] || make_flags=(STATIC=1)

    rm -rf by-cmake by-pkg-config
    quietly cmake -S "$top/examples/consumer" -B by-cmake -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
    quietly cmake --build by-cmake
    expectOutput by-cmake/consumer

    cp -r "$top/examples/consumer" by-pkg-config
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name kd_db.pc)") quietly make -C by-pkg-config "${make_flags[@]}"
    LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name 'libkd_db.*' -print -quit)") expectOutput by-pkg-config/consumer

    local program
    for program in by-cmake/consumer by-pkg-config/consumer; do
        if [ "$kind" = shared ]; then
            grep -q 'NEEDED.*libkd_db\.so\.1\]' <<<"$(readelf -d $program)" ||
                fail "$program: not linked to libkd_db.so.1"
        else
            ! grep -q 'NEEDED.*libkd_' <<<"$(readelf -d $program)" || fail "$program: needs a shared library"
        fi
    done
}

# expectOfServers PATTERN PROGRAM: the program's messages about ports without a server.
expectOfServers()
{
    local scheme reported
    for scheme in postgresql mariadb; do
        ! reported=$("$2" query $scheme://127.0.0.1:1/shop "SELECT 1" 2>&1 </dev/null) || fail "a server is there"
        [[ $reported =~ $1 ]] || fail "kd_db reported: $reported"
    done
}

#!/bin/sh
# Builds a preset, and configures it first when it never was or when what configuring looks at has
# changed: the installed packages, the programs on the path, the presets, the compiler's variables.
# usage: cmake/build.sh [--without-tests] PRESET [TARGET...]
# --without-tests: the tests may be left out where something that they want is missing.
set -eu
cd "$(dirname "$0")/.."
tests=required
if [ "${1:-}" = --without-tests ]; then
    tests=optional
    shift
fi
preset=$1
shift
tree=build/$preset
log=$(mktemp)
trap 'rm -f "$log" "$log.status"' EXIT

surroundings() {
    {
        dpkg-query -W -f '${Package} ${Version} ${db:Status-Status}\n' || true
        echo "$PATH:/usr/local/include:/usr/local/lib" | tr ':' '\n' | xargs stat -L -c '%n %Y' || true
        env | grep -E '^(CC|CXX|C(XX)?FLAGS|LDFLAGS|CMAKE_[A-Z_]*|PKG_CONFIG_PATH)=' | sort
        cat CMakePresets.json
    } 2>/dev/null | cksum
}
configure() {
    printf '%s: configuring\n' "$preset" >&2
    cmake --fresh --preset "$preset" "$@" >"$log" 2>&1
}

# Ninja's lines on standard error: where it stands, now and then or on a line that is written over, and
# whatever is not about that.
progress() {
    told=0
    start=""
    end='\n'
    [ ! -t 2 ] || start='\r\033[K' end=""
    while IFS= read -r line; do
        case $line in
        "ninja: no work to do." | "-- "*) ;;
        "$preset: building, "*)
            seconds=${line##* after }
            seconds=${seconds%%.*}
            if [ -z "$start" ] && [ $((seconds - told)) -lt 10 ]; then continue; fi
            told=$seconds
            printf '%b%s%b' "$start" "${line%%.[0-9]* s:*} s" "$end" >&2
            ;;
        *) printf '%b%s\n' "$start" "$line" >&2 ;;
        esac
    done
    printf '%b' "$start" >&2
}
build() {
    { NINJA_STATUS="$preset: building, %f of %t steps after %e s:" \
        cmake --build --preset "$preset" "$@" 2>&1 && echo built >"$log.status"; } | progress
    [ -s "$log.status" ]
}

wanted="$(surroundings)"
has=$(cat "$tree/configured_for" 2>/dev/null || true)
if [ "$has" != "$wanted, tests" ] && { [ $tests = required ] || [ "$has" != "$wanted, no tests" ]; }; then
    rm -f "$tree/configured_for"
    if configure; then
        has="$wanted, tests"
    elif [ $tests = optional ] && configure -DBUILD_TESTING=OFF; then
        has="$wanted, no tests"
    else
        cat "$log" >&2
        echo "$preset: cannot be configured" >&2
        exit 1
    fi
    echo "$has" >"$tree/configured_for"
fi
if [ $# -gt 0 ]; then
    set -- --target "$@"
fi
build "$@" || { echo "$preset: cannot be built" >&2; exit 1; }

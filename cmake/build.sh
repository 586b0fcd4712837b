#!/bin/sh
# Configures a preset when it never was and builds it; silent unless something is wrong.
# usage: cmake/build.sh PRESET [TARGET...]
set -eu
cd "$(dirname "$0")/.."
preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT

quietly() {
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        echo "build of preset '$preset' failed: $*" >&2
        exit 1
    fi
}

[ -f "build/$preset/build.ninja" ] || quietly cmake --preset "$preset"
if [ $# -gt 0 ]; then
    quietly cmake --build --preset "$preset" --target "$@"
else
    quietly cmake --build --preset "$preset"
fi

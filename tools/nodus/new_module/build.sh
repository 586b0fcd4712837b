#!/bin/sh
# Builds targets in build/. A prefix that the system does not know is given as CMAKE_PREFIX_PATH.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake -S "$here" -B "$here/build" && cmake --build "$here/build" --target "$@"; } >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}

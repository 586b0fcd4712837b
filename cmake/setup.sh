#!/bin/sh
# Installs the Debian packages that the project's commands need and that are not there yet.
# usage: cmake/setup.sh run|test|benchmark
set -eu

run="g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libfmt-dev libtbb-dev libdeflate-dev"
test="$run googletest libpng-dev libmpfr-dev musl-dev qemu-user clang clang-format clang-tidy
    libclang-rt-14-dev binutils valgrind pkg-config dpkg-dev file lintian doxygen graphviz zsh man-db
    parallel openmpi-bin python3 python3-numpy python3-selenium chromium chromium-driver"
benchmark="$run valgrind python3 python3-matplotlib time
    libbenchmark-dev libglm-dev libeigen3-dev libimath-dev libmpfr-dev libstb-dev"

case "${1:-}" in
run) wanted=$run ;;
test) wanted=$test ;;
benchmark) wanted=$benchmark ;;
*) echo "usage: cmake/setup.sh run|test|benchmark" >&2; exit 2 ;;
esac

missing=""
for package in $wanted; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if ! command -v apt-get >/dev/null; then
    echo "setup: this is no Debian machine; please install what these packages hold:$missing" >&2
    exit 1
fi
as_root=""
if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: installing packages needs root or sudo; missing:$missing" >&2
        exit 1
    fi
    as_root=sudo
fi
echo "setup: installing$missing" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# shellcheck disable=SC2086 # one word a package is what is wanted
if ! { $as_root apt-get update &&
       $as_root env DEBIAN_FRONTEND=noninteractive \
           apt-get install -y --no-install-recommends $missing; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "setup: the packages could not be installed:$missing" >&2
    exit 1
fi

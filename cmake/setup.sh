#!/bin/sh
# Installs the Debian packages that the project's commands need and that are not there yet.
# usage: cmake/setup.sh run|test|benchmark|aarch64|riscv64|wasm...
# The last three are the presets for other processors. With --check before them it installs nothing:
# the exit status is 1 when something is missing.
set -eu

run="g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libfmt-dev libtbb-dev libdeflate-dev zlib1g-dev
    libzip-dev"
test="$run googletest libgmp-dev musl-dev qemu-user clang clang-format clang-tidy
    libclang-rt-14-dev binutils valgrind pkg-config dpkg-dev file lintian doxygen graphviz librsvg2-bin
    zsh man-db parallel openmpi-bin python3 python3-numpy python3-pil python3-selenium chromium
    chromium-driver pybind11-dev python3-dev python3-pytest python3-hypothesis python3-pandas python3-matplotlib
    python3-scipy python3-tqdm python3-dask python3-distributed mypy python3-jsonschema"
benchmark="$run valgrind python3 python3-matplotlib time
    pybind11-dev python3-dev python3-numpy python3-numexpr python3-scipy python3-pandas
    libbenchmark-dev libfast-float-dev libglm-dev libeigen3-dev libimath-dev libmpfr-dev libstb-dev"

crossing="cmake ninja-build googletest nlohmann-json3-dev libfmt-dev dpkg-dev"
aarch64="$test g++-aarch64-linux-gnu libfmt-dev:arm64 libdeflate-dev:arm64 libtbb-dev:arm64
    libzip-dev:arm64 zlib1g-dev:arm64"
riscv64="$crossing g++-riscv64-linux-gnu qemu-user"
wasm="$crossing emscripten libfast-float-dev"
# Who has node from elsewhere keeps it; that one brings npm along.
command -v node >/dev/null || wasm="$wasm nodejs"
command -v npm >/dev/null || wasm="$wasm npm" test="$test npm"

wanted=""
# What a portable build is made of, which on other processors is every build.
wants_musl=""
if [ "$(uname -m)" != x86_64 ]; then
    wants_musl=yes
    wanted=dpkg-dev
fi
only_check=""
if [ "${1:-}" = --check ]; then
    only_check=yes
    shift
fi
[ $# -gt 0 ] || set -- none
for set in "$@"; do
    case $set in
    run) wanted="$wanted $run" ;;
    test) wanted="$wanted $test" ;;
    benchmark) wanted="$wanted $benchmark" ;;
    aarch64) wanted="$wanted $aarch64" wants_musl=yes ;;
    riscv64) wanted="$wanted $riscv64" wants_musl=yes ;;
    wasm) wanted="$wanted $wasm" wants_musl=yes ;;
    *) echo "usage: cmake/setup.sh run|test|benchmark|aarch64|riscv64|wasm..." >&2; exit 2 ;;
    esac
done
cd "$(dirname "$0")/.."
musl=build/sources/musl

missing=""
for package in $(printf '%s\n' $wanted | sort -u); do
    # A line for each architecture that has it.
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
        missing="$missing $package"
done
packages=$missing
[ -z "$wants_musl" ] || [ -e $musl ] || missing="$missing musl's source"
[ -n "$missing" ] || exit 0
[ -z "$only_check" ] || exit 1

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
scratch=$(mktemp -d)
trap 'rm -rf "$log" "$scratch"' EXIT

install_packages() {
    [ -n "$packages" ] || return 0
    case $packages in
    *:arm64*) $as_root dpkg --add-architecture arm64 || return 1 ;;
    esac
    # shellcheck disable=SC2086 # one word a package is what is wanted
    $as_root apt-get update &&
        $as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends $packages
}

# Debian's source package, from where this machine takes its packages. Other users' lists stay as they
# are: it has lists of its own.
fetch_musl() {
    [ -n "$wants_musl" ] && [ ! -e $musl ] || return 0
    # shellcheck disable=SC2016 # apt-get reads it
    apt-get indextargets --format 'deb-src $(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Created-By: Packages' 'Label: Debian' | sort -u >"$scratch/sources.list"
    mkdir -p "$scratch/lists/partial" "$(dirname $musl)"
    own="-o Dir::Etc::sourcelist=$scratch/sources.list -o Dir::Etc::sourceparts=/dev/null
        -o Dir::State::lists=$scratch/lists -o APT::Sandbox::User= -o Dir::Cache::srcpkgcache=
        -o Dir::Cache::pkgcache="
    # shellcheck disable=SC2086 # options
    apt-get $own update && (cd "$scratch" && apt-get $own source --download-only musl) &&
        dpkg-source --no-check -x "$scratch"/musl_*.dsc "$scratch/musl" && mv "$scratch/musl" $musl
}

if ! { install_packages && fetch_musl; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "setup: could not be installed:$missing" >&2
    exit 1
fi

#!/bin/sh
# Installs into a scratch prefix, moves it, and uses it from there: a host by find_package, a host by
# pkg-config, every public header alone, the command, and the Python package.
# usage: install_test.sh BUILD-DIRECTORY VERSION [with-tools [with-python]]
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
version=$2
cxx=${CXX:-g++}
expect() { # expect WHAT EXPECTED GOT
    [ "$2" = "$3" ] || fail "$1: expected '$2', got '$3'"
}

install_and_move "$1"
libdir=$(dirname "$(find "$prefix" -name libcompute_runtime.so)")

module=$(find "$prefix" -name libnodusmath.so)
expect "where the module finds the runtime" "$libdir/libcompute_runtime.so" \
    "$(realpath "$(ldd "$module" | sed -n 's/.*libcompute_runtime.so => \(.*\) (.*/\1/p')")"

build_cmake_host() {
    cmake -G Ninja -S "$here/cmake_host" -B "$scratch/cmake_host" \
        -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" &&
        cmake --build "$scratch/cmake_host"
}
quietly "a host that uses find_package does not build" build_cmake_host
expect "the find_package host" "11 22 33, catalogue found" "$("$scratch/cmake_host/host")"

PKG_CONFIG_PATH=$libdir/pkgconfig
export PKG_CONFIG_PATH
expect "pkg-config's version" "$version" "$(pkg-config --modversion nodusmath)"
# The host of docs/host_and_module.md, by the commands that stand there; the prefix is another one.
blocks host_and_module.md cpp host && mv "$scratch/host.1" "$scratch/host.cpp"
blocks host_and_module.md sh host
sed "s|^prefix=[^ ]*|prefix=$prefix|; s|\$prefix/lib|$libdir|; s|g++|$cxx|" "$scratch/host.1" >"$scratch/commands.sh"
expect "the host of docs/host_and_module.md" "10 20 30" "$(cd "$scratch" && sh -eu commands.sh)"

blocks ../README.md cpp host && mv "$scratch/host.1" "$scratch/host.cpp"
blocks ../README.md text answer
# shellcheck disable=SC2046 # one word a flag is what is wanted
"$cxx" -std=c++20 -Wall -Wextra -Werror "$scratch/host.cpp" -o "$scratch/host" \
    $(pkg-config --cflags --libs compute_runtime) -Wl,-rpath,"$libdir"
expect "the pkg-config host" "$(cat "$scratch/answer.1")" \
    "$("$scratch/host" "$(pkg-config --variable=module nodusmath)")"

for header in $(cd "$prefix/include" && find . -name '*.h' | sed 's|^\./||'); do
    # shellcheck disable=SC2046
    echo "#include <$header>" | "$cxx" -std=c++20 -Wall -Wextra -Wpedantic -Werror -x c++ \
        -fsyntax-only $(pkg-config --cflags nodusmath) - || fail "<$header> does not stand alone"
done

# Programs for other processors have the same bits: no product may be fused with a sum.
products() { # products NAME OPTION...
    name=$1
    shift
    # shellcheck disable=SC2046
    "$cxx" -std=c++20 -O2 "$@" "$here/products.cpp" -o "$scratch/$name" $(pkg-config --cflags nodusmath)
}
products plain
for options in "-mfma -mavx2" "-mfma -ffp-contract=fast" "-mavx512f -ffp-contract=fast"; do
    # shellcheck disable=SC2086
    products newer $options
    ! objdump -d "$scratch/newer" | grep -E 'vf(n|)m(add|sub)' || fail "$options fuses products"
done
products native -march=native
expect "bits of a program for this processor" "$("$scratch/plain")" "$("$scratch/native")"
for option in -ffast-math -ffinite-math-only; do
    ! products wrong $option 2>/dev/null || fail "$option is not refused"
done

if [ "${3:-}" = with-tools ]; then
    nodus=$prefix/bin/nodus
    expect "the command's version" "nodus $version" "$("$nodus" --version)"
    [ -n "$(cd / && "$nodus" list)" ] || fail "the installed command lists no kernels"
    grep -q 'id="Slerp"' "$prefix/share/doc/nodusmath/reference/index.html" ||
        fail "there is no node reference"
    grep -q '"Abs_Float3"' "$prefix/share/nodus/graph.schema.json" || fail "there is no schema"
    cd "$prefix"/share/nodus/examples
    evaluates() { # alone, as a picture, or with one of the tables beside it
        "$nodus" eval "$1" --frames 0:1 && return
        "$nodus" eval "$1" --image "$scratch/picture.png" --size 8x8 && return
        for table in *.csv; do
            "$nodus" eval "$1" --data "$table" && return
        done
        return 1
    }
    for graph in *.json; do
        quietly "the installed sample graph $graph does not evaluate" evaluates "$graph"
    done
fi
[ "${4:-}" != with-python ] || python_adds "$prefix"
echo "the installed tree works where it was moved to"

#!/bin/sh
# Installs the transform library alone into a prefix, moves it, and builds a program with it by CMake
# and by pkg-config, for other processors too.
# usage: qvr_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
build=$1
cxx=${CXX:-g++}

cmake --install "$build" --prefix "$scratch/built" --component qvr >/dev/null
mv "$scratch/built" "$scratch/moved"
prefix=$scratch/moved
others=$(cd "$prefix" && find . -type f | grep -v qvr || true)
[ -z "$others" ] || fail "not of the library alone: $others"
if grep -rlF -e "$scratch/built" -e "$build" "$prefix"; then
    fail "these files know where they were built or first installed"
fi

mkdir "$scratch/program"
cat >"$scratch/program/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(program LANGUAGES CXX)
find_package(qvr 1.0 REQUIRED)
add_executable(program main.cpp)
target_link_libraries(program PRIVATE qvr::qvr)
END
cat >"$scratch/program/main.cpp" <<END
#include <qvr/eigen3.h>
#include <qvr/roots.h>

#include <cstdio>

int main()
{
    for (double const root : qvr::solveCubic(1.0, -2.0, -3.0, 0.5))
        std::printf("%a ", root);
    for (double const value : qvr::eigensystem(qvr::SymmetricMatrix3<double>{1, 2, 3, 4, 5, 6}).values)
        std::printf("%a ", value);
}
END
build_by_cmake() {
    cmake -G Ninja -S "$scratch/program" -B "$scratch/cmake" -DCMAKE_CXX_COMPILER="$cxx" \
        -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$scratch/cmake"
}
quietly "a program that uses find_package does not build" build_by_cmake
expected=$("$scratch/cmake/program")
[ "$(echo "$expected" | wc -w)" -eq 6 ] || fail "the program prints '$expected'"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name qvr.pc)")
export PKG_CONFIG_PATH
for options in -O0 "-O3 -march=native -ffp-contract=fast" "-O2 -D_GLIBCXX_USE_CXX11_ABI=0"; do
    # shellcheck disable=SC2046,SC2086
    "$cxx" -std=c++20 $options "$scratch/program/main.cpp" -o "$scratch/program/main" \
        $(pkg-config --cflags --libs qvr)
    [ "$("$scratch/program/main")" = "$expected" ] || fail "other bits with $options"
done

#!/bin/sh
# Installs the transform library alone into a prefix, moves it, and builds with it: examples/arm by
# CMake, a program by pkg-config, for other processors too.
# usage: qvr_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
cxx=${CXX:-g++}

install_and_move "$1" --component qvr
others=$(cd "$prefix" && find . -type f | grep -v qvr || true)
[ -z "$others" ] || fail "not of the library alone: $others"

build_arm() {
    cmake -G Ninja -S "$here/../../examples/arm" -B "$scratch/arm" -DCMAKE_CXX_COMPILER="$cxx" \
        -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$scratch/arm"
}
quietly "examples/arm does not build" build_arm
last=$("$scratch/arm/arm" | tail -n 1)
wanted="frame 6: hand at (-0.097,  0.155, -0.183), shoulder 1.324 rad past its cone"
[ "$last" = "$wanted" ] || fail "the arm ends with '$last'"

cat >"$scratch/main.cpp" <<END
#include <qvr/eigen3.h>
#include <qvr/roots.h>
#include <qvr/rotation_limits.h>

#include <cstdio>

int main()
{
    for (double const root : qvr::solveCubic(1.0, -2.0, -3.0, 0.5))
        std::printf("%a ", root);
    for (double const value : qvr::eigensystem(qvr::SymmetricMatrix3<double>{1, 2, 3, 4, 5, 6}).values)
        std::printf("%a ", value);
    qvr::Quatd const q = qvr::TwistSwingLimits{{-1, 1}, 1, 0.5}.nearest({1, 2, 3, 4});
    std::printf("%a %a %a %a", q.x, q.y, q.z, q.w);
}
END
expected=""
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name qvr.pc)")
export PKG_CONFIG_PATH
for options in -O0 "-O3 -march=native -ffp-contract=fast" "-O2 -D_GLIBCXX_USE_CXX11_ABI=0"; do
    # shellcheck disable=SC2046,SC2086
    "$cxx" -std=c++20 $options "$scratch/main.cpp" -o "$scratch/main" \
        $(pkg-config --cflags --libs qvr)
    bits=$("$scratch/main")
    [ "$(echo "$bits" | wc -w)" -eq 10 ] || fail "the program prints '$bits'"
    [ "${expected:=$bits}" = "$bits" ] || fail "other bits with $options"
done

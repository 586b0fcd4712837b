#!/bin/sh
# Builds the hosts of examples/hosts against an installed and moved prefix and runs them; the written
# headers by themselves, in both languages.
# usage: hosts_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
install_and_move "$1"
module=$(find "$prefix" -name libnodusmath.so)

build_hosts() {
    cmake -G Ninja -S "$prefix/share/nodus/examples/hosts" -B "$scratch/hosts" \
        -DCMAKE_CXX_COMPILER="${CXX:-g++}" -DCMAKE_C_COMPILER="${CC:-cc}" \
        -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$scratch/hosts"
}
quietly "examples/hosts does not build" build_hosts
prints "11 22 33
no text" "$scratch/hosts/host_c" "$module"
drawn=$(for frame in 1 2 3; do
    "$prefix/bin/nodus" call RandomGenerator_Float seed=7 range=2 --frame $frame
done | sed 's/result = //' | xargs printf 'drawn %.6f\n')
prints "$drawn" "$scratch/hosts/host_cpp"
prints "frame 7: at (1.000000,2.000000,3.000000)
1.0 2.0 3.0" python3 "$prefix/share/nodus/examples/hosts/host.py" "$module"

# Blocks that lie otherwise than the module's own do not compile: every offset is held.
for change in 's/NodusQuaternion rotation/NodusColor rotation/' 's/alignas(16) NodusFloat3 vector/&, hole/'; do
    sed "$change" "$prefix/include/nodusmath/blocks.h" >"$scratch/blocks.h"
    cmp -s "$prefix/include/nodusmath/blocks.h" "$scratch/blocks.h" && fail "$change changes nothing"
    ! "${CC:-cc}" -std=c11 -fsyntax-only -I "$prefix/include" "$scratch/blocks.h" 2>"$scratch/log" ||
        fail "blocks that lie otherwise compile: $change"
done
cat >"$scratch/standard.c" <<END
#include <nodus/runtime.h>
#include <nodusmath/blocks.h>
NodusTransformPositionWithTQS_In placed = NodusTransformPositionWithTQS_In_STANDARD;
END
"${CC:-cc}" -std=c11 -Wall -Wextra -pedantic -Werror -fsyntax-only -I "$prefix/include" \
    "$scratch/standard.c" || fail "the headers for C do not compile"

#!/bin/sh
# The documentation builds without a warning (links that lead nowhere are warnings), and its examples
# work.
# usage: docs_test.sh BUILD-DIRECTORY [with-tools]
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
build=$1
source=$here/../..
cxx=${CXX:-g++}
compile() {
    "$cxx" -x c++ -std=c++20 -Wall -Wextra -D_GLIBCXX_USE_CXX11_ABI=0 \
        -I"$source/runtime/include" -I"$source/modules" -I"$source/modules/nodusmath" \
        -I"$build/modules/nodusmath/kernel_list" "$@"
}

blocks block_layout.md cpp layout
{
    echo '#include <nodusmath/ports.h>'
    cat "$scratch/layout.1"
} >"$scratch/layout.cpp"
compile -Werror -fsyntax-only "$scratch/layout.cpp" || fail "the code of docs/block_layout.md"

# What depends on the machine is named where the guarantees are.
families=$(awk -F '"' '/^ *"name":/ { family = $4 } /"dependsOn"/ { print family }' \
    "$source/modules/nodusmath/nodusmath.json")
[ "$(echo "$families" | wc -l)" -gt 10 ] || fail "the catalogue has few dependsOn: $families"
for family in $families; do
    grep -q "\`$family\`" "$source/docs/guarantees.md" || fail "docs/guarantees.md forgets $family"
done

if [ "${2:-}" = with-tools ]; then
    blocks graph_file.md json graph
    mv "$scratch/graph.1" "$scratch/turn.json"
    lines=$("$build/bin/nodus" eval "$scratch/turn.json" --frames 0:2 | wc -l)
    [ "$lines" -eq 4 ] || fail "the graph of docs/graph_file.md gives $lines lines, not 4"
fi

quietly "doxygen warns" cmake --build "$build" --target docs
[ -f "$build/docs/html/index.html" ] || fail "doxygen wrote no index"

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

# Every graph of the page is evaluated, with the options that stand before it, or saved for the others.
if [ "${2:-}" = with-tools ]; then
    page=$source/docs/graph_file.md
    blocks graph_file.md json graph
    printf 'x,y\n1,2\n4,6\n4,6\n' >"$scratch/walk.csv"
    awk '/^<!-- (evaluated|saved) by the documentation test/ {
             sub(/^<!-- /, ""); sub(/ *-->$/, ""); how = $0 }
         $0 == "```json" { print (how == "" ? "forgotten" : how); how = "" }' "$page" >"$scratch/how"
    count=0
    while read -r how; do
        count=$((count + 1))
        case $how in
        saved*) mv "$scratch/graph.$count" "$scratch/${how##* }" ;;
        evaluated*:*) options=${how#*:} ;;
        evaluated*) options="--frames 0:2" ;;
        *) fail "graph $count of docs/graph_file.md has no word on how it is tested" ;;
        esac
        case $how in saved*) continue ;; esac
        # shellcheck disable=SC2086 # one word an option is what is wanted
        (cd "$scratch" && mv "graph.$count" "graph$count.json" &&
            "$build/bin/nodus" eval "graph$count.json" $options >"results.$count") ||
            fail "graph $count of docs/graph_file.md"
    done <"$scratch/how"
    [ "$count" -ge 6 ] || fail "docs/graph_file.md has $count graphs"
    [ "$(wc -l <"$scratch/results.1")" -eq 4 ] || fail "the first graph of docs/graph_file.md"
    # What the page says of it: a path of 5 units in the second frame.
    grep -q '^1,5,' "$scratch/results.2" || fail "the speed of docs/graph_file.md"
fi

quietly "doxygen warns" cmake --build "$build" --target docs
[ -f "$build/docs/html/index.html" ] || fail "doxygen wrote no index"

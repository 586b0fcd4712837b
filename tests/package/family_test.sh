#!/bin/sh
# The family of docs/adding_a_family.md, added to a copy of the tree in the three places that the page
# names: the tables are renewed, and everything passes.
# usage: family_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
tree=$scratch/tree
blocks adding_a_family.md cpp mix
blocks adding_a_family.md json entry
blocks adding_a_family.md text rows
mkdir "$tree"
(cd "$here/../.." && tar -c --exclude=./build --exclude=./.git .) | tar -x -C "$tree"
cd "$tree"

cp "$scratch/mix.1" modules/nodusmath/Mix.cpp
add_family modules/nodusmath/nodusmath.json "$scratch/entry.1"
cat "$scratch/rows.1" >>tests/nodusmath/rows/arithmetic.txt

quietly "the tables cannot be renewed" tests/renew
# What a row is about; its number may be another one.
names() {
    sed 's/  *[0-9.]*$//' "$1" | LC_ALL=C sort -u
}
for table in benchmarks/instructions.txt tests/contract/contract.txt tests/digests/portable.txt; do
    names "$here/../../$table" >"$scratch/before"
    names $table >"$scratch/after"
    LC_ALL=C comm -13 "$scratch/before" "$scratch/after" | grep -q Mix || fail "$table has nothing of Mix"
    # What stands for the whole module differs.
    lost=$(LC_ALL=C comm -23 "$scratch/before" "$scratch/after" | grep -v '^all ' || true)
    [ -z "$lost" ] || fail "$table has lost $lost"
done
quietly "the tree with Mix does not build" cmake/build.sh release
# This test and its neighbours build trees of their own.
quietly "the tests with Mix fail" ctest --preset release --label-exclude package
[ "$(build/release/bin/nodus call Mix_Float a=1 b=2 t=3)" = "result = 4" ] || fail "Mix is not 4"

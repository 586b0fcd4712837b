#!/bin/sh
# nodus new-module: the project that it writes, built against an installed and moved prefix and tested;
# the node of docs/own_module.md added to it; and mistakes that have to be found.
# usage: module_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
install_and_move "$1"
CMAKE_PREFIX_PATH=$prefix
export CMAKE_PREFIX_PATH
nodus=$prefix/bin/nodus
cd "$scratch"

"$nodus" new-module own_tools >/dev/null
! grep -rn '@[Nn]ame@' own_tools || fail "these places of the templates are not filled"
for name in own_tools '' 1st a-b ../a nodusmath; do
    ! "$nodus" new-module "$name" 2>"$scratch/log" || fail "a module may be called '$name'"
    [ "$(wc -l <"$scratch/log")" = 1 ] || fail "'$name' is not told in one line: $(cat "$scratch/log")"
done

finds() { # finds WHAT-IS-TOLD MISTAKE
    "$scratch/own_tools/test" >"$scratch/log" 2>&1 && fail "$2 passes"
    grep -qE "$1" "$scratch/log" || {
        cat "$scratch/log" >&2
        fail "$2 is not told as $1"
    }
}

# The commands of the page, then its third node in the places that it names.
quietly "a new module fails its tests" own_tools/test
prints "result = 1.25" own_tools/run call OwnToolsMix_Float a=1 b=2 t=0.25
prints "result = 3" own_tools/run call Add_Float a=1 b=2
blocks own_module.md cpp half
blocks own_module.md json half_entry
blocks own_module.md text half_rows
cd own_tools
cp "$scratch/half.1" half.cpp
sed -i 's/SOURCES own_tools.cpp/& half.cpp/' CMakeLists.txt
add_family own_tools.json "$scratch/half_entry.1"
finds '^OwnToolsHalf_Double: has no row' "a node without a row"
cat "$scratch/half_rows.1" >>rows/own_tools.txt
quietly "the module with a third node fails its tests" ./test
prints "result = 0.75" ./run call OwnToolsHalf_Double value=1.5
grep -q 'id="OwnToolsHalf"' build/own_tools.html || fail "the reference does not have the third node"

mistake() { # mistake FILE CHANGE WHAT-IS-TOLD
    cp "$1" "$scratch/right"
    sed -i "$2" "$1"
    ! cmp -s "$1" "$scratch/right" || fail "$2 changes nothing"
    finds "$3" "$2 in $1"
    cp "$scratch/right" "$1"
}
mistake own_tools.cpp 's/a \* (1 - t)/a * t/' 'own_tools.txt:2: OwnToolsMix_Float .* should be 2'
mistake own_tools.cpp 's/a.y, b.y, t/a.y, b.x, t/' 'own_tools.txt:3: OwnToolsMix_Float3 .* should be 30'
mistake half.cpp 's/Half_Double/Halve_Double/' 'NodusOwnToolsHalve_Double_Solve.*(declaration|prototype)'
mistake half.cpp 's/^void NodusOwnToolsHalf.*//' 'undefined reference|undefined symbol|unused'
mistake own_tools.json 's/"types": \["Double"\]/"types": ["Double", "Float"]/' 'undefined reference|undefined symbol'
mistake own_tools.json '0,/"type": "T"/s//"type": "Int32"/' 'the catalogue has Int32, Float, Float -> Float, the function Float'
mistake rows/own_tools.txt 's/= 4 /= 5 /' 'is 4, should be 5'
mistake rows/own_tools.txt 's/1, 2, 3 /1, "2", 3 /' "not a row: '\"2\"' is no Float but a String"
mistake rows/own_tools.txt 's/ = 4 / 4 /' 'not a row: wants KERNELS INPUTS = OUTPUTS : WHY'
# What no row sees: a byte behind the block.
mistake half.cpp 's/solve<half>(in, out);/& static_cast<char*>(out)[8] = 1;/' 'NodusOwnToolsHalf_Double_Solve.*(write|wrote)'

# On processors that could, nothing is fused: the options come with nodus::module.
CXXFLAGS="-O2 -mfma" cmake -S . -B fused >/dev/null
quietly "the module does not build for newer processors" cmake --build fused
! objdump -d fused/libown_tools.so | grep -E 'vf(n|)m(add|sub)' || fail "products are fused with sums"
objdump -d fused/libown_tools.so | grep -q vmulss || fail "this does not look for what a newer processor has"

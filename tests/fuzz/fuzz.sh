#!/bin/sh
# Runs a fuzz target for NODUS_FUZZ_SECONDS (60); an input that breaks it is kept and named.
# usage: fuzz.sh TARGET REGRESSIONS SEEDS... (folders and files)
set -eu
target=$1 regressions=$2
shift 2
name=$(basename "$target")
corpus=$(dirname "$target")/../fuzz/$name
mkdir -p "$corpus/corpus" "$corpus/found"
# The words of the seeds, as libFuzzer takes them.
grep -rohE '"[A-Za-z0-9_]+"' "$regressions" "$@" | sort -u | sed 's/"/\\"/g; s/.*/"&"/' >"$corpus/words"
files=""
for seed in "$@"; do
    shift
    if [ -d "$seed" ]; then set -- "$@" "$seed"; else files=$files${files:+,}$seed; fi
done

if ! "$target" -max_total_time="${NODUS_FUZZ_SECONDS:-60}" -timeout=10 -rss_limit_mb=2048 \
    -max_len=65536 -use_value_profile=1 -print_final_stats=1 -verbosity=0 \
    -dict="$corpus/words" -artifact_prefix="$corpus/found/" ${files:+"-seed_inputs=$files"} \
    "$corpus/corpus" "$regressions" "$@" \
    >"$corpus/log" 2>&1; then
    tail -n 60 "$corpus/log"
    echo "$name broke; the input is in $corpus/found. Put it right, and keep it in $regressions."
    exit 1
fi
sed -n 's/^stat::number_of_executed_units: */inputs tried: /p' "$corpus/log"

#!/bin/sh
# Evaluates a graph's frames in slices on several machines by GNU parallel over SSH, and joins them.
# HOSTS is "render1,render2", or ":" for this machine; they share this folder.
# usage: parallel.sh HOSTS SLICES GRAPH FRAMES RESULT [OPTION...]
set -eu
hosts=$1 slices=$2 graph=$3 frames=$4 result=$5
shift 5
mkdir -p "$result.parts"
seq "$slices" | parallel --quote --sshlogin "$hosts" --workdir . --jobs 1 --retries 2 --halt now,fail=1 \
    nodus eval "$graph" --frames "$frames" "$@" --shard "{}/$slices" \
    --out "$result.parts/{}.${result##*.}"
exec nodus merge "$result.parts"/*."${result##*.}" --frames "$frames" --out "$result"

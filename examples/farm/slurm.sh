#!/bin/sh
#SBATCH --job-name=nodus
#SBATCH --array=1-4
#SBATCH --cpus-per-task=8
# Evaluates one slice of a graph's frames in each task of a Slurm job array; the array counts from 1.
# usage: sbatch [--array=1-N] slurm.sh GRAPH FRAMES RESULT [OPTION...]
set -eu
graph=$1 frames=$2 result=$3
shift 3
mkdir -p "$result.parts"
exec nodus eval "$graph" --frames "$frames" "$@" --threads "${SLURM_CPUS_PER_TASK:-1}" \
    --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_COUNT" \
    --out "$result.parts/$SLURM_ARRAY_TASK_ID.${result##*.}"

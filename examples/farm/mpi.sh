#!/bin/sh
# Evaluates one slice of a graph's frames in each rank of an MPI launcher; ranks count from 0.
# usage: mpirun -n N mpi.sh GRAPH FRAMES RESULT [OPTION...]
set -eu
graph=$1 frames=$2 result=$3
shift 3
# Open MPI, then MPICH and its kin, then Slurm's srun.
rank=${OMPI_COMM_WORLD_RANK:-${PMI_RANK:-$SLURM_PROCID}}
size=${OMPI_COMM_WORLD_SIZE:-${PMI_SIZE:-$SLURM_NTASKS}}
mkdir -p "$result.parts"
exec nodus eval "$graph" --frames "$frames" "$@" --shard "$((rank + 1))/$size" \
    --out "$result.parts/$((rank + 1)).${result##*.}"

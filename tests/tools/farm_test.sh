#!/bin/sh
# The recipes of docs/farm.md, as they stand there, give the bytes of a single run.
# usage: farm_test.sh FOLDER-OF-NODUS
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/../package/common.sh"
source=$here/../..
mkdir "$scratch/bin" "$scratch/a farm"
PATH=$scratch/bin:$1:$PATH
# A queue of one machine: runs every task of the array at once, in reverse.
cat >"$scratch/bin/sbatch" <<'END'
#!/bin/sh
set -eu
export SLURM_ARRAY_TASK_COUNT="" SLURM_CPUS_PER_TASK=1
while :; do
    case $1 in
    --parsable | --dependency=afterok:17) ;;
    --array=1-*) SLURM_ARRAY_TASK_COUNT=${1#--array=1-} ;;
    --wrap) exec sh -c "$2" ;;
    *) break ;;
    esac
    shift
done
for task in $(seq "$SLURM_ARRAY_TASK_COUNT" -1 1); do
    SLURM_ARRAY_TASK_ID=$task "$@"
done
echo 17
END
# Open MPI does not run as root, nor on fewer cores than ranks, unless it is told to.
cat >"$scratch/bin/mpirun" <<END
#!/bin/sh
[ "\$(id -u)" != 0 ] || set -- --allow-run-as-root "\$@"
exec $(command -v mpirun) --oversubscribe "\$@"
END
chmod +x "$scratch/bin/sbatch" "$scratch/bin/mpirun"

cd "$scratch/a farm"
cp -R "$source/examples/farm" "$source/examples/noise.json" .
nodus eval noise.json --frames 0:999 --out single.csv
blocks farm.md sh recipe
count=0
for recipe in "$scratch"/recipe.*; do
    rm -rf noise.csv noise.csv.parts
    quietly "$(cat "$recipe")" sh -eu "$recipe"
    [ "$(ls noise.csv.parts)" = "$(printf '%s.csv\n' 1 2 3 4)" ] || fail "no four parts: $(cat "$recipe")"
    quietly "other bytes than a single run: $(cat "$recipe")" cmp single.csv noise.csv
    count=$((count + 1))
done
[ "$count" = 3 ] || fail "docs/farm.md has $count recipes"

# Further options are passed on; a slice that fails ends the recipe, and there is no result.
cp "$source"/examples/drive.* .
quietly "one run" nodus eval drive.json --data drive.csv --out single.csv
quietly "parallel.sh with a table" \
    farm/parallel.sh : 3 drive.json "0:$(($(wc -l <drive.csv) - 2))" result.csv --data drive.csv
quietly "other bytes than a single run: parallel.sh with a table" cmp single.csv result.csv
if farm/parallel.sh : 3 drive.json 0:999 none.csv --data drive.csv 2>"$scratch/log" ||
    [ -e none.csv ]; then
    fail "parallel.sh makes a result without some of the slices"
fi

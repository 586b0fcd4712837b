# What the scripts of this folder share: a scratch folder that is gone at their end, and failing.
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "FAILED: $*" >&2
    exit 1
}
quietly() { # quietly WHY-IT-FAILED COMMAND...
    why=$1
    shift
    "$@" >"$scratch/log" 2>&1 || {
        cat "$scratch/log" >&2
        fail "$why"
    }
}

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
# The code blocks of a page in one language, each to a file of its own: NAME.1, NAME.2, ...
blocks() { # blocks PAGE LANGUAGE NAME
    awk -v fence="\`\`\`$2" -v name="$scratch/$3" '
        $0 == fence { file = name "." ++count; next }
        /^```/ { file = "" }
        file { print > file }' "$here/../../docs/$1"
    [ -f "$scratch/$3.1" ] || fail "docs/$1 has no $2"
}

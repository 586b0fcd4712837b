# What the scripts of this folder share: a scratch folder that is gone at their end, failing, an installation.
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
# Installs the build into a prefix and moves it: $prefix.
install_and_move() { # install_and_move BUILD-DIRECTORY [OPTION-OF-CMAKE...]
    cmake --install "$@" --prefix "$scratch/built" >/dev/null
    mkdir "$scratch/elsewhere"
    prefix=$scratch/elsewhere/moved
    mv "$scratch/built" "$prefix"
    ! grep -rlF -e "$scratch/built" -e "$1" "$prefix" || fail "these files know where they were built or first installed"
}
prints() { # prints EXPECTED COMMAND...
    expected=$1
    shift
    got=$("$@" 2>&1) || got="$got (exit status $?)"
    [ "$got" = "$expected" ] || fail "$* prints '$got', not '$expected'"
}
python_adds() { # python_adds FOLDER-WITH-THE-PACKAGE
    (cd / && prints "[5. 7. 9.]" env PYTHONPATH="$(dirname "$(find "$1" -path '*-packages/nodusmath')")" \
        /usr/bin/python3 -B -c 'import nodusmath; print(nodusmath.Add_Float3([1, 2, 3], [4, 5, 6]))')
}
# Puts a family at the end of a catalogue, in front of the line that ends the families, the last but one.
add_family() { # add_family CATALOGUE ENTRY
    {
        head -n -3 "$1"
        echo "    },"
        sed 's/^/    /' "$2"
        tail -n 2 "$1"
    } >"$scratch/catalogue"
    cp "$scratch/catalogue" "$1"
}
# The code blocks of a page in one language, each to a file of its own: NAME.1, NAME.2, ...
blocks() { # blocks PAGE LANGUAGE NAME
    awk -v fence="\`\`\`$2" -v name="$scratch/$3" '
        $0 == fence { file = name "." ++count; next }
        /^```/ { file = "" }
        file { print > file }' "$here/../../docs/$1"
    [ -f "$scratch/$3.1" ] || fail "docs/$1 has no $2"
}

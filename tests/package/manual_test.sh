#!/bin/bash
# Every sub-command and option of --help stands in the manual page and is offered by the completions.
# usage: manual_test.sh BUILD-DIRECTORY
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
nodus=$1/bin/nodus
options_of() { # the long options that --help of nodus, or of a sub-command, tells
    "$nodus" "$@" --help | sed -n 's/^ *\(-[^ ]*\( --[^ ]*\)\?\).*/\1/p' | grep -o -e '--[a-z-]*' | sort -u
}

commands=$("$nodus" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\)  .*/\1/p')
[ "$(echo "$commands" | wc -w)" -ge 4 ] || fail "--help tells of too few sub-commands: $commands"

"$nodus" manual man >"$scratch/nodus.1"
sed 's/\\-/-/g; s/\\f[BRI]//g' "$scratch/nodus.1" >"$scratch/plain"
for command in "" $commands; do
    sed -n "/^\.S[HS] ${command:+nodus }${command:-OPTIONS}\$/,/^\.S[HS] [^O]/p" "$scratch/plain" \
        >"$scratch/section"
    [ -s "$scratch/section" ] || fail "the manual page has no section for '$command'"
    # shellcheck disable=SC2086 # no word where there is no sub-command
    for option in $(options_of $command); do
        # What every command has stands in front of them all.
        [ -z "$command" ] || [ "$option" != --help ] || continue
        grep -q -e "$option\b" "$scratch/section" || fail "nodus.1 lacks '$command $option'"
    done
done
warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z \
    "$scratch/nodus.1" 2>&1 >/dev/null)
[ -z "$warnings" ] || fail "man warns: $warnings"

# The examples work as they stand there.
ln -s "$here/../../examples" "$scratch/examples"
sed -n '/^\.SH EXAMPLES$/,/^\.fi$/s/^nodus /&/p' "$scratch/plain" >"$scratch/examples.sh"
[ "$(wc -l <"$scratch/examples.sh")" -ge 5 ] || fail "the manual page has too few examples"
(cd "$scratch" && PATH=$1/bin:$PATH quietly "the examples of nodus.1" sh -eu examples.sh)

# The functions as the shells call them.
"$nodus" manual bash >"$scratch/nodus.bash"
# shellcheck disable=SC1091
. "$scratch/nodus.bash"
complete_words() { # what bash offers for the last of these words
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    PATH=$(dirname "$nodus"):$PATH _nodus
    printf '%s\n' "${COMPREPLY[@]}"
}
offers() { # offers WHAT WORDS...
    local what=$1
    shift
    complete_words "$@" | grep -qx -e "$what" || fail "bash does not offer '$what' for: $*"
}
for command in $commands; do
    offers "$command" nodus "${command%?}"
    for option in $(options_of "$command"); do
        offers "$option" nodus "$command" "${option%?}"
    done
done
offers --version nodus --v
offers Add_Translation nodus describe Add_Tr
cd "$scratch"
: >spinning.json
offers spinning.json nodus eval spin
offers spinning.json nodus eval --data spin
offers spinning.json nodus eval x.json --data = spin
offers spinning.json nodus check spin
offers describe nodus help desc
offers --shard nodus eval spinning.json ''
module=$1/lib/libnodusmath.so
offers describe nodus --module "$module" desc
offers Add_Translation nodus --module = "$module" call Add_Tr
# A module that is not there has no types, whatever the one of the installation has.
[ -z "$(complete_words nodus --module /nowhere.so describe Add_Tr)" ] || fail "bash offers other types"
[ "$(complete_words nodus call Add_Float3 a = 1,2,3 '')" = b= ] || fail "bash offers other ports"

"$nodus" manual zsh >"$scratch/_nodus"
for command in $commands; do
    sed -n "/^    $command)\$/,/;;/p" "$scratch/_nodus" >"$scratch/section"
    for option in $(options_of "$command"); do
        grep -q -e "[)*]$option=\\?\\[" "$scratch/section" || fail "_nodus lacks '$command $option'"
    done
done
grep -q 'a Color or a Float4, as a picture\]' "$scratch/_nodus" || fail "_nodus cuts sentences"
offered=$(zsh -f "$here/zsh_completion.zsh" "$nodus" "$scratch/_nodus") || fail "zsh gives no answer"
expected='completed <nodus describe >
completed <nodus eval --frames=>
completed <nodus call Add_Translation >
completed <nodus help describe >
completed <nodus --module /nowhere.so describe Add_Tr>
completed <nodus --module '"$module"' describe >
completed <nodus --module='"$module"' call Add_Float3 a=1,2,3 b=>'
[ "$offered" = "$expected" ] || fail "zsh completes otherwise: $offered"

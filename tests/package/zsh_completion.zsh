# Types at an interactive zsh and prints what its completion of nodus makes of each line.
# usage: zsh -f zsh_completion.zsh NODUS _NODUS
zmodload zsh/zpty || exit 1
setup=${2:h}/setup.zsh
cat >$setup <<END
PS1= path=(${1:h} \$path) fpath=(${2:h} \$fpath)
autoload -U compinit && compinit -u -D
completed() { zle complete-word; print -r -- "completed <\$BUFFER>" >>$setup.out; zle kill-whole-line }
zle -N completed
bindkey '^I' completed
: >$setup.out
END
zpty shell zsh -f -i
zpty -w shell "source $setup"
wait_for() { # lines of output, for at most ten seconds
    for try in {1..100}; do
        [[ -f $setup.out && $(wc -l <$setup.out) -ge $1 ]] && return
        sleep 0.1
        zpty -r -t shell ignored
    done
    exit 1
}
wait_for 0
lines=0
for line in 'nodus desc' 'nodus eval --fram' 'nodus call Add_Tr' 'nodus help desc' \
    'nodus --module /nowhere.so describe Add_Tr' "nodus --module $1:h:h/lib/libnodusmath.so descr" \
    "nodus --module=$1:h:h/lib/libnodusmath.so call Add_Float3 a=1,2,3 "; do
    zpty -w -n shell "$line"$'\t'
    wait_for $(( ++lines ))
done
zpty -d shell
cat $setup.out

# Types at an interactive zsh and prints what its completion of nodus makes of it.
# usage: zsh -f zsh_completion.zsh NODUS _NODUS
zmodload zsh/zpty || exit 1
zpty shell zsh -f -i
zpty -w shell "PS1=; path=(${1:h} \$path); fpath=(${2:h} \$fpath); autoload -U compinit; compinit -u -D"
zpty -w shell "setopt no_list_beep; zstyle ':completion:*' list-prompt ''; echo rea''dy"
zpty -r shell output '*ready*' || exit 1
for line in 'nodus desc' 'nodus eval --fram' 'nodus call Add_Tr'; do
    zpty -w -n shell "$line"$'\t'
    sleep 1
    while zpty -r -t shell output; do
        print -r -- "$output"
    done
    zpty -w -n shell $'\C-u'
done
zpty -d shell

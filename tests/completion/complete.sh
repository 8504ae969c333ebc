#!/usr/bin/env bash
# Completes command lines in a real shell with what was installed; status 77 when the shell is not there.
# Usage: complete.sh bash|zsh|fish PREFIX
set -euo pipefail
shell=$1 share=$2/share
command -v "$shell" >/dev/null || { echo "$shell is not installed"; exit 77; }

# What is typed, and what it becomes; the completed word is the only one that fits.
typed=('inf' 'check --lev' 'check --level w' 'help opt' 'find --colu')
becomes=('info' 'check --level' 'check --level warning' 'help optimise' 'find --columns')

complete_in_bash() {
    # shellcheck disable=SC1091 # it is made by the build
    . "$share/bash-completion/completions/vnifc"
    read -ra COMP_WORDS <<<"vnifc $1"
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _vnifc
    echo "${COMP_WORDS[*]:1:COMP_CWORD-1}${COMP_WORDS[2]:+ }${COMPREPLY[*]}"
}

# Types into a terminal: the line is run by a function that tells what it was given.
complete_in_zsh() {
    FPATH_ADDED=$share/zsh/vendor-completions LINE=$1 zsh -f <<'ZSH'
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell 'fpath=($FPATH_ADDED $fpath); autoload -U compinit; compinit -u -D; PS1=; unsetopt beep'
zpty -w shell 'vnifc() { print -r -- "given=${(j: :)@}=end" }; print ready""now'
zpty -r shell output '*readynow*'
zpty -w -n shell "vnifc $LINE"$'\t\n'
zpty -r shell output '*given=*=end*' && print -r -- ${${output##*given=}%%=end*}
zpty -d shell
ZSH
}

complete_in_fish() {
    fish --no-config -c "source $share/fish/vendor_completions.d/vnifc.fish; complete -C 'vnifc $1'" |
        cut -f 1 | while read -r word; do echo "$(sed -E 's/[^ ]+$//' <<<"$1")$word"; done
}

status=0
for i in "${!typed[@]}"; do
    found=$(timeout 30 bash -c "$(declare -f "complete_in_$shell"); share=$share; complete_in_$shell \"\$1\"" _ "${typed[i]}")
    [ "$found" = "${becomes[i]}" ] ||
        { echo "$shell: \"${typed[i]}\": expected \"${becomes[i]}\", found \"$found\""; status=1; }
done
exit "$status"

#!/bin/sh
# Every command that the tool tells of has a page that man shows without a warning, with each of its options.
# Usage: manual.sh TOOL PREFIX
set -eu
tool=$1 pages=$2/share/man/man1
command -v man >/dev/null || { echo "man is not installed"; exit 77; }
status=0
for command in $("$tool" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'); do
    page=$pages/vnifc-$command.1.gz
    text=$(MANWIDTH=500 LC_ALL=C man --warnings -l "$page" 2>&1 | col -b) || status=1
    case $text in *warning:*) echo "$text" | grep warning: ; status=1 ;; esac
    for option in $("$tool" "$command" --help | sed -n 's/^ *\(-[a-z],\)\{0,1\}\(--[a-z-]*\).*/\2/p'); do
        echo "$text" | grep -q -e "$option" || { echo "$page: expected $option, found nothing of it"; status=1; }
    done
    count=$((${count:-0} + 1))
done
[ "${count:-0}" -ge 15 ] || { echo "expected the commands of the tool, found ${count:-0}"; status=1; }
exit "$status"

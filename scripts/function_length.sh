#!/bin/sh
# Fails naming every function longer than the limit in the given folders,
# so that long functions are split while their author still knows them.
# Usage: function_length.sh LIMIT DIR...
limit=$1; shift
command -v ctags >/dev/null 2>&1 || { echo "function_length: ctags (universal-ctags) is not installed" >&2; exit 2; }
long=$(ctags -R --languages=C++ --kinds-C++=f --fields=+ne -x --_xformat="%{end} %{line} %{input} %{name}" "$@" |
       awk -v limit="$limit" '{ n = $1 - $2 + 1; if (n > limit) print "  " $3 ":" $2 " " $4 ": " n " lines" }')
[ -z "$long" ] && exit 0
echo "functions over $limit lines:"
echo "$long"
exit 1

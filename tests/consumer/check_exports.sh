#!/bin/sh
# Fails unless every symbol that the library exports belongs to a KEP class: its members, its
# vtable and type information, and thunks into it.
set -eu
library=$1
symbols=$(nm -D --defined-only "$library" | awk '{ print $3 }' | c++filt)
count=$(printf '%s\n' "$symbols" | grep -c .)
foreign=$(printf '%s\n' "$symbols" |
    grep -Ev '^(((typeinfo|typeinfo name|vtable|VTT) for )|((non-)?virtual thunk to ))?KEP::' || true)
if [ -n "$foreign" ]; then
    echo "exported but not part of the KEP interface:"
    printf '%s\n' "$foreign"
    exit 1
fi
echo "$count symbols exported, all of the KEP interface"

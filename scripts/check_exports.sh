#!/bin/sh
# check_exports.sh LIBRARY: fails, with a list, if the shared library shows symbols that are not of the
# public interface, or none at all.
set -eu

symbols=$(nm -DC --defined-only "$1" | sed 's/^[0-9a-f]* *[A-Za-z] //')
printf '%s\n' "$symbols" | grep -q '^TARN_ZEF::reconstruct_auto' || { echo "$1 exports no interface"; exit 1; }
strangers=$(printf '%s\n' "$symbols" | grep -vE '^((vtable|typeinfo|typeinfo name) for )?TARN_ZEF::' || true)
if [ -n "$strangers" ]; then
    echo "$1 exports what is not of the interface:"
    printf '%s\n' "$strangers"
    exit 1
fi

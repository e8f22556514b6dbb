#!/bin/sh
# check_exports.sh LIBRARY: fails, with a list, if the shared library shows symbols that are not of the
# public interface, none at all, or hides what the types of exceptions are known by.
set -eu

symbols=$(nm -DC --defined-only "$1" | sed 's/^[0-9a-f]* *[A-Za-z] //')
printf '%s\n' "$symbols" | grep -q '^TARN_ZEF::reconstruct_auto' || { echo "$1 exports no interface"; exit 1; }
# Else an exception of the library could not be caught by its type outside.
for type in ZefBugException ZefRefusedException ZefBadArgument ZefUnusablePoints ZefTooManyPoints ZefCancelledException; do
    printf '%s\n' "$symbols" | grep -qx "typeinfo for TARN_ZEF::$type" || { echo "$1 hides the type $type"; exit 1; }
done
strangers=$(printf '%s\n' "$symbols" | grep -vE '^((vtable|typeinfo|typeinfo name) for )?TARN_ZEF::' || true)
if [ -n "$strangers" ]; then
    echo "$1 exports what is not of the interface:"
    printf '%s\n' "$strangers"
    exit 1
fi

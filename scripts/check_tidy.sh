#!/bin/sh
# check_tidy.sh [SOURCE...]: clang-tidy over the library and the tool, or over the sources named. Ends with
# the number of findings for each check.
lane="clang-tidy"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang clang-tidy python3
cmake -S . -B build/tidy -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF \
    -DZEF_BUILD_EXAMPLES=OFF >/dev/null

mkdir "$scratch/batches"
broke_off=""
scripts/tidy_batches.py build/tidy/compile_commands.json "$scratch/batches" "$@" \
    >"$scratch/findings" 2>"$scratch/errors" || broke_off=yes

grep -hE ': (warning|error): ' "$scratch/findings" "$scratch/errors" | sort -u >"$scratch/lines" || true
sed "s|$PWD/||" "$scratch/lines"
echo "findings:"
sed 's/.*\[\(.*\)\]$/\1/; s/,-warnings-as-errors//' "$scratch/lines" | sort | uniq -c | sort -rn
[ ! -s "$scratch/lines" ] || fail "clang-tidy has findings"
[ -z "$broke_off" ] || fail "clang-tidy broke off: $(head -n 20 "$scratch/errors")"

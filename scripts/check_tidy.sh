#!/bin/sh
# check_tidy.sh [SOURCE...]: clang-tidy over the library and the tool, or over the sources named. Ends with
# the number of findings for each check.
lane="clang-tidy"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang clang-tidy
cmake -S . -B build/tidy -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF \
    -DZEF_BUILD_EXAMPLES=OFF >/dev/null

# Every source that is compiled; the largest first, so that no core waits at the end.
if [ $# -eq 0 ]; then
    sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/tidy/compile_commands.json | sort -u | xargs ls -S >"$scratch/sources"
else
    printf '%s\n' "$@" >"$scratch/sources"
fi
test -s "$scratch/sources" || fail "no sources found"

mkdir "$scratch/findings"
# One file of findings a source; a run that breaks off leaves its reason there and a mark.
# shellcheck disable=SC2016 # expanded by the inner shell
xargs -a "$scratch/sources" -P 2 -I '{}' sh -c '
    clang-tidy -p build/tidy --quiet "$2" >"$1/$(basename "$2").txt" 2>"$1/$(basename "$2").err" ||
        echo "$2" >>"$1/failed.list"' tidy "$scratch/findings" '{}'

grep -hE ': (warning|error): ' "$scratch"/findings/*.txt "$scratch"/findings/*.err | sort -u >"$scratch/lines" || true
sed "s|$PWD/||" "$scratch/lines"
echo "checked: $(wc -l <"$scratch/sources") sources; findings:"
sed 's/.*\[\(.*\)\]$/\1/; s/,-warnings-as-errors//' "$scratch/lines" | sort | uniq -c | sort -rn
[ ! -s "$scratch/lines" ] || fail "clang-tidy has findings"
[ ! -e "$scratch/findings/failed.list" ] ||
    fail "clang-tidy broke off: $(cat "$scratch/findings/failed.list" "$scratch"/findings/*.err | head -n 20)"

#!/bin/sh
# Every source has the layout of .clang-format, and shellcheck finds nothing in the scripts.
lane="layout of sources, scripts"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang-format shellcheck
git ls-files '*.cpp' '*.h' >"$scratch/sources"
test -s "$scratch/sources" || fail "no sources found"
xargs -a "$scratch/sources" -P 2 -n 40 clang-format --dry-run --Werror
echo "checked: $(wc -l <"$scratch/sources") files"
shellcheck --severity=warning -x -P SCRIPTDIR scripts/*.sh .ci/run

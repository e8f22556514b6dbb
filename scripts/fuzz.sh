#!/bin/sh
# fuzz.sh TARGET [SECONDS]: lets one fuzz target (an extension such as ply, or chain, or soup) search under the address and
# undefined-behaviour sanitizer, a minute if no time is named. New inputs stay in build/fuzz; one that breaks a promise
# is left in build/fuzz/found, to become a file of fuzz/corpus together with the mend.
target=${1:?a target, as ply or chain}
seconds=${2:-60}
lane="fuzzing of $target, $seconds s"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang libclang-rt-14-dev
cmake --preset fuzz
cmake --build --preset fuzz --target "fuzz_$target"
mkdir -p "build/fuzz/found" "build/fuzz/inputs_$target"
"build/fuzz/bin/fuzz_$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=4096 -max_len=4096 \
    -artifact_prefix="build/fuzz/found/$target-" -print_final_stats=1 "build/fuzz/inputs_$target" "fuzz/corpus/$target"

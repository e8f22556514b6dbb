#!/bin/sh
# planted_faults.sh [WORD]: do the tests still catch what goes wrong in practice? Each small fault that is listed in
# planted_faults.txt is put into a copy of the sources, alone; then a test must fail, crash or hang. Run it when
# tests were changed or thrown out. Prints which test caught which fault, and fails if one slips through or can
# no longer be planted. WORD: only the faults with this word in their name or file.
lane="planted faults"
. "$(dirname "$0")/lane.sh"

word=${1:-}
list=$PWD/scripts/planted_faults.txt
sources=$scratch/sources
program=$sources/build/planted/bin/zef_tests
scripts/install_deps.sh

mkdir "$sources"
cp -R CMakeLists.txt cmake include src_lib tests "$sources"
cd "$sources"
# Relative names are those of other checkouts then, and ccache serves what did not change.
export CCACHE_BASEDIR="$PWD"
# The same on every machine, so that threads are at work on each.
export ZEF_THREADS=2

build() {
    ninja -C build/planted -j "$CMAKE_BUILD_PARALLEL_LEVEL" zef_tests >"$scratch/build.log" 2>&1
}

# run_tests FILTER SECONDS: sets status, and catcher to the test that failed. Each suite runs in a process of its own,
# because some of what the library remembers is the process's.
run_tests() {
    status=0
    catcher="-"
    for suite in $("$program" --gtest_list_tests --gtest_filter="$1" | sed -n 's/^\([A-Za-z0-9_]*\)\..*/\1/p'); do
        run_suite "$suite" "$2"
        [ $status -eq 0 ] || return 0
    done
}

run_suite() {
    # In a shell of its own, which keeps its word about a crash to itself.
    (
        cd "$scratch"
        timeout -k 5 "$2" "$program" --gtest_fail_fast --gtest_filter="$1.*"
    ) >"$scratch/tests.log" 2>&1 || status=$?
    case $status in
    0) ;;
    1) catcher=$(grep -a -o '^\[  FAILED  \] [A-Za-z0-9_]*\.[A-Za-z0-9_/]*' "$scratch/tests.log" | head -n 1) ;;
    124 | 137) catcher="hangs: $(last_started)" ;;
    *) catcher="crashes: $(last_started)" ;;
    esac
    catcher=${catcher#"[  FAILED  ] "}
}

last_started() {
    grep -a -o '\[ RUN      \] [A-Za-z0-9_]*\.[A-Za-z0-9_/]*' "$scratch/tests.log" | tail -n 1 | cut -c 14-
}

# plant FILE FROM TO: false if the line is not there exactly once.
plant() {
    cp "$1" "$scratch/original"
    from=$2 to=$3 awk '
        { line = $0; sub(/^[ \t]+/, "", line) }
        line != ENVIRON["from"] { print; next }
        { ++num; if (ENVIRON["to"] != "") print ENVIRON["to"] }
        END { exit num != 1 }' "$scratch/original" >"$1"
}

# try_fault FAULT FILE TESTS FROM TO
try_fault() {
    start=$(date +%s)
    planted=$((planted + 1))
    if ! plant "$2" "$4" "$5"; then
        catcher="NOT PLANTED, the line is not there exactly once"
    elif ! build; then
        catcher="NOT PLANTED, it does not compile"
        grep -a -m 3 'error:' "$scratch/build.log" || true
    else
        run_tests "$3" "$limit"
        [ $status -ne 0 ] || run_tests '*' "$limit"
        [ $status -eq 0 ] && catcher="SLIPPED THROUGH" || caught=$((caught + 1))
    fi
    cp "$scratch/original" "$2"
    print_row "$1" "${2#src_lib/}" "$catcher" $(($(date +%s) - start))
}

print_row() {
    printf '%-60s  %-32s  %-70s  %s\n' "$1" "$2" "$3" "$4"
}

cmake -S . -B build/planted -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O1 -DNDEBUG" \
    -DZEF_WERROR=ON -DZEF_BUILD_TOOL=OFF -DZEF_BUILD_EXAMPLES=OFF -DZEF_BUILD_BENCHMARKS=OFF >/dev/null
build || { cat "$scratch/build.log" && fail "the sources do not compile"; }
start=$(date +%s)
run_tests '*' 1800
[ $status -eq 0 ] || { tail -n 30 "$scratch/tests.log" && fail "without a fault: $catcher"; }
# Of a suite with a fault; beyond it, the tests hang.
limit=$((10 + $(date +%s) - start))

planted=0
caught=0
print_row fault file "caught by" seconds
while read -r key value; do
    case $key in
    fault) fault=$value ;;
    file) file=$value ;;
    tests) tests=$value ;;
    from) from=$value ;;
    to)
        case "$fault $file" in
        *"$word"*) try_fault "$fault" "$file" "$tests" "$from" "$value" ;;
        esac
        ;;
    '' | '#'*) ;;
    *) fail "planted_faults.txt: what is $key?" ;;
    esac
done <"$list"

echo "$planted planted, $caught caught"
[ $planted -gt 0 ] || fail "no fault matches $word"
[ $caught -eq $planted ]

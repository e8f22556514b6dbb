#!/bin/sh
# compare_builds.sh OLD NEW [FILTER [TURNS]]: builds two commits and runs their benchmarks in turns, old new
# old new ..., so that a change of the machine's mood hits both. Fails when one got slower by more than 3 % and
# by more than the spread, or takes more than 3 % more instructions for the sample cloud. FILTER is a regular
# expression of benchmark names, TURNS how often each build runs (5).
# OLD and NEW are commits, or folders with sources.
lane="speed of ${2:-} against ${1:-}"
. "$(dirname "$0")/lane.sh"

[ $# -ge 2 ] || fail "usage: compare_builds.sh OLD NEW [FILTER [TURNS]]"
old=$1
new=$2
filter=${3:-.}
turns=${4:-5}
scripts/install_deps.sh python3 valgrind
python3 scripts/compare_times.py --self-test 2>"$scratch/self_test" || { cat "$scratch/self_test" && exit 1; }

trees=""
clean_up() {
    for tree in $trees; do
        git worktree remove --force "$tree"
    done
}

# build NAME WHAT: a commit gets a worktree in the temporary folder.
build() {
    sources=$2
    if [ ! -d "$sources" ]; then
        sources=$scratch/$1-sources
        git worktree add --quiet --detach "$sources" "$2"
        trees="$trees $sources"
    fi
    # In the tree's own folder: relative names are then equal, and ccache serves what did not change.
    (
        cd "$sources"
        export CCACHE_BASEDIR="$PWD"
        cmake --preset release >/dev/null
        cmake --build --preset release --target zef_tool zef_benchmarks
    )
    ln -s "$(cd "$sources" && pwd)/build/release" "$scratch/$1"
    mkdir -p "$scratch/times/$1"
}

instructions_of() {
    ZEF_THREADS=1 valgrind --tool=callgrind --callgrind-out-file=/dev/null \
        "$scratch/$1/bin/zef" artificial123.xyz "$scratch/mesh.stl" -q -f 4 2>&1 |
        sed -n 's/^==[0-9]*== Collected : *\([0-9]*\).*/\1/p'
}

build old "$old"
build new "$new"
turn=1
while [ "$turn" -le "$turns" ]; do
    for name in old new; do
        "$scratch/$name/bin/zef_benchmarks" --benchmark_filter="$filter" \
            --benchmark_out="$scratch/times/$name/$turn.json" --benchmark_out_format=json >/dev/null
    done
    turn=$((turn + 1))
done

slower=""
python3 scripts/compare_times.py "$scratch/times/old" "$scratch/times/new" || slower="times"
instructions_old=$(instructions_of old)
instructions_new=$(instructions_of new)
[ -n "$instructions_old" ] && [ -n "$instructions_new" ] || fail "valgrind counted nothing"
echo "instructions for the sample cloud: old $instructions_old, new $instructions_new, ratio" \
    "$(awk "BEGIN { printf \"%.4f\", $instructions_new / $instructions_old }")"
[ $((instructions_new * 100)) -le $((instructions_old * 103)) ] || slower="$slower instructions"
[ -z "$slower" ] || fail "slower: $slower"

# Sourced on top of a lane after lane="its name": goes to the top folder, takes no standard input, makes
# the temporary folder $scratch, and at the end calls clean_up, which the lane may define anew, and prints the
# verdict and the seconds in one line.
# shellcheck shell=sh disable=SC2154 # lane is set by who sources this
set -eu
cd "$(dirname "$0")/.."
exec </dev/null
export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}"
lane_start=$(date +%s)
scratch=$(mktemp -d)

clean_up() {
    :
}

end_lane() {
    status=$?
    trap - EXIT
    clean_up || status=1
    rm -rf "$scratch"
    word=passed
    [ $status -eq 0 ] || word=FAILED
    echo "$word: $lane ($(($(date +%s) - lane_start)) s)"
    exit $status
}
trap end_lane EXIT
trap 'exit 130' INT TERM

fail() {
    echo "$*" >&2
    exit 1
}

#!/bin/sh
# install_deps.sh [PACKAGE...]: installs, through apt, what building and testing need, and the packages
# named. Does nothing if all of it is there.
set -eu

packages="g++ cmake ninja-build libcli11-dev libpng-dev libgtest-dev libbenchmark-dev pkg-config ccache $*"

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "no dpkg here: make sure that the counterparts of these are installed: $packages" >&2
    exit 0
fi

missing=""
for package in $packages; do
    state=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$state" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "missing:$missing; install them as root, there is no sudo here" >&2
        exit 1
    fi
    as_root="sudo"
fi
echo "installing:$missing"
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
# shellcheck disable=SC2086 # a list of words
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing

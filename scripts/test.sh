#!/bin/sh
# Installs what is missing, builds everything, and runs all tests. A preset may be named: release if not,
# or dev, asan, tsan.
set -eu
cd "$(dirname "$0")/.."
preset=${1:-release}

scripts/install_deps.sh
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"

#!/bin/sh
# The program that README.md shows is the one that the examples build.
set -eu
cd "$(dirname "$0")/.."
sed -n '/^```cpp$/,/^```$/p' README.md | sed '/^```/d' | diff - examples/quickstart.cpp

#!/bin/sh
# README.md tells the truth: its program is the one that the examples build, the scripts, presets, files and
# targets that it names exist, and so do the options of the tool that it uses; its version is the project's.
lane="README.md"
. "$(dirname "$0")/lane.sh"

sed -n '/^```cpp$/,/^```$/p' README.md | sed '/^```/d' | diff - examples/quickstart.cpp

# Commands: each line of the shell blocks.
sed -n '/^```sh$/,/^```$/p' README.md | sed '/^```/d' >"$scratch/commands"
test -s "$scratch/commands" || fail "no commands found"
for script in $(grep -oE '(^| )scripts/[a-z_]+\.sh' "$scratch/commands"); do
    test -x "$script" || fail "README.md names $script, which is no program here"
done
for preset in $(grep -oE -e '--preset [a-z]+' "$scratch/commands" | cut -d' ' -f2) \
    $(grep -oE 'Presets: [^.]*' README.md | grep -oE '`[a-z]+`' | tr -d '`'); do
    grep -q "\"configurePreset\": \"$preset\"" CMakePresets.json || fail "README.md names the preset $preset"
done
for option in $(grep -E '^build/[a-z]+/bin/zef ' "$scratch/commands" | sed 's/#.*//' |
    grep -oE ' --?[a-z][a-z-]*' | sort -u); do
    grep -qE "[\",]${option}[\",]" tools/commandLine.cpp || fail "README.md uses $option, which the tool lacks"
done
for option in $(grep -oE -e '-D[A-Z_]+' README.md docs/*.md | sed 's/.*-D//' | sort -u); do
    grep -q "$option" CMakeLists.txt || fail "the documents name the option $option"
done

# Links to files, and pictures, of all documents; code is none.
for document in README.md CONTRIBUTING.md docs/*.md; do
    for target in $(sed '/^```/,/^```/d' "$document" | grep -oE '\]\([^)#:]+' | sed 's/^](//'); do
        test -e "$(dirname "$document")/$target" || fail "$document links to $target, which is not there"
    done
done

version=$(sed -n 's/^project(zef VERSION \([0-9]*\.[0-9]*\)\..*/\1/p' CMakeLists.txt)
test -n "$version" || fail "CMakeLists.txt has no version"
for file in README.md examples/consumer/CMakeLists.txt; do
    grep -q "find_package(zef $version " "$file" || fail "$file asks for another version than $version"
done

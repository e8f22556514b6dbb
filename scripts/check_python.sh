#!/bin/sh
# check_python.sh [ARGUMENT...]: builds the Python module as a wheel for the system's Python, installs it in a folder of
# its own, and tests it there. Arguments go to pytest. The values are compared with those of the tool of the release
# preset.
lane="Python module"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh python3-dev python3-numpy python3-pip python3-setuptools python3-wheel pybind11-dev \
    python3-pytest python3-hypothesis python3-matplotlib mypy
# Another python3 may stand first in the path, without the headers and packages of the system.
python=$(command -p -v python3)

cmake --preset release >/dev/null
cmake --build --preset release --target zef_tool
# What earlier wheels were packed from would be packed again.
rm -rf build/lib.* build/bdist.*
CMAKE_ARGS=-DZEF_WERROR=ON "$python" -m pip --disable-pip-version-check wheel . --no-build-isolation --no-deps \
    --no-index --wheel-dir "$scratch" --quiet
"$python" -m pip --disable-pip-version-check install "$scratch"/zef-*.whl --no-deps --no-index --quiet --root-user-action=ignore \
    --target "$scratch/site"

# The sources packed for others are whole.
"$python" setup.py --quiet sdist --dist-dir "$scratch" 2>"$scratch/log" || fail "$(cat "$scratch/log")"
tar -tzf "$scratch"/zef-*.tar.gz | sed 's|^[^/]*/||' | sort >"$scratch/packed"
git ls-files CMakeLists.txt CMakePresets.json pyproject.toml setup.py cmake include src_lib python examples/python | sort >"$scratch/needed"
comm -13 "$scratch/packed" "$scratch/needed" >"$scratch/missing"
[ ! -s "$scratch/missing" ] || fail "the sdist lacks: $(cat "$scratch/missing")"

export PYTHONPATH="$scratch/site" PYTHONDONTWRITEBYTECODE=1 ZEF_TOOL="$PWD/build/release/bin/zef"
# Classes of pybind11 have a metaclass of its own, which no stub can name.
printf 'zef._zef.%s\n' Call Mesh Surface >"$scratch/allowed"
(cd "$scratch" && "$python" -m mypy.stubtest zef --allowlist allowed --mypy-config-file "$OLDPWD/pyproject.toml")
"$python" -m pytest -q -p no:cacheprovider python/tests "$@"

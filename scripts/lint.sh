#!/usr/bin/env bash
# Runs clang-tidy over the code, each file by itself. Usage: scripts/lint.sh [FILE]...
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset debug -B build/lint -DCMAKE_UNITY_BUILD=OFF >/dev/null
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(git ls-files 'host/*.cpp' 'plugin/*.cpp' 'catalog/*.cpp' 'xml/*.cpp' 'annotations*/*.cpp' 'app/*.cpp')
# The count of warnings from system headers, one line for each file, says nothing.
printf '%s\0' "${files[@]}" |
  xargs -0 -n 4 -P "$(nproc)" clang-tidy --quiet -p build/lint --warnings-as-errors='*' 2> >(grep -v 'warnings generated' >&2)

#!/usr/bin/env bash
# Runs clang-tidy. Usage: scripts/lint.sh [FILE]...
# Without files over all code but the tests, as it is built, several files as one, and with an analyzer that looks less far:
# minutes instead of half an hour. Files that are named are looked at one by one, as deeply as the analyzer goes.
set -euo pipefail
cd "$(dirname "$0")/.."

# tidy FOLDER OPTION... : over the files on standard input. The count of warnings from system headers says nothing.
tidy() {
  xargs -d '\n' -n 1 -P "$(nproc)" clang-tidy --quiet -p "$1" --warnings-as-errors='*' \
    --extra-arg=-Wno-unknown-warning-option "${@:2}" 2> >(grep -v 'warnings generated' >&2)
}

if [ $# -gt 0 ]; then
  cmake --preset debug -B build/lint-files -DCMAKE_UNITY_BUILD=OFF >/dev/null
  printf '%s\n' "$@" | tidy build/lint-files
  exit
fi

cmake --preset debug -B build/lint >/dev/null
sources() { sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/lint/compile_commands.json | grep -v -e '/tests/' -e '/embedded/'; }
checks=-bugprone-suspicious-include # it is how several files become one
analyzer=()
for word in -analyzer-opt-analyze-headers -analyzer-config mode=shallow; do
  analyzer+=(--extra-arg=-Xclang "--extra-arg=$word")
done
sources | grep -v '/app/' | tidy build/lint --checks="$checks" "${analyzer[@]}"
# As app/.clang-tidy says.
sources | grep '/app/' | tidy build/lint --checks="$checks,-clang-analyzer-*"

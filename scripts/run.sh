#!/usr/bin/env bash
# Builds lusym and runs its demonstration on the example library. Usage: scripts/run.sh [DIR]
# DIR (default build/demo) receives the gallery page and the other files; the last lines name them.
set -euo pipefail
case "${1:-}" in -*)
    sed -n 's/^# //p' "$0"
    exit 2 ;;
esac
cd "$(dirname "$0")/.."

scripts/setup.sh build
export CMAKE_GENERATOR=Ninja
cmake --preset release >/dev/null
cmake --build --preset release --target lusym
build/release/bin/lusym demo -o "${1:-build/demo}"

#!/usr/bin/env bash
# Builds in release and checks that loading, writing, the gallery and following parts take no more instructions than they did.
# Usage: scripts/check_instructions.sh [--update]   (--update keeps the counts of now)
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build bench
export CMAKE_GENERATOR=Ninja
cmake --preset release -DLUSYMBOLS_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --target lusymbols_bench >&2
python3 bench/instructions.py build/release/bin/lusymbols_bench "$@"

#!/usr/bin/env bash
# Builds in release, measures, and prints what it costs beside what it must cost. Usage: scripts/bench.sh [OPTION]...
#   --only TEXT       rows whose name holds this
#   --json FILE       keep the figures
#   --compare FILE    tell what changed since these figures were kept
# Exit code: 0 when every row is met, 1 when one is not.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build bench
export CMAKE_GENERATOR=Ninja
cmake --preset release -DLUSYMBOLS_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --target lusymbols_bench lusymbols_picture_bench >&2
python3 bench/table.py build/release/bin "$@"

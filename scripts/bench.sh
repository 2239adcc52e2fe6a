#!/usr/bin/env bash
# Builds in release and runs the benchmarks. Usage: scripts/bench.sh [BENCHMARK-OPTION]...
# For instance: scripts/bench.sh --benchmark_filter='Load|Write' --benchmark_format=json
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build bench
export CMAKE_GENERATOR=Ninja
cmake --preset release -DLUSYMBOLS_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --target lusymbols_bench >&2
build/release/bin/lusymbols_bench "$@"

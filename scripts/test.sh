#!/usr/bin/env bash
# Builds and runs the tests. Usage: scripts/test.sh [PRESET] [CTEST-OPTION]...
#   debug (default)  with assertions and the reference ledger
#   asan             under AddressSanitizer and UndefinedBehaviorSanitizer
#   tsan             the concurrent tests under ThreadSanitizer
#   release          what people run
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-debug}
[ $# -eq 0 ] || shift
target=all
options=()
if [ "$preset" = tsan ]; then
  target=concurrent_tests
  options=(--label-regex concurrent)
fi

scripts/setup.sh build
export CMAKE_GENERATOR=Ninja
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target "$target"
ctest --preset "$preset" --parallel "$(nproc)" "${options[@]}" "$@"

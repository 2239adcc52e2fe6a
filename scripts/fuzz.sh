#!/usr/bin/env bash
# Builds the fuzzers and runs them. Usage: scripts/fuzz.sh [SECONDS [NAME]...]
#   SECONDS   for each of them, 60 when not said
#   NAME      as in fuzz/NAME_fuzzer.cpp; all when not said
# They begin with the seeds in fuzz/corpus/NAME, among them every input that once failed. What they find on the way is kept in
# build/fuzz/corpus/NAME, and an input that fails in build/fuzz/findings: put it into fuzz/corpus/NAME with the mend.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
[ $# -eq 0 ] || shift
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for source in fuzz/*_fuzzer.cpp; do
    names+=("$(basename "$source" _fuzzer.cpp)")
  done
fi

scripts/setup.sh build fuzz
export CMAKE_GENERATOR=Ninja
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

# What allocates through a library of somebody else is that library's; a limit that it respects comes back as a null pointer.
export ASAN_OPTIONS=allocator_may_return_null=1
export LSAN_OPTIONS=suppressions=$PWD/tests/foreign_leaks.supp:print_suppressions=0

run() {
  local name=$1 kept=build/fuzz/corpus/$1 options=()
  mkdir -p "$kept" build/fuzz/findings
  [ ! -f "fuzz/$name.dict" ] || options+=("-dict=fuzz/$name.dict")
  if "build/fuzz/bin/fuzz_$name" "${options[@]}" -max_total_time="$seconds" -entropic=0 -timeout=20 -rss_limit_mb=3000 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/findings/$name-" "$kept" "fuzz/corpus/$name" >"build/fuzz/$name.log" 2>&1; then
    printf '%-18s %s inputs tried, none failed\n' "$name" "$(sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$name.log")"
  else
    tail -n 60 "build/fuzz/$name.log"
    printf '%-18s FAILED: build/fuzz/%s.log tells on which input\n' "$name" "$name"
    return 1
  fi
}
export -f run
export seconds
printf '%s\n' "${names[@]}" | xargs -n 1 -P "$(nproc)" bash -c 'run "$1"' bash

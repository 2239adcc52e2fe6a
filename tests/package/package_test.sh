#!/usr/bin/env bash
# package_test.sh CMAKE SOURCE BUILD BUILD-TYPE SANITIZERS: installs BUILD into a fresh folder, builds and runs a project
# that finds it there, and builds the plug-in beside a host that is known by its headers and its library alone.
set -euo pipefail
cmake=$1 source=$2 build=$3 type=$4 sanitizers=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; return 1; }; }

flags=()
[ -z "$sanitizers" ] || flags=("-DCMAKE_CXX_FLAGS=-fsanitize=$sanitizers")

quietly "$cmake" --install "$build" --prefix "$work/prefix"

quietly "$cmake" -G Ninja -S "$source/tests/package/consumer" -B "$work/consumer" "-DCMAKE_BUILD_TYPE=$type" \
  "-DCMAKE_PREFIX_PATH=$work/prefix" "${flags[@]}"
quietly "$cmake" --build "$work/consumer"
library=$(dirname "$(find "$work/prefix" -name liblusymbols.so)")
"$work/consumer/consumer" "$library/liblusymbols.so" "$work/prefix/share/lusymbols/examples/library"

# Moved elsewhere the program still finds its libraries, its plug-in and its examples.
mv "$work/prefix" "$work/moved"
"$work/moved/bin/lusym" library check --strict \
  "$work/moved/share/lusymbols/examples/library/SymbolsLibrary/PartSymbolLibrary.xml"

library=${library/prefix/moved}
quietly "$cmake" -G Ninja -S "$source" -B "$work/plugin" "-DCMAKE_BUILD_TYPE=$type" \
  "-DLUSYMBOLS_HOST_INCLUDE=$work/moved/include/luhost" "-DLUSYMBOLS_HOST_LIBRARIES=$library/libluhost.so" \
  "-DLUSYMBOLS_SANITIZE=$sanitizers" "-DCMAKE_CXX_FLAGS=-DLUHOST_REFERENCE_LEDGER=$(
    grep -q 'LUSYMBOLS_REFERENCE_LEDGER:BOOL=ON' "$build/CMakeCache.txt" && echo 1 || echo 0)"
quietly "$cmake" --build "$work/plugin"
nm -D --defined-only "$work/plugin/lib/liblusymbols.so" | grep -c 'LUDllCreateComponent' >/dev/null

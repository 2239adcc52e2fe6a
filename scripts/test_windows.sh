#!/usr/bin/env bash
# Builds for 64-bit Windows with mingw-w64, and runs the tests and the checks of the plug-in under Wine.
# Usage: scripts/test_windows.sh [CTEST-OPTION]...
set -euo pipefail
cd "$(dirname "$0")/.."

packages=$PWD/build/windows-packages

# Unpacks a source package of Debian, from where this system's own packages come. The system's lists stay as they are.
fetch_source() {
  local apt=$packages/apt
  rm -rf "$apt"
  mkdir -p "$apt/parts" "$apt/lists/partial" "$apt/cache"
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ ! -r "$list" ] || sed -n 's/^deb\([ \t]\)/deb-src\1/p' "$list" >>"$apt/parts/source.list"
  done
  for list in /etc/apt/sources.list.d/*.sources; do
    [ ! -r "$list" ] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$apt/parts/$(basename "$list")"
  done
  local options=(-qq -o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$apt/parts" -o "Dir::State::Lists=$apt/lists"
    -o "Dir::Cache=$apt/cache" -o APT::Sandbox::User=root)
  # A list without sources is no matter, as long as the package is in another.
  apt-get "${options[@]}" update || true
  (cd "$packages" && rm -rf "$1"-*/ && apt-get "${options[@]}" source "$1" >/dev/null && mv "$1"-*/ "$1")
}

scripts/setup.sh windows
[ -e "$packages/pugixml" ] || fetch_source pugixml

export CMAKE_GENERATOR=Ninja
cmake --preset windows >/dev/null
cmake --build --preset windows

# An installation of Windows of its own, without windows, menus, a debugger, and offers to download more.
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe,winedbg.exe="
unset DISPLAY
trap '/usr/lib/wine/wineserver64 -k || true' EXIT
/usr/lib/wine/wine64 wineboot --init >/dev/null 2>&1
ctest --preset windows --parallel "$(nproc)" "$@"

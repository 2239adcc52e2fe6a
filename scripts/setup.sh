#!/usr/bin/env bash
# Installs what the project needs on Debian 12. Usage: scripts/setup.sh [build|bench|check|fuzz|windows]...
#   build   compiler, build tools and libraries, tests included (the default)
#   bench   what the benchmarks measure against
#   check   what CI needs beyond that: formatter, linter
#   fuzz    the compiler of the fuzzers, with its run-times
#   windows the compiler for Windows, what its build takes from Debian, and Wine
# Packages that are there already are left alone; as an ordinary user it asks sudo.
set -euo pipefail

build="g++ cmake ninja-build ccache pkg-config libpugixml-dev libcli11-dev nlohmann-json3-dev libgtest-dev libzip-dev libpng-dev libjpeg62-turbo-dev libgif-dev libwebp-dev libtiff-dev librsvg2-dev libcairo2-dev libassimp-dev libembree-dev strace"
bench="libbenchmark-dev libxml2-dev python3 valgrind"
check="clang-format clang-tidy"
fuzz="clang libclang-rt-14-dev"
windows="g++-mingw-w64-x86-64-posix wine64 cmake ninja-build ccache dpkg-dev googletest libcli11-dev nlohmann-json3-dev"

wanted=()
for group in "${@:-build}"; do
  case $group in
    build | bench | check | fuzz | windows) read -ra packages <<<"${!group}"; wanted+=("${packages[@]}") ;;
    *) echo "setup.sh: unknown group '$group'; there are build, bench, check, fuzz and windows" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}" >&2
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2

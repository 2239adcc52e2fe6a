#!/usr/bin/env bash
# Holds the layers: app -> plug-in -> host interface; the host knows neither plug-in nor application; the plug-in knows no
# third-party header; third-party libraries but the XML parser stay in host/io, host/render and app.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0

# forbid WHY PATTERN FOLDER...: no include in these folders matches.
forbid() {
  local why=$1 pattern=$2
  shift 2
  local hits
  hits=$(grep -rnE "^ *# *include +$pattern" --include='*.h' --include='*.cpp' "$@" || true)
  if [ -n "$hits" ]; then
    echo "$why:"
    echo "$hits"
    failed=1
  fi
}

plugin=(plugin catalog xml)
for folder in annotations2d annotations3d; do
  [ -d $folder ] && plugin+=("$folder")
done
private=$(paste -sd'|' cmake/private_headers.txt | sed 's/\./\\./g')
forbid "the application includes a private header of the host or the plug-in" "[\"<]([A-Za-z0-9_]+/)*($private)" app
forbid "the plug-in includes a private header of the host" "<([A-Za-z0-9_]+/)*($private)" "${plugin[@]}"
# Standard headers have neither a folder nor a dot in their names; <dlfcn.h> and the like count as foreign.
interface='(du|dp|dg|dom|luk|luloader|lug|lumk|luannotations|lukapp|lucontext)/'

forbid "the host includes the plug-in or the application" '["<](plugin|catalog|xml|annotations2d|annotations3d|app)/' host
forbid "the plug-in includes the application" '["<]app/' "${plugin[@]}"
foreign=$(grep -rnE '^ *# *include +<' --include='*.h' --include='*.cpp' "${plugin[@]}" |
  grep -vE "include +<$interface" | grep -E 'include +<[^>]*[/.]' || true)
[ -z "$foreign" ] || { echo "the plug-in includes a third-party or system header:"; echo "$foreign"; failed=1; }

core=$(find host -mindepth 1 -maxdepth 1 -type d ! -name io ! -name render)
third=$(grep -rnE '^ *# *include +<' --include='*.h' --include='*.cpp' $core |
  grep -vE "include +<($interface|luhost/)" | grep -E 'include +<[^>]*/' | grep -vE 'include +<sys/' || true)
[ -z "$third" ] || { echo "the host's core includes a third-party header:"; echo "$third"; failed=1; }
xml=$(grep -rlE 'pugi' --include='*.h' --include='*.cpp' host app "${plugin[@]}" | grep -vE '^host/lukutils/dg/[A-Za-z]+\.cpp$' || true)
[ -z "$xml" ] || { echo "the XML parser is used outside host/lukutils/dg:"; echo "$xml"; failed=1; }
exit $failed

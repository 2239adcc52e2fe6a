#!/usr/bin/env bash
# Makes the pictures of README.md anew. Usage: scripts/make_pictures.sh [LUSYM]
# LUSYM is the program (default: that of the release build). The gallery page needs a browser: chromium.
set -euo pipefail
cd "$(dirname "$0")/.."

lusym=$(realpath "${1:-build/release/bin/lusym}")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
libraries=(examples/library/SymbolsLibrary/PartSymbolLibrary.xml
  examples/library/SymbolsLibrary/standard/PartSymbolLibrary.xml)
shared=examples/library/shared/SymbolsLibrary/PartSymbolLibrary.xml

document="$folder/gearbox.luz"
"$lusym" document new examples/product/gearbox.glb -o "$document" --library "${libraries[1]}"
"$lusym" part move "$document" /housing/inspection-cover --by 0,75,0
"$lusym" symbol place "$document" -q --from - <<'TABLE'
entry,attach,at,rotate,scale,size,fixed
shp-arrow,/housing/inspection-cover/plate,"76,305,115","z,90",1.6,,
shp-curved-arrow,,"232,0,192","y,90",1.3,,
img-step-1,,"43,235,215",,,46,no
img-warning-hot,,"76,70,330",,,64,no
TABLE
"$lusym" render "$document" -o docs/gearbox.png --fit --size 1200x760 --background white --shadow
"$lusym" flatten "$document" -o "$folder/page.luz" --fit
"$lusym" render "$folder/page.luz" -o docs/gearbox-page.png --size 900 --background white

page="$folder/manual.luz"
"$lusym" document new -o "$page" --page a4-landscape --page a4 --library "${libraries[1]}" --library "${libraries[0]}" \
  --library "$shared"
"$lusym" symbol place "$page" -q --from examples/manual/symbols.csv
"$lusym" render "$page" --page 1 --background white --size 900 -o docs/page.png

"$lusym" library gallery "${libraries[@]}" --shared "$shared" -o "$folder/gallery.html" --title "Example library"
chromium --headless --no-sandbox --hide-scrollbars --window-size=1180,900 --screenshot="$PWD/docs/gallery.png" \
  "file://$folder/gallery.html" 2>/dev/null

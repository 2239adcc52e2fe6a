#!/usr/bin/env bash
# exports_test.sh PLUGIN NM: what the built plug-in shows and what it needs.
set -euo pipefail
plugin=$1
nm=$2
failed=0

# Instrumented builds bring symbols of their own, all of them in the reserved name space.
allowed='^(LUDllInit|LUDllTerminate|LUDllCreateComponent|__[a-z_]+san.*|__odr_asan.*)$'
allowed+='|^(typeinfo for |typeinfo name for |vtable for |VTT for |non-virtual thunk to |virtual thunk to )?(lusymbols|luannotations)::'
shown=$("$nm" -D --defined-only --demangle "$plugin" | cut -d' ' -f3-)
strangers=$(grep -vE "$allowed" <<<"$shown" || true)
if [ -n "$strangers" ]; then
  echo "shown, but no entry point and no class of the plug-in:"
  echo "$strangers"
  failed=1
fi

for entry in LUDllInit LUDllTerminate LUDllCreateComponent; do
  grep -qx "$entry" <<<"$shown" || { echo "missing: $entry"; failed=1; }
done
for class in lusymbols::{PartslibraryItem,PartslibraryUIData,SymbolTemplateWriter,SymbolTemplateLoader} \
             luannotations::{Symbol2D,SymbolAnnotationBase,SymbolAnnotation,SymbolAnnotationFlattened}; do
  grep -qx "vtable for $class" <<<"$shown" || { echo "not usable from outside: $class"; failed=1; }
done
for record in Symbol2DInfo SymbolInfo; do
  grep -qx "luannotations::$record::$record()" <<<"$shown" || { echo "not usable from outside: $record"; failed=1; }
done
inside=$(grep -E 'StampLoaderEvent|UpdateStampEvent|MyLoadEvent|LoadingConnectPartEvent|Observer|ContentVisitor|symbol_keys' <<<"$shown" | grep -vE '::(Symbol2D|SymbolAnnotation)::[A-Za-z0-9]*\(' || true)
[ -z "$inside" ] || { echo "shown, but the plug-in's own business: $inside"; failed=1; }

needed=$(readelf -d "$plugin" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
extra=$(echo "$needed" | grep -vE '^(libluhost\.so.*|libstdc\+\+\.so.*|libm\.so.*|libgcc_s\.so.*|libc\.so.*|ld-linux.*|lib[a-z]*san\.so.*)$' || true)
if [ -n "$extra" ]; then
  echo "needed beyond the host and the standard library:"
  echo "$extra"
  failed=1
fi
exit $failed

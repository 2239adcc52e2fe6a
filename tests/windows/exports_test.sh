#!/usr/bin/env bash
# exports_test.sh PLUGIN HOST OBJDUMP: what the plug-in for Windows shows and what it needs.
set -euo pipefail
plugin=$1
host=$2
objdump=$3
failed=0

complain() { echo "$1"; echo "$2"; failed=1; }

exports() { "$objdump" -p "$1" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^.*\] *//p' | sed 's/^+base.* //' | grep -v Table; }
needed() { "$objdump" -p "$1" | sed -n 's/^.*DLL Name: //p'; }

plain=$(exports "$plugin" | grep -v '^_Z' | sort)
[ "$plain" = $'LUDllCreateComponent\nLUDllInit\nLUDllTerminate' ] || complain "shown by plain names:" "$plain"

mangled=$(exports "$plugin" | grep '^_Z')
strangers=$(grep -vE '^_Z(N[KVr]*|T[CISVT]N|T[hv][n0-9_]*N[KVr]*|GVN)(9lusymbols|13luannotations)' <<<"$mangled" || true)
[ -z "$strangers" ] || complain "shown, but no class of the plug-in:" "$strangers"
for class in 20SymbolTemplateWriterC1Eb 20SymbolTemplateWriter5ToXml; do
  grep -q "^_ZN9lusymbols$class" <<<"$mangled" || complain "missing:" "$class"
done

# One run-time library for all: none has its own linked into it.
for library in "$plugin" "$host"; do
  for runtime in libstdc++-6.dll libgcc_s_seh-1.dll; do
    needed "$library" | grep -qxF "$runtime" || complain "$library is not linked with" "$runtime"
    [ -e "$(dirname "$library")/$runtime" ] || complain "not shipped:" "$runtime"
  done
done
extra=$(needed "$plugin" | grep -viE '^(luhost|libstdc\+\+-6|libgcc_s_seh-1|libwinpthread-1|kernel32|msvcrt)\.dll$' || true)
[ -z "$extra" ] || complain "needed beyond the host and the standard library:" "$extra"
exit $failed

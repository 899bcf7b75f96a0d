#!/bin/sh
# Usage: check_exports.sh LIBRARY EXPORTS_DIR
# Checks the dynamic symbol table of the built library against the names
# listed in EXPORTS_DIR/*.txt (one name per line, # comments allowed).
set -u
lib=$1
dir=$2
fail=0
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

NM=${NM:-nm}
READELF=${READELF:-readelf}

cat "$dir"/*.txt | sed 's/#.*//; s/[[:space:]]//g' | grep -v '^$' | sort -u >"$tmp/expected"
# musl's start files export _init and _fini from every shared object.
$NM -D --defined-only "$lib" | awk '{sub(/@.*/, "", $3); print $3}' | grep -Ev '^$|^_(init|fini)$' |
    sort -u >"$tmp/defined"
$NM -D --undefined-only "$lib" | awk '{sub(/@.*/, "", $2); print $2}' | sort -u >"$tmp/undefined"

if ! diff -u "$tmp/expected" "$tmp/defined" >"$tmp/diff"; then
    echo "exports differ from the list (- listed only, + exported only):"
    cat "$tmp/diff"
    fail=1
fi

if $READELF -d "$lib" | grep -q 'libstdc++'; then
    echo "the library needs libstdc++"
    fail=1
fi
# __cxa_finalize and __cxa_atexit are the C library's, in every shared object.
if grep -E '^(_Z|__gxx|__cxa_(guard|pure|deleted|throw|rethrow|begin|end|allocate|free|call))' "$tmp/undefined"; then
    echo "the library needs C++ runtime symbols (above)"
    fail=1
fi
if grep -E '_s_chk$' "$tmp/undefined"; then
    echo "the library binds to checking entry points instead of the Annex K names (above)"
    fail=1
fi
platform='^(ke_ipc_call|ke_log_print_on|ke_os_[a-z_]+|igdCmConf(Get|Set|Add|Del|GetEntryNum|GetAllEntry)|igdCmOamCtrl|bdinfo_get_value|memcpy_s|memset_s|strcpy_s|sprintf_s)$'
if grep -E "$platform" "$tmp/defined"; then
    echo "the library defines platform functions (above)"
    fail=1
fi
for f in ke_ipc_call ke_log_print_on memcpy_s; do
    grep -qx "$f" "$tmp/undefined" || { echo "$f is not an undefined reference"; fail=1; }
done

[ $fail -eq 0 ] && echo "exports: $(wc -l <"$tmp/defined") names, as listed"
exit $fail

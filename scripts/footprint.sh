#!/bin/sh
# Usage: footprint.sh [--update] [BUILD_DIR...]   (default: build/armv7 build/armv7-musl)
#
# Measures the ARMv7 library of each build tree (configured with
# -DKE_FOOTPRINT=ON) and checks it against footprint.budget:
#   - size of the stripped library: text, data and bss, each at most its
#     budget line "<tree> <figure> <bytes>";
#   - dynamic dependencies: the C library only (no libstdc++, no libgcc_s);
#   - stack: every frame is static (no alloca, no variable-length array)
#     and holds no more than the records the function keeps on the stack
#     (structures and arrays, those of inlined helpers included, read from
#     the debug information) plus "stack_margin" bytes for saved registers,
#     outgoing arguments and scalars.
# --update re-bases the size lines of the trees measured at what they
# measure now plus 10 %, then checks.
set -eu
cd "$(dirname "$0")/.."
BUDGET=footprint.budget
TOOLS=${CROSS_PREFIX:-arm-linux-gnueabihf-}
ALLOWED_NEEDED='^libc\.so(\.6)?$'

update=0
if [ "${1:-}" = --update ]; then
    update=1
    shift
fi
[ $# -gt 0 ] || set -- build/armv7 build/armv7-musl

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail=0

# Concrete functions of one object's debug information, as "line:col bytes":
# the bytes of every structure or array held in the function's frame.
# Statics (a fixed address) and folded constants hold no stack.
records_of() {
    ${TOOLS}readelf --debug-dump=info "$1" | awk '
    function ref(v) { sub(/^.*</, "", v); sub(/>.*$/, "", v); sub(/^0x/, "", v); sub(/^0+/, "", v); return v }
    function num(v,   n, i, d) {
        sub(/^[ \t]+/, "", v)
        if (v !~ /^0x/) return v + 0
        n = 0
        for (i = 3; i <= length(v); i++) {
            d = index("0123456789abcdef", tolower(substr(v, i, 1)))
            if (d == 0) break
            n = n * 16 + d - 1
        }
        return n
    }
    function strip(t) {
        while (t != "" && tag[t] ~ /typedef|const_type|volatile_type/) t = type[t]
        return t
    }
    function bytes(t,   s) {
        t = strip(t)
        if (t == "") return 0
        if (bsize[t] != "") return bsize[t]
        if (tag[t] == "DW_TAG_array_type") return bytes(type[t]) * elems[t]
        return 0
    }
    function record_bytes(t) {
        return tag[strip(t)] ~ /structure_type|class_type|union_type|array_type/ ? bytes(t) : 0
    }
    function origin_of(o) { return origin[o] != "" ? origin[o] : decl_of[o] }
    function type_of(o) {
        while (type[o] == "" && origin_of(o) != "") o = origin_of(o)
        return type[o]
    }
    function key_of(o) {
        while (line[o] == "" && origin_of(o) != "") o = origin_of(o)
        return line[o] ":" col[o]
    }
    /^ *<[0-9]+><[0-9a-f]+>: Abbrev Number:/ {
        d = $1; sub(/^</, "", d); sub(/>.*/, "", d)
        cur = $1; sub(/^<[0-9]+></, "", cur); sub(/>:$/, "", cur); sub(/^0+/, "", cur)
        if ($0 !~ /\(DW_TAG_/) { cur = ""; next }
        t = $0; sub(/.*\(/, "", t); sub(/\).*/, "", t)
        tag[cur] = t; depth[cur] = d + 0; order[++n] = cur
        at[d + 0] = cur
        parent = d > 0 ? at[d - 1] : ""
        if (t == "DW_TAG_subrange_type" && parent != "") {
            if (!(parent in elems)) elems[parent] = 1
            owner[cur] = parent
        }
        next
    }
    cur != "" && /^ +<[0-9a-f]+> +DW_AT_/ {
        # A long attribute name runs into its colon ("DW_AT_specification:").
        a = $2; sub(/:$/, "", a); v = $0; sub(/^[^:]*: /, "", v)
        if (a == "DW_AT_type") type[cur] = ref(v)
        else if (a == "DW_AT_abstract_origin") origin[cur] = ref(v)
        else if (a == "DW_AT_specification") decl_of[cur] = ref(v)
        else if (a == "DW_AT_byte_size") bsize[cur] = num(v)
        else if (a == "DW_AT_decl_line") line[cur] = num(v)
        else if (a == "DW_AT_decl_column") col[cur] = num(v)
        else if (a == "DW_AT_low_pc" || a == "DW_AT_ranges") code[cur] = 1
        else if (a == "DW_AT_location" && v ~ /DW_OP_addr/) fixed[cur] = 1
        else if (a == "DW_AT_const_value") fixed[cur] = 1
        else if ((a == "DW_AT_upper_bound" || a == "DW_AT_count") && (cur in owner))
            elems[owner[cur]] *= num(v) + (a == "DW_AT_upper_bound")
    }
    END {
        for (i = 1; i <= n; i++) {
            f = order[i]
            if (tag[f] != "DW_TAG_subprogram" || !(f in code)) continue
            held = 0
            for (j = i + 1; j <= n && depth[order[j]] > depth[f]; j++) {
                o = order[j]
                if (tag[o] ~ /DW_TAG_(variable|formal_parameter)/ && !(o in fixed))
                    held += record_bytes(type_of(o))
            }
            print key_of(f), held
        }
    }'
}

# Size figures and dependencies of one tree's stripped library.
measure_library() {
    dir=$1 name=$2
    lib=$dir/src/libke_omci_tapi.so
    if [ ! -e "$lib" ]; then
        echo "$name: no library at $lib (build the tree first)"
        fail=1
        return
    fi
    ${TOOLS}strip -o "$tmp/$name.so" "$lib"
    ${TOOLS}size "$tmp/$name.so" | awk -v t="$name" 'NR == 2 { print t, "text", $1; print t, "data", $2; print t, "bss", $3 }' >>"$tmp/measured"
    # The file grows in whole pages (the writable segment starts on its own
    # page), so it is reported, not budgeted.
    echo "$name: stripped file $(wc -c <"$tmp/$name.so") bytes"

    needed=$(${TOOLS}readelf -d "$tmp/$name.so" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    echo "$name: needs $(echo $needed)"
    for n in $needed; do
        if ! echo "$n" | grep -Eq "$ALLOWED_NEEDED"; then
            echo "$name: depends on $n; only the C library is allowed"
            fail=1
        fi
    done
}

# Every function's frame against the records it holds plus the margin.
check_stack() {
    dir=$1 name=$2 margin=$3
    sus=$(find "$dir/src" -name '*.su' | sort)
    if [ -z "$sus" ]; then
        echo "$name: no stack-usage files (configure with -DKE_FOOTPRINT=ON)"
        fail=1
        return
    fi
    : >"$tmp/frames"
    for su in $sus; do
        obj=${su%.su}.o
        records_of "$obj" >"$tmp/records"
        awk -v margin="$margin" -v obj="$obj" '
            FNR == NR { if (!($1 in held) || $2 > held[$1]) held[$1] = $2; next }
            {
                split($0, f, "\t")
                if (!match(f[1], /:[0-9]+:[0-9]+:/)) next
                key = substr(f[1], RSTART + 1, RLENGTH - 2)
                fn = substr(f[1], RSTART + RLENGTH)
                rec = (key in held) ? held[key] : 0
                verdict = "ok"
                if (f[3] != "static") verdict = "frame is " f[3]
                else if (f[2] > rec + margin) verdict = "over " rec " + " margin
                printf "%d\t%d\t%s\t%s\n", f[2], rec, verdict, fn
            }' "$tmp/records" "$su" >>"$tmp/frames"
    done
    sort -t"$(printf '\t')" -k1,1nr "$tmp/frames" >"$tmp/frames.sorted"
    echo "$name: largest stack frames (bytes, records held, function):"
    head -n 5 "$tmp/frames.sorted" | awk -F'\t' '{ printf "  %6d %6d  %s\n", $1, $2, $4 }'
    if awk -F'\t' '$3 != "ok" { print "  " $4 ": frame " $1 ", " $3; bad = 1 } END { exit !bad }' \
        "$tmp/frames.sorted"; then
        echo "$name: stack frames above the records they hold plus $margin bytes (above)"
        fail=1
    fi
}

margin=$(awk '$1 == "stack_margin" { print $2 }' "$BUDGET")
[ -n "$margin" ] || { echo "$BUDGET has no stack_margin line"; exit 1; }

: >"$tmp/measured"
for dir in "$@"; do
    name=$(basename "$dir")
    measure_library "$dir" "$name"
    check_stack "$dir" "$name" "$margin"
done

if [ $update -eq 1 ]; then
    # Keep every line but those measured now; then add the new limits.
    awk 'FNR == NR { m[$1 " " $2] = 1; next } !(($1 " " $2) in m)' "$tmp/measured" "$BUDGET" >"$tmp/budget"
    awk '{ printf "%s %s %d\n", $1, $2, int(($3 * 11 + 9) / 10) }' "$tmp/measured" >>"$tmp/budget"
    cp "$tmp/budget" "$BUDGET"
    echo "re-based $BUDGET"
fi

echo "size of the stripped library (bytes, budget):"
if ! awk 'FNR == NR { if ($1 !~ /^#/ && NF == 3) limit[$1 " " $2] = $3; next }
          {
              k = $1 " " $2
              if (!(k in limit)) { printf "  %-24s %7d  no budget line\n", k, $3; bad = 1 }
              else if ($3 > limit[k]) { printf "  %-24s %7d  over %d\n", k, $3, limit[k]; bad = 1 }
              else printf "  %-24s %7d  %7d\n", k, $3, limit[k]
          }
          END { exit bad }' "$BUDGET" "$tmp/measured"; then
    echo "the library has grown past $BUDGET (scripts/footprint.sh --update re-bases it)"
    fail=1
fi

[ $fail -eq 0 ] && echo "footprint: within budget"
exit $fail

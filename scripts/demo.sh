#!/bin/sh
# The main job: installs what it needs, builds the library and its bench,
# and provisions a simulated SFU end to end from scenarios/sfu.omci.
#
# sml-sim plays the device's sml service, omci-shell the OMCI stack (the
# library loaded, its served calls served, the scenario's commands run); a
# second omci-shell hands over the LOID like the OLT-facing process does.
# The configuration tables live in an SQLite database, the OpenWrt
# configuration in uci files, both in a fresh run directory.  At the end
# the checks are made and a report says what reached each back end.
# Exit status 0 only when every check held.
set -eu
cd "$(dirname "$0")/.."
ROOT=$PWD

usage() {
    cat <<EOF
usage: scripts/demo.sh [options]
Installs the host packages, builds build/demo, and provisions a
simulated SFU end to end; exits 0 only when every check held.

  --build-dir DIR   use the programs already built in DIR: no install, no build
  --scenario FILE   the omci-shell script to run (default: scenarios/sfu.omci)
  --image-kib N     size of the generated firmware image (default: 3205 KiB)
  --keep            keep the run directory (it is kept anyway when a check fails)
  --help            this text
EOF
}

BUILD=
SCENARIO=scenarios/sfu.omci
IMAGE_KIB=3205
KEEP=0
while [ $# -gt 0 ]; do
    case $1 in
    --build-dir) BUILD=${2:?--build-dir needs a directory}; shift 2 ;;
    --scenario) SCENARIO=${2:?--scenario needs a file}; shift 2 ;;
    --image-kib) IMAGE_KIB=${2:?--image-kib needs a number}; shift 2 ;;
    --keep) KEEP=1; shift ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
    esac
done
case $SCENARIO in /*) ;; *) SCENARIO=$ROOT/$SCENARIO ;; esac
[ -r "$SCENARIO" ] || { echo "demo: cannot read $SCENARIO" >&2; exit 2; }

if [ -z "$BUILD" ]; then
    scripts/deps.sh --host
    # A tree of its own: turning the tests off in build/release would stay in
    # that tree's cache and leave the test command without its suite.
    scripts/build.sh build/demo -DCMAKE_BUILD_TYPE=Release -DKE_BUILD_TESTS=OFF
    BUILD=build/demo
fi
case $BUILD in /*) ;; *) BUILD=$ROOT/$BUILD ;; esac
SIM=$BUILD/tools/sml_sim/sml-sim
OMCI=$BUILD/tools/omci_shell/omci-shell
DUMP=$BUILD/tools/cm_dump/cm-dump
for p in "$SIM" "$OMCI" "$DUMP" "$BUILD/bin/uci"; do
    [ -x "$p" ] || { echo "demo: $p is not built" >&2; exit 2; }
done

# ---- The run directory and the processes, cleaned up on every exit ------

RUN=$(mktemp -d /tmp/ke_demo.XXXXXX)
export KE_RUN_DIR="$RUN" KE_CM_DB="$RUN/cm.db"
export UCI_CONFIG_DIR="$RUN/config" UCI_SAVE_DIR="$RUN/uci-staged"
export PATH="$BUILD/bin:$PATH"
mkdir "$UCI_CONFIG_DIR" "$UCI_SAVE_DIR"
cp "$ROOT"/scenarios/openwrt/* "$UCI_CONFIG_DIR"/

FAILED=0
stop() {
    [ -s "$1" ] || return 0
    pid=$(cat "$1")
    kill "$pid" 2>/dev/null || return 0
    # A process that does not stop at once is not waited for long.
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.2
    done
    kill -9 "$pid" 2>/dev/null || true
}
cleanup() {
    status=$?
    trap - EXIT INT TERM
    stop "$RUN/omci-shell.pid"
    stop "$RUN/sml-sim.pid"
    if [ "$status" -eq 0 ] && [ "$KEEP" -eq 0 ]; then
        rm -rf "$RUN"
    else
        echo "run directory kept: $RUN"
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Waits up to 10 s for the socket of a served name.
wait_served() {
    for _ in $(seq 100); do
        [ -S "$RUN/ipc/$1" ] && return 0
        sleep 0.1
    done
    echo "demo: nobody serves $1; see $2" >&2
    exit 1
}

check() {
    if [ "$2" = "$3" ]; then
        echo "  ok    $1"
    else
        echo "  FAIL  $1: expected '$3', got '$2'"
        FAILED=$((FAILED + 1))
    fi
}

# ---- The service, the image, the OMCI stack ------------------------------

echo "Run directory $RUN"
"$SIM" --run-dir "$RUN" --log "$RUN/sml-sim.log" >"$RUN/sml-sim.out" 2>&1 &
echo $! >"$RUN/sml-sim.pid"
wait_served ke_ke_sml_gpon_tcont_set_call "$RUN/sml-sim.out"

boot_flag() {
    "$OMCI" --run-dir "$RUN" --call ke_ke_upgrade_flag_get_call 00000000 |
        sed -n 's/^  reply = \(..\) .*/\1/p'
}
FLAG_BEFORE=$(boot_flag)

head -c $((IMAGE_KIB * 1024)) /dev/urandom >"$RUN/firmware.img"
IMAGE_SHA=$(sha256sum <"$RUN/firmware.img" | cut -d' ' -f1)

echo "Provisioning an SFU from ${SCENARIO#"$ROOT"/}"
# The shell's output goes to omci-shell.out, its step names to the
# terminal; the download's progress bar is drawn on standard error.
(
    cd "$RUN"
    "$OMCI" --run-dir "$RUN" --trace "$SCENARIO" &
    echo $! >"$RUN/omci-shell.pid"
    status=0
    wait $! || status=$?
    echo "$status" >"$RUN/omci-shell.status"
) | tee "$RUN/omci-shell.out" | sed -un 's/^== /  /p; s/^error: /  error: /p' &
PIPELINE=$!
wait_served ke_ke_omci_set_loid_call "$RUN/omci-shell.out"

# The OLT-facing process hands over the LOID and its password.
"$OMCI" --run-dir "$RUN" --call set_loid LOID-SFU-0001 >"$RUN/loid.out"
"$OMCI" --run-dir "$RUN" --call set_loidpwd pw-0001 >>"$RUN/loid.out"
wait "$PIPELINE"

# ---- Checks ----------------------------------------------------------------

echo "Checks"
SHELL_STATUS=$(cat "$RUN/omci-shell.status" 2>/dev/null || echo none)
COMMANDS=$(grep -c '^\[cmd\]' "$RUN/omci-shell.out" || true)
EXPECTS=$(grep -c '^\[cmd\] expect ' "$RUN/omci-shell.out" || true)
ERRORS=$(grep -c '^error: ' "$RUN/omci-shell.out" || true)
check "scenario: every command ran and every expect held ($EXPECTS expects)" "$SHELL_STATUS/$ERRORS" "0/0"

case $FLAG_BEFORE in 01) SECTION=0 ;; *) SECTION=1 ;; esac
FLAG_AFTER=$(boot_flag)
check "boot flag switched to the section written" "$FLAG_AFTER" "0$SECTION"
SECTION_FILE=$RUN/flash/section$SECTION.bin
SECTION_SHA=$(sha256sum <"$SECTION_FILE" 2>/dev/null | cut -d' ' -f1 || true)
check "section $SECTION holds the image byte for byte (sha256)" "$SECTION_SHA" "$IMAGE_SHA"

uci_get() { uci -q get "$1" || true; }
check "network.pon_1 created through uci" "$(uci_get network.pon_1)" "interface"
check "network.pon_1 on the VLAN device" "$(uci_get network.pon_1.device)" "pon.200"
check "network.pon_1 static address" "$(uci_get network.pon_1.ipaddr)/$(uci_get network.pon_1.netmask)" \
    "10.20.0.10/255.255.255.0"
check "VLAN device pon.200 with its priority" "$(uci_get network.@device[1].name)/$(uci_get network.@device[1].vid)" \
    "pon.200/200"
check "firewall zone wan takes pon_1" "$(uci_get firewall.@zone[1].network)" "wan wan6 pon_1"
check "IGMP proxy upstream on pon_1" "$(uci_get igmpproxy.@phyint[1].network)/$(uci_get igmpproxy.@phyint[1].direction)" \
    "pon_1/upstream"
RELOADS=$(grep -c '^\[sh\] not run: ( sleep 5; /etc/init.d/network reload' "$RUN/omci-shell.out" || true)
check "service reload asked for, and only logged" "$RELOADS" "1"

"$DUMP" --db "$RUN/cm.db" >"$RUN/cm-dump.out"
MISSING=
for t in 807 808 810 811 813 815 817 818 819 820 821 822 824 825 826 834 \
         465 470 471 473 474 476 477 478; do
    grep -q "^table $t " "$RUN/cm-dump.out" || MISSING="$MISSING $t"
done
check "configuration tables written by the scenario" "${MISSING:-none missing}" "none missing"

# ---- Report ----------------------------------------------------------------

# Words joined into indented lines of at most 100 columns.
wrap() { tr '\n' ' ' | fold -s -w 85 | sed 's/^/               /; s/ *$//'; echo; }

echo "Report"
echo "  omci-shell   $COMMANDS commands of ${SCENARIO#"$ROOT"/}: $EXPECTS expects, $ERRORS errors"
echo "  sml service  $(wc -l <"$RUN/sml-sim.log") calls of" \
    "$(awk '{print $1}' "$RUN/sml-sim.log" | sort -u | wc -l) remote procedures (sml-sim.log):"
awk '{sub(/^ke_ke_/, "", $1); sub(/_call$/, "", $1); n[$1]++} END {for (p in n) print p "(" n[p] ")"}' \
    "$RUN/sml-sim.log" | sort | wrap
echo "  tables       $(grep -c '^table ' "$RUN/cm-dump.out") configuration tables (cm-dump), entries:"
sed -n 's/^table \([0-9]*\) IGD_CO_\([A-Z0-9_]*\)_TAB: \([0-9]*\) entr.*/\1:\2(\3)/p' \
    "$RUN/cm-dump.out" | wrap
echo "  OpenWrt      $(grep -c '^\[sh\] ran: uci' "$RUN/omci-shell.out" || true) uci commands run," \
    "$(grep -c '^\[sh\] not run' "$RUN/omci-shell.out" || true) only logged (the service reload); committed:"
for c in network.pon_1 network.@device[1] firewall.@zone[1] igmpproxy.@phyint[1]; do
    uci show "$c" | sed 's/^[a-z]*\.[^.=]*\.//'
done | wrap
echo "  firmware     $IMAGE_KIB KiB in" \
    "$(grep -c '^\[ipc\] ke_ke_upgrade_image_sharding_write_call' "$RUN/omci-shell.out" || true)" \
    "shards, section $SECTION, boot flag $FLAG_BEFORE -> $FLAG_AFTER"
if [ "$FAILED" -eq 0 ]; then
    echo "Every check held."
else
    echo "$FAILED checks failed."
    exit 1
fi

#!/bin/sh
# Usage: fuzz.sh [-t SECONDS | -n RUNS] [-s SEED] [TARGET...]
# Builds the fuzzers (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build/fuzz and runs each target for
# SECONDS (default 600) or RUNS executions, starting from its committed
# corpus; with a SEED and a number of RUNS a run is the same every time.  New inputs go to build/fuzz/corpus/<target>; an input that
# crashes, hangs or leaks is kept in build/fuzz/artifacts/<target>/.
# Prints each target's executions and rate; fails when any target found
# something.  Targets: served_calls uci_config uci_command voip_wan
# ipc_server omci_shell (default: all).
set -eu
cd "$(dirname "$0")/.."
limit="-max_total_time=600"
seed=
while getopts t:n:s: opt; do
    case $opt in
    t) limit="-max_total_time=$OPTARG" ;;
    n) limit="-runs=$OPTARG" ;;
    s) seed="-seed=$OPTARG" ;;
    *) echo "usage: $0 [-t SECONDS | -n RUNS] [-s SEED] [TARGET...]" >&2; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
targets=${*:-"served_calls uci_config uci_command voip_wan ipc_server omci_shell"}

build=build/fuzz
mkdir -p "$build"
# Optimised (-O2 -g), as fuzzers usually are: the sanitizers check the same,
# at about twice the executions per second of -O0.
{ CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKE_FUZZ=ON \
    -DKE_BUILD_TESTS=OFF && cmake --build "$build" -j"$(nproc)" --target fuzzers; } \
    >"$build/build.log" 2>&1 || { tail -40 "$build/build.log"; exit 1; }

# The targets' scratch files (configuration files, stores, sockets) are made
# and removed thousands of times a second: on tmpfs, when there is one, that
# costs a fifth less than on a journaled disk.
scratch="$PWD/$build/run"
if [ -d /dev/shm ] && [ -w /dev/shm ]; then
    scratch=$(mktemp -d /dev/shm/ke_fuzz.XXXXXX)
    trap 'rm -rf "$scratch"' EXIT
fi

failed=
summary=
for t in $targets; do
    work="$build/corpus/$t"
    artifacts="$build/artifacts/$t"
    mkdir -p "$work" "$artifacts" "$scratch/$t"
    log="$build/$t.log"
    echo "fuzz: $t ($limit)"
    if KE_RUN_DIR="$scratch/$t" "$build/fuzz/fuzz_$t" "$limit" $seed -timeout=10 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$artifacts/" \
        "$work" "fuzz/corpus/$t" >"$log" 2>&1; then
        result=ok
    else
        result=FAILED
        failed="$failed $t"
        tail -40 "$log"
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    secs=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
    line=$(printf '%-14s %-6s %12s executions %8s s %8s exec/s' "$t" "$result" \
        "${runs:-?}" "${secs:-?}" "${rate:-?}")
    echo "$line"
    summary="$summary$line
"
done
printf '\nfuzz summary:\n%s' "$summary"
if [ -n "$failed" ]; then
    echo "fuzz: findings in:$failed (inputs in $build/artifacts/)" >&2
    exit 1
fi

#!/bin/sh
# Installs the Debian packages the build, the tests and the ARMv7 target
# need.  Safe to run again: installed packages are left as they are, and
# when everything is there it returns without touching the network.
set -eu
SUDO=
[ "$(id -u)" -eq 0 ] || SUDO=sudo
export DEBIAN_FRONTEND=noninteractive

HOST_PACKAGES="cmake make g++ binutils file pkgconf libgtest-dev libgmock-dev libsafec-dev libsqlite3-dev"
# The fuzzers: clang with libFuzzer and its sanitizer runtimes.
HOST_PACKAGES="$HOST_PACKAGES clang libclang-rt-14-dev"
# The benchmarks (scripts/bench.sh): Google Benchmark.
HOST_PACKAGES="$HOST_PACKAGES libbenchmark-dev"
# The device's processor: the cross compiler, the emulator that runs the
# ARMv7 tests, the test dependencies built for armhf, and musl for armhf.
ARMV7_PACKAGES="g++-arm-linux-gnueabihf qemu-user libsafec-dev:armhf libgtest-dev:armhf musl-dev:armhf"

# --host: what the host build needs, without the ARMv7 target.
if [ "${1:-}" = "--host" ]; then
    ARMV7_PACKAGES=
elif ! dpkg --print-foreign-architectures | grep -qx armhf; then
    $SUDO dpkg --add-architecture armhf
fi

missing=
for p in $HOST_PACKAGES $ARMV7_PACKAGES; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing="$missing $p"
done
[ -z "$missing" ] && exit 0

# A mirror can fail an index for a minute while it syncs (exit 100): try a
# few times, then let the install be the step that must succeed.
for attempt in 1 2 3 4 5; do
    $SUDO apt-get update && break
    echo "apt-get update failed (attempt $attempt), retrying" >&2
    sleep 15
done
$SUDO apt-get install -y --no-install-recommends $missing

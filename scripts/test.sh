#!/bin/sh
# Every test: installs what it needs, builds and runs the suite in each
# build: the host under AddressSanitizer and UndefinedBehaviorSanitizer,
# then the plain Release build (which also checks the export list), a
# short run of each fuzzer, then the whole suite built for ARMv7 and run
# under qemu-arm; then the library alone against musl, and the footprint
# of both ARMv7 libraries.
set -eu
cd "$(dirname "$0")/.."
scripts/deps.sh

scripts/build.sh build/host -DCMAKE_BUILD_TYPE=Debug -DKE_SANITIZE=ON
ctest --test-dir build/host --output-on-failure

scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release
ctest --test-dir build/release --output-on-failure

# Every fuzz target briefly under libFuzzer, the same runs every time so
# that a red run is a finding, not luck (scripts/fuzz.sh runs them long).
scripts/fuzz.sh -n 20000 -s 1

# The library as an image build takes it: installed, and consumed through
# pkg-config and the CMake package.
tests/consumer/run.sh build/release

scripts/build.sh build/armv7 -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake \
    -DCMAKE_BUILD_TYPE=Release -DKE_FOOTPRINT=ON
ctest --test-dir build/armv7 --output-on-failure

CC=arm-linux-gnueabihf-gcc tests/consumer/run.sh build/armv7 "$PWD/cmake/arm-linux-gnueabihf.cmake"

scripts/build.sh build/armv7-musl -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-musleabihf.cmake \
    -DCMAKE_BUILD_TYPE=Release -DKE_LIBRARY_ONLY=ON -DKE_FOOTPRINT=ON
NM=arm-linux-gnueabihf-nm READELF=arm-linux-gnueabihf-readelf \
    tests/check_exports.sh build/armv7-musl/src/libke_omci_tapi.so tests/exports
# The public headers as C against musl, with their layout checks.
for h in include/ke_omci_tapi/*.h; do
    arm-linux-gnueabihf-gcc -specs /usr/lib/arm-linux-musleabihf/musl-gcc.specs \
        -std=c11 -pedantic -Wall -Wextra -Werror -fsyntax-only -x c "$h"
done

scripts/footprint.sh build/armv7 build/armv7-musl

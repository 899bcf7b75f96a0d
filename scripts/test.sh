#!/bin/sh
# Every test: installs what it needs, builds and runs the suite in each
# build: the host under AddressSanitizer and UndefinedBehaviorSanitizer,
# then the plain Release build (which also checks the export list).
set -eu
cd "$(dirname "$0")/.."
scripts/deps.sh

scripts/build.sh build/host -DCMAKE_BUILD_TYPE=Debug -DKE_SANITIZE=ON
ctest --test-dir build/host --output-on-failure

scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release
ctest --test-dir build/release --output-on-failure

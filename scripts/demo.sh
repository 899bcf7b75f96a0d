#!/bin/sh
# The main job: installs what it needs, builds the library and runs the
# demonstration against a service simulated in the same process.
set -eu
cd "$(dirname "$0")/.."
scripts/deps.sh --host
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release -DKE_BUILD_TESTS=OFF
build/release/tools/pon_demo

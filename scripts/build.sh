#!/bin/sh
# Usage: build.sh DIR [cmake options...]: configure and build one tree.
set -eu
dir=$1
shift
cmake -S "$(dirname "$0")/.." -B "$dir" "$@"
cmake --build "$dir" -j"$(nproc)"

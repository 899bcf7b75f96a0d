#!/bin/sh
# Usage: run.sh BUILD_DIR [TOOLCHAIN_FILE]
# Installs the library and the platform stand-in from BUILD_DIR into a
# temporary prefix, builds the consumer against the install with pkg-config
# and with find_package, and runs both.  With a toolchain file the install
# is staged with DESTDIR under prefix /usr, as an image build does, and the
# consumer is built through the staging tree's sysroot settings.
set -eu
build=$(cd "$1" && pwd)
toolchain=${2:-}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ -z "$toolchain" ]; then
    prefix=$work/prefix
    root=
    cmake --install "$build" --prefix "$prefix" --component library >/dev/null
    cmake --install "$build" --prefix "$prefix" --component platform >/dev/null
else
    prefix=/usr
    root=$work/staging
    DESTDIR=$root cmake --install "$build" --prefix "$prefix" --component library >/dev/null
    DESTDIR=$root cmake --install "$build" --prefix "$prefix" --component platform >/dev/null
fi
libdir=$(cd "$root$prefix" && ls -d lib*/ | head -n 1)
libdir=${libdir%/}

# pkg-config: the .pc files name the target prefix; the sysroot points them
# into the staging tree.
CC=${CC:-cc}
PKG_CONFIG_PATH=$root$prefix/$libdir/pkgconfig
PKG_CONFIG_SYSROOT_DIR=$root
export PKG_CONFIG_PATH PKG_CONFIG_SYSROOT_DIR
flags=$(pkg-config --cflags --libs ke_omci_tapi ke_platform)
# shellcheck disable=SC2086
$CC -std=c99 -Wall -Wextra -pedantic -Werror -o "$work/consumer_pc" "$here/consumer.c" $flags

# find_package.
if [ -z "$toolchain" ]; then
    cmake -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
else
    cmake -S "$here" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_FIND_ROOT_PATH="$root" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
fi
cmake --build "$work/build" >/dev/null

run() {
    if [ -z "$toolchain" ]; then
        LD_LIBRARY_PATH=$prefix/$libdir "$@"
    else
        ${KE_EMULATOR:-qemu-arm} -L "${KE_TARGET_ROOT:-/usr/arm-linux-gnueabihf}" \
            -E LD_LIBRARY_PATH="$root$prefix/$libdir" "$@"
    fi
}
run "$work/consumer_pc"
run "$work/build/consumer"
echo "installed tree:"
(cd "$root$prefix" && find . -type f -o -type l | sort | sed 's/^/    /')

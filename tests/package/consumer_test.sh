#!/usr/bin/env bash
# Installs a build into a temporary prefix, then builds and runs the example
# program against it twice: through the CMake package and through pkg-config.
#   consumer_test.sh BUILD_DIR EXAMPLES_DIR
set -euo pipefail
build=$1 examples=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/palvet-package-XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null

echo "== find_package(palvet)"
cmake -S "$examples" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_CXX_COMPILER="${CXX:-c++}" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/palvet-example" "$work/cmake.log"

echo "== pkg-config palvet"
pcdir=$(dirname "$(find "$prefix" -name palvet.pc | head -n 1)")
flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs palvet)
"${CXX:-c++}" -std=c++17 "$examples/main.cpp" $flags -o "$work/pc-example"
libdir=$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir palvet)
LD_LIBRARY_PATH=$libdir "$work/pc-example" "$work/pc.log"

# The installed tree holds public headers only.
if find "$prefix" -name '*_internal.h' | grep -q .; then
  echo "internal headers were installed" >&2
  exit 1
fi

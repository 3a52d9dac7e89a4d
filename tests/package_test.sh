#!/bin/sh
# package_test.sh BUILD SOURCE CMAKE GENERATOR: installs what BUILD has built into a
# temporary prefix, moves that elsewhere, and builds and runs tests/package on it,
# once through find_package and once through pkg-config. Then the same with a shared
# library of the same flags. Nothing outside the temporary folder is written.
set -eu

build=$1 source=$2 cmake=$3 generator=$4

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# cached NAME: a value from the cache of BUILD.
cached() {
  sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"
}
cxx=$(cached CMAKE_CXX_COMPILER)
type=$(cached CMAKE_BUILD_TYPE)
flags=$(cached CMAKE_CXX_FLAGS)

fail() {
  echo "package_test: $*" >&2
  exit 1
}

# consume BUILD NAME SUFFIX: installs from BUILD and checks that both consumers find
# and run with liburldb.SUFFIX.
consume() {
  prefix=$scratch/$2
  "$cmake" --install "$1" --prefix "$scratch/first" --component development \
    >"$scratch/log" || { cat "$scratch/log" && fail "$2: install failed"; }
  mv "$scratch/first" "$prefix"
  find "$prefix" -name "liburldb.$3*" | grep -q . || fail "$2: no liburldb.$3"
  for header in common/error.h url/url.h urldb/urldb.h; do
    [ -f "$prefix/include/urldb/$header" ] || fail "$2: $header is not installed"
  done
  if grep -rqF -e "$source" -e "$scratch" "$prefix/include" \
    "$(dirname "$(find "$prefix" -name urldbConfig.cmake)")" \
    "$(find "$prefix" -name urldb.pc)"; then
    fail "$2: an installed file names a folder of this machine"
  fi

  {
    "$cmake" -S "$source/tests/package" -B "$prefix/consumer" -G "$generator" \
      -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
      -DCMAKE_BUILD_TYPE="$type" -DCMAKE_CXX_FLAGS="$flags" &&
      "$cmake" --build "$prefix/consumer"
  } >"$scratch/log" 2>&1 ||
    { cat "$scratch/log" && fail "$2: no build through find_package"; }
  [ "$("$prefix/consumer/consumer" "$scratch/a.db")" = 'looked up' ] ||
    fail "$2: wrong answers of the program built through find_package"

  PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name urldb.pc)")
  export PKG_CONFIG_PATH
  libdir=$(pkg-config --variable=libdir urldb)
  # shellcheck disable=SC2046,SC2086
  "$cxx" -std=c++20 $flags $(pkg-config --cflags urldb) -o "$prefix/plain" \
    "$source/tests/package/main.cc" $(pkg-config --libs urldb) \
    -Wl,-rpath,"$libdir" || fail "$2: no build through pkg-config"
  [ "$("$prefix/plain" "$scratch/b.db")" = 'looked up' ] ||
    fail "$2: wrong answers of the program built through pkg-config"
}

case $(cached BUILD_SHARED_LIBS) in
  ON) consume "$build" built so ;;
  *) consume "$build" built a ;;
esac

{
  "$cmake" -S "$source" -B "$scratch/build" -G "$generator" \
    -DBUILD_SHARED_LIBS=ON -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_BUILD_TYPE="$type" -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$(cached CMAKE_CXX_COMPILER_LAUNCHER)" &&
    "$cmake" --build "$scratch/build" --target liburldb
} >"$scratch/log" 2>&1 || { cat "$scratch/log" && fail 'shared: no build'; }
consume "$scratch/build" shared so

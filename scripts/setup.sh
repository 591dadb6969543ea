#!/usr/bin/env bash
# Prepares a Debian machine for both builds; safe to run again.
#  1. installs the Debian packages that the native and the Windows build need;
#  2. cross-builds libxml2 for MinGW-w64 from Debian's source package into a cache folder
#     outside the source tree, unless that cache already holds it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

packages=(
  # build tools and generators
  cmake ninja-build python3 dpkg-dev ca-certificates
  # the Windows build: MinGW-w64 with posix threads, zlib for MinGW, Wine to run its tests
  g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
  libz-mingw-w64-dev wine64
  # the native build: libraries, GoogleTest (also the source the Windows build compiles)
  g++ libxml2-dev zlib1g-dev libgtest-dev googletest libbenchmark-dev
  # the keyboard benchmarks' peer: libxkbcommon with the XKB layouts and the compose tables
  libxkbcommon-dev xkb-data libx11-data
  # fuzzing and sanitizers with clang
  clang lld libclang-rt-14-dev
  # the layout of the C and C++ sources (scripts/format.sh)
  clang-format
  # the coverage report of the native tests (scripts/coverage.sh)
  gcovr
  # independent tools that the tests and benchmarks check the media code against
  gzip zip unzip 7zip xdms unadf genisoimage
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

if [ -f "$KQ_LIBXML2_MINGW/lib/libxml2.a" ]; then
  exit 0
fi

# libxml2 comes from Debian's own source package (with Debian's security patches), so the
# Windows build parses manifests with the same library version as the native one.
if ! apt-get source --download-only --print-uris libxml2 >/dev/null 2>&1; then
  # Mirror the machine's own Debian entry as a deb-src entry (same URIs, suites, key).
  src_list=/etc/apt/sources.list.d/kq-debian-src.sources
  if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    sed 's/^Types: deb$/Types: deb-src/' /etc/apt/sources.list.d/debian.sources | as_root tee "$src_list" >/dev/null
  else
    grep -h '^deb ' /etc/apt/sources.list | sed 's/^deb /deb-src /' | as_root tee "${src_list%.sources}.list" >/dev/null
  fi
  as_root apt-get update -qq
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && apt-get source -qq libxml2 >/dev/null 2>&1) || (cd "$work" && apt-get source libxml2)
src=$(find "$work" -maxdepth 1 -type d -name 'libxml2-*' | head -n 1)
[ -n "$src" ] || { echo "setup: libxml2 source not found" >&2; exit 1; }

# Static, no network, no HTTP/FTP, no iconv, no compression, no Python. LIBXML_STATIC keeps
# libxml2's functions from being marked for export (they would appear in amiga.dll's export
# table). Win32 threads with LIBXML_STATIC_FOR_DLL: libxml2 then provides xmlDllMain, which
# the module's DllMain calls for every notification so that per-thread XML state is freed
# when a host thread ends. (Forcing HAVE_PTHREAD_H off keeps the posix-thread compiler from
# selecting pthreads.)
cmake -S "$src" -B "$work/build" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$KQ_ROOT/cmake/mingw-w64-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX="$KQ_LIBXML2_MINGW" \
  -DCMAKE_C_FLAGS="-DLIBXML_STATIC -DLIBXML_STATIC_FOR_DLL" \
  -DHAVE_PTHREAD_H= \
  -DBUILD_SHARED_LIBS=OFF \
  -DLIBXML2_WITH_HTTP=OFF -DLIBXML2_WITH_FTP=OFF -DLIBXML2_WITH_ICONV=OFF \
  -DLIBXML2_WITH_LZMA=OFF -DLIBXML2_WITH_ZLIB=OFF -DLIBXML2_WITH_PYTHON=OFF \
  -DLIBXML2_WITH_PROGRAMS=OFF -DLIBXML2_WITH_TESTS=OFF >/dev/null
cmake --build "$work/build" >/dev/null
cmake --install "$work/build" >/dev/null
echo "setup: libxml2 for MinGW-w64 installed in $KQ_LIBXML2_MINGW"

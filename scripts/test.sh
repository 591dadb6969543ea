#!/usr/bin/env bash
# Sets up the machine, then builds and runs every test: the native build under ASan/UBSan, the
# fuzz targets (clang, libFuzzer) over their seed corpora, then the Windows build, whose tests
# (the core against the real Windows services, and the built amiga.dll) run under Wine.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
"$here/setup.sh"
cd "$KQ_ROOT"
for preset in native fuzz win64; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done

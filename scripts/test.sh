#!/usr/bin/env bash
# Sets up the machine, checks that every C and C++ source is formatted (scripts/format.sh), then
# builds and runs every test: the native build under ASan/UBSan, the fuzz targets (clang,
# libFuzzer) over their seed corpora and then for a minute each, then the Windows build, whose
# tests (the core against the real Windows services, and the built amiga.dll) run under Wine.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
"$here/setup.sh"
cd "$KQ_ROOT"
# Layout is the formatter's, not the reviewer's: unformatted sources fail the run first.
echo "== format"
"$here/format.sh" --check
for preset in native fuzz win64; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
  if [[ $preset == fuzz ]]; then
    # Every fuzz target for a while (KQ_FUZZ_SECONDS each, 0 to skip).
    if ((${KQ_FUZZ_SECONDS:-60} > 0)); then "$here/fuzz.sh" "${KQ_FUZZ_SECONDS:-60}"; fi
  fi
done

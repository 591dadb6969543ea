#!/usr/bin/env bash
# Sets up the machine, checks that every C and C++ source is formatted (scripts/format.sh), then
# builds and runs every test: the native build under ASan/UBSan, the fuzz targets (clang,
# libFuzzer) over their seed corpora and then for 20 seconds each (scripts/fuzz.sh SECONDS runs
# them longer), then the Windows build, whose tests (the core against the real Windows services,
# and the built amiga.dll) run under Wine.
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
  # The native and fuzz tests are separate processes with their own temporary folders, so they
  # run side by side; the Windows ones share one Wine prefix and its registry, so they take turns.
  if [[ $preset == win64 ]]; then ctest --preset "$preset"; else ctest --preset "$preset" -j "$(nproc)"; fi
  if [[ $preset == fuzz ]]; then
    # Every fuzz target briefly (KQ_FUZZ_SECONDS each, 0 to skip): enough to catch a reader
    # broken by the change at hand; longer searches are scripts/fuzz.sh SECONDS.
    if ((${KQ_FUZZ_SECONDS:-20} > 0)); then "$here/fuzz.sh" "${KQ_FUZZ_SECONDS:-20}"; fi
  fi
done

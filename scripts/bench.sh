#!/usr/bin/env bash
# Builds the optimised benchmarks (the "bench" preset), runs every benchmark with its peers in
# one run and writes docs/PERFORMANCE.md: the machine, the date, the command and one table.
#
#   scripts/bench.sh
#
# KQ_BENCH_BUILD=DIR builds in DIR instead of the preset's build/bench (for a second build tree
# beside someone else's); CMAKE_BUILD_PARALLEL_LEVEL limits the build's jobs as usual. The
# whole run takes a few minutes on two cores; each program's output stays in the log folder
# that the script names at the end. Fails when a benchmark fails (its row then says so).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
cd "$KQ_ROOT"

command_line="scripts/bench.sh"
if [ -n "${KQ_BENCH_BUILD:-}" ]; then
  build=$KQ_BENCH_BUILD
  command_line="KQ_BENCH_BUILD=$KQ_BENCH_BUILD $command_line"
  cmake --preset bench -B "$build"
  cmake --build "$build"
else
  build=$KQ_ROOT/build/bench
  cmake --preset bench
  cmake --build --preset bench
fi
programs=$build/bench

results=$(mktemp -d "${TMPDIR:-/tmp}/kq-bench.XXXXXX")
load() { cut -d' ' -f1 /proc/loadavg; }
echo "$(load)" >"$results/load.txt"

# Runs one benchmark: NAME then its command; keeps its output, exit status and duration.
measure() {
  local name=$1
  shift
  echo "bench: $name"
  local start end rc=0
  start=$(date +%s.%N)
  "$@" >"$results/$name.txt" 2>&1 || rc=$?
  end=$(date +%s.%N)
  echo "$rc" >"$results/$name.rc"
  python3 -c "import sys; print(float(sys.argv[2]) - float(sys.argv[1]))" "$start" "$end" >"$results/$name.seconds"
  [ "$rc" -eq 0 ] || echo "bench: $name failed ($rc); see $results/$name.txt" >&2
}

measure key_translation "$programs/key_translation_bench" \
  --benchmark_out="$results/key_translation.json" --benchmark_out_format=json
measure typing "$programs/typing_bench" --summary
measure compression "$programs/compression_bench" --summary
measure dms "$programs/dms_bench" --summary
measure volume_name "$programs/volume_name_bench" --summary
measure auto_configuration "$programs/auto_configuration_bench" --summary

echo "$(load)" >>"$results/load.txt"
python3 tools/bench_report.py --results "$results" --build "$build" --command "$command_line" \
  --output docs/PERFORMANCE.md
echo "bench: wrote docs/PERFORMANCE.md; outputs in $results"
! grep -qv '^0$' "$results"/*.rc

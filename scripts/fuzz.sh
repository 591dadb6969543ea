#!/usr/bin/env bash
# Runs every libFuzzer target of the fuzz build for SECONDS each (default 60), as many at once
# as the machine has cores, each from its committed seed corpus and the inputs of earlier
# findings. New interesting inputs go to a scratch folder, not into the tree. A target that
# finds a crash, a leak or a broken check fails the run; its input is kept in
# build/fuzz/findings/<target>/ (to become a regression input under tests/data/fuzz/<name>/).
# Expects the fuzz preset to be built: cmake --preset fuzz && cmake --build --preset fuzz
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
seconds=${1:-60}
jobs=$(nproc)
bin="$KQ_ROOT/build/fuzz/fuzz"
findings="$KQ_ROOT/build/fuzz/findings"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

run_target() {
  local target=$1 name=${1%_fuzz}
  local inputs=("$KQ_ROOT/fuzz/corpus/$name")
  [[ -d "$KQ_ROOT/tests/data/fuzz/$name" ]] && inputs+=("$KQ_ROOT/tests/data/fuzz/$name")
  mkdir -p "$scratch/$name" "$findings/$target"
  if "$bin/$target" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$findings/$target/" "$scratch/$name" "${inputs[@]}" >"$scratch/$target.log" 2>&1; then
    echo "$target: $(grep -m1 '^stat::number_of_executed_units' "$scratch/$target.log" | awk '{print $2}') runs, no finding"
  else
    echo "$target: FINDING (input in $findings/$target/)"
    tail -n 40 "$scratch/$target.log"
    return 1
  fi
}

targets=()
for path in "$bin"/*_fuzz; do targets+=("$(basename "$path")"); done
echo "== fuzzing ${#targets[@]} targets for ${seconds}s each, $jobs at a time"
failed=0
running=0
for target in "${targets[@]}"; do
  run_target "$target" &
  running=$((running + 1))
  if ((running >= jobs)); then
    wait -n || failed=1
    running=$((running - 1))
  fi
done
while ((running > 0)); do
  wait -n || failed=1
  running=$((running - 1))
done
exit $failed

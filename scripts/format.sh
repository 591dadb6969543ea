#!/usr/bin/env bash
# Lays out the tree's C and C++ sources with clang-format and .clang-format, so that layout is
# settled by a tool rather than by hand or in review.
#   scripts/format.sh          formats every C and C++ source in place;
#   scripts/format.sh --check  changes nothing; fails, naming the files clang-format would change.
# Both take the files that git tracks, so build trees are never touched. CLANG_FORMAT picks
# another binary (default: clang-format, Debian's 14, as setup.sh installs it).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
mode=${1:-}
[[ -z $mode || $mode == --check ]] || { echo "usage: $0 [--check]" >&2; exit 2; }
cd "$KQ_ROOT"
clang_format=${CLANG_FORMAT:-clang-format}
command -v "$clang_format" >/dev/null || { echo "format: no $clang_format (scripts/setup.sh installs it)" >&2; exit 1; }
echo "format: $(command -v "$clang_format"): $("$clang_format" --version)"
mapfile -d '' files < <(git ls-files -z -- '*.c' '*.cpp' '*.h' '*.inc')

if [[ -z $mode ]]; then
  printf '%s\0' "${files[@]}" | xargs -0 "$clang_format" -i
  echo "format: ${#files[@]} files formatted"
  exit 0
fi
status=0
report=$(printf '%s\0' "${files[@]}" | xargs -0 "$clang_format" --dry-run --Werror 2>&1) || status=$?
if ((status != 0)); then
  unformatted=$(sed -n 's/^\(.*\):[0-9]*:[0-9]*: error: code should be clang-formatted.*/\1/p' <<<"$report" | sort -u)
  echo "format: not formatted (scripts/format.sh formats them):" >&2
  echo "${unformatted:-$report}" >&2
  exit 1
fi
echo "format: all ${#files[@]} files formatted"

#!/usr/bin/env bash
# Measures how much of the production code the native tests run: builds them with gcov
# instrumentation (preset "coverage", no sanitizers), runs them, and prints line, function and
# branch coverage of module, manifest, content, media, input, common, platform/native and
# exports. The HTML report goes to build/coverage/html/index.html.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
"$here/setup.sh"
cd "$KQ_ROOT"
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage
mkdir -p build/coverage/html
gcovr --root . --object-directory build/coverage \
  --filter 'module/' --filter 'manifest/' --filter 'content/' --filter 'media/' \
  --filter 'input/' --filter 'common/' --filter 'platform/native/' --filter 'exports/' \
  --exclude-unreachable-branches --exclude-throw-branches \
  --html-details build/coverage/html/index.html --txt build/coverage/summary.txt \
  --print-summary | tail -n 3

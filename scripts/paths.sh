# Shared locations of the scripts (sourced, not run).
KQ_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
KQ_CACHE_DIR=${KQ_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/kq-amiga}
# The folder name carries the build's options: change it when they change.
KQ_LIBXML2_MINGW=${KQ_LIBXML2_MINGW:-$KQ_CACHE_DIR/libxml2-2.9.14-mingw64-static-w32threads}
export KQ_ROOT KQ_CACHE_DIR KQ_LIBXML2_MINGW

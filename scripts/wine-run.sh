#!/usr/bin/env bash
# Runs a Windows program under Wine in a prefix of its own (KQ_WINEPREFIX, by default one
# inside the build tree next to the program's build folder), quietly and headless: Wine's
# null graphics driver serves windows and message boxes without an X display, and no sound
# driver is loaded (tests see a machine without audio and MIDI devices).
set -euo pipefail
wine=${KQ_WINE:-/usr/lib/wine/wine64}
[ -x "$wine" ] || wine=$(command -v wine64 || command -v wine)
if [ -z "${KQ_WINEPREFIX:-}" ]; then
  dir=$(cd "$(dirname "$1")" && pwd)
  # The build tree holds a file that names it; the prefix lives beside that file.
  while [ "$dir" != / ] && [ ! -f "$dir/CMakeCache.txt" ]; do dir=$(dirname "$dir"); done
  [ "$dir" != / ] || dir=${TMPDIR:-/tmp}
  KQ_WINEPREFIX="$dir/wineprefix"
fi
export WINEPREFIX="$KQ_WINEPREFIX" WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml,winealsa.drv,winepulse.drv=}
unset DISPLAY WAYLAND_DISPLAY
if [ ! -f "$WINEPREFIX/.kq-ready" ]; then
  mkdir -p "$WINEPREFIX"
  # Serialise the first start when several tests start at once.
  exec 9>"$WINEPREFIX.lock"
  flock 9
  if [ ! -f "$WINEPREFIX/.kq-ready" ]; then
    "$wine" wineboot -i >/dev/null 2>&1 || true
    "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
    "${wine%/*}/wineserver" -w 2>/dev/null || true
    touch "$WINEPREFIX/.kq-ready"
  fi
  flock -u 9
fi
exec "$wine" "$@"

#!/usr/bin/env bash
# Sets up the machine, builds the Windows build and lays out what a host installs: the install
# tree in build/install (Platforms/Amiga/amiga.dll with its Tessary templates, bin/kqhost.exe,
# include/kq_amiga.h, README.md) and the same files zipped by CPack in build/package.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
"$here/setup.sh"
cd "$KQ_ROOT"
cmake --preset win64 >/dev/null
# What the install tree holds: the DLL (with the blank-disk templates it depends on) and kqhost.
cmake --build --preset win64 --target amiga kqhost
rm -rf build/install build/package
cmake --install build/win64 --prefix build/install
cpack --config build/win64/CPackConfig.cmake -B build/package
rm -rf build/package/_CPack_Packages
echo
echo "Install tree: $KQ_ROOT/build/install"
(cd build/install && find . -type f | sed 's|^\./|  |' | sort)
for zip in build/package/*.zip; do echo "Package:      $KQ_ROOT/$zip"; done

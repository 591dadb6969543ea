#!/usr/bin/env bash
# Sets up the machine, builds amiga.dll and the reference host kqhost.exe, and runs the demo:
# the reference host loads the DLL under Wine and drives it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=paths.sh
source "$here/paths.sh"
"$here/setup.sh"
cd "$KQ_ROOT"
cmake --preset win64 >/dev/null
cmake --build --preset win64 --target amiga kqhost

kqhost() {
  echo "\$ kqhost $*"
  "$here/wine-run.sh" build/win64/bin/kqhost.exe "$@"
  echo
}
kqhost name
kqhost exports
# The platform options, stored in the registry of the demo's Wine prefix.
kqhost set-option MouseHack 1
kqhost options
kqhost set-option MouseHack 0
# A package manifest read and written back by the module's manifest code. (Wine's drive Z: is
# the root of the Linux file system.)
manifest="Z:$(printf '%s' "$KQ_ROOT/demo/game.kq9" | tr / '\\')"
kqhost manifest "$manifest" kq9/application/configuration/system
kqhost manifest "$manifest" --ascii
# What the module tells the host about that package, its model and its ports.
kqhost app-info "$manifest"
kqhost default-rom a-1200
kqhost ports a-cd32
# A German host keyboard typing into a German guest, key names, and layout recognition.
keys="Z:$(printf '%s' "$KQ_ROOT/demo/typing.keys" | tr / '\\')"
kqhost keys --layout de-de "$keys"
kqhost key-name --layout de-de "CONTROL+LEFT AMIGA+RIGHT AMIGA"
kqhost key-name --layout en-gb POUND
image="Z:$(printf '%s' "$KQ_ROOT/build/win64/sv-se.keymap" | tr / '\\')"
kqhost keymap-image sv-se "$image"
kqhost layout "$image"
# Text and combinations as raw key strings, and a controller button's name.
kqhost type --layout en-us 'Hello, Amiga!\n'
kqhost combo --layout en-us "CONTROL+LEFT AMIGA+RIGHT AMIGA"
kqhost button-name 16 4
# A working copy of a compressed floppy image: made (inflated) for the emulator, checked for
# changes, and dismissed with its changes written back (compressed again).
mkdir -p build/win64/demo
python3 -c "import sys; sys.stdout.buffer.write((b'AmigaDOS demo disk ' * 48000)[:901120])" > build/win64/demo/Demo.adf
demo_folder="Z:$(printf '%s' "$KQ_ROOT/build/win64/demo" | tr / '\\')"
kqhost deflate "$demo_folder\\Demo.adf" "$demo_folder\\Demo.adz"
echo "\$ kqhost runtime get $demo_folder\\Demo.adz"
# Printed from a variable, not through tee /dev/stderr: that reopens a redirected log and writes
# over its beginning.
output=$("$here/wine-run.sh" build/win64/bin/kqhost.exe runtime get "$demo_folder\\Demo.adz" | tr -d '\r')
printf '%s\n' "$output"
copy=${output%%$'\n'*}
echo
kqhost runtime check "$copy"
kqhost runtime dismiss "$copy" --write-back --assume-changed
gzip -lN build/win64/demo/Demo.adz
# An empty high-density floppy (from the template beside the DLL), a compressed image copied
# and unpacked into another folder, and a DMS archive unpacked by the module's own unpacker.
kqhost empty-medium hd
mkdir -p build/win64/demo/copies
kqhost copy-medium "$demo_folder\\Demo.adz" "$demo_folder\\copies" 1
dms="Z:$(printf '%s' "$KQ_ROOT/tests/data/dms/rle_small.dms" | tr / '\\')"
kqhost undms "$dms" "$demo_folder\\rle_small.adf"
sha256sum build/win64/demo/rle_small.adf
# A password-protected archive, unpacked without its password: the same disk as the plain one.
protected="Z:$(printf '%s' "$KQ_ROOT/tests/data/dms/test_C1_heavy2_pwd.dms" | tr / '\\')"
kqhost undms "$protected" "$demo_folder\\protected.adf"
sha256sum build/win64/demo/protected.adf
# What the content analysis reads from media: the empty floppy template (a bootable OFS volume
# named "Empty"), its volume name, the tooltip of a floppy drive holding it and the summary of a
# hard-disk drive, a package's boot tag and a device command with the keys that give it.
template="Z:$(printf '%s' "$KQ_ROOT/build/win64/bin/Tessary/a-dd-ofs-empty.adf" | tr / '\\')"
kqhost analyse "$template"
kqhost volume-name "$template"
kqhost tooltip floppy 0 "$template" "Blank disk"
kqhost content-info --short "Work	$demo_folder\\Demo.adf" "$demo_folder\\Demo.adf		Work	hardfile"
mkdir -p build/win64/demo/data/Shared/adf
: > build/win64/demo/data/Shared/adf/aros-20230101-boot.adf
: > build/win64/demo/data/Shared/adf/aros-20241201-boot.adf
printf '%s\n' '<?xml version="1.0" encoding="UTF-8"?>' \
  '<kq9><application><configuration><boot type="adf">aros-latest</boot></configuration></application></kq9>' \
  > build/win64/demo/boot.kq9
kqhost boot-tag "$demo_folder\\boot.kq9" "$demo_folder\\data"
kqhost device-command 7 2 a-1200
# Loose media completed into an application: the bootable template chooses an A1200 and goes
# first; a fixed A600 keeps its model and boots the system floppy.
kqhost autoconfig "$demo_folder\\Demo.adf" "$template"
kqhost autoconfig --model a-600 "$demo_folder\\Demo.adf"
# An emulator configuration file imported as an application, and the file types the platform
# claims for the host's open-file dialogs.
printf '%s\r\n' 'config_description=Demo A1200' 'chipset_compatible=A1200' 'chipmem_size=4' 'fastmem_size=8' \
  'cpu_type=68020' 'joyport0=mouse' 'joyport1=joy1' 'floppy0=Demo.adf' 'floppy1type=0' > build/win64/demo/Demo.uae
kqhost import-uae "$demo_folder\\Demo.uae"
kqhost associations

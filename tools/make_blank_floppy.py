#!/usr/bin/env python3
"""Writes the blank-disk templates that the module copies for empty media: formatted, empty
OFS floppy images of 880 KB (double density) and 1,760 KB (high density), volume "Empty".

  make_blank_floppy.py dd|hd OUTPUT          write one template
  make_blank_floppy.py --check               compare with the published test vectors

Layout (all numbers big-endian): blocks 0-1 hold "DOS\\0" and the boot-block checksum (the
disk is not bootable: no boot code); the root block sits in the middle of the disk (880 or
1760) with a 72-entry empty hash table, a valid-bitmap flag, one bitmap pointer (root + 1),
the name and the same date in its three date stamps; the bitmap block marks every block free
but the root and itself. Root and bitmap carry the normal checksum (all longs sum to zero)."""

import hashlib
import struct
import sys

BLOCK = 512
GEOMETRY = {"dd": 1760, "hd": 3520}  # blocks
TEMPLATE_DATE = (16801, 720, 0)      # 2024-01-01 12:00:00; replaced when a copy is made
VOLUME_NAME = b"Empty"


def longs(block):
    return struct.unpack(">128I", block)


def normal_checksum(block, at):
    """The value at `at` that makes all 128 longs of the block sum to zero."""
    block[at:at + 4] = b"\0\0\0\0"
    return (-sum(longs(bytes(block)))) & 0xFFFFFFFF


def boot_checksum(boot):
    """The boot blocks' checksum: NOT of the end-around-carry sum of their 256 longs."""
    total = 0
    for value in struct.unpack(">256I", boot):
        total += value
        if total > 0xFFFFFFFF:
            total = (total + 1) & 0xFFFFFFFF
    return ~total & 0xFFFFFFFF


def blank_floppy(blocks, date=TEMPLATE_DATE, with_boot_checksum=True):
    image = bytearray(blocks * BLOCK)
    image[0:4] = b"DOS\0"
    if with_boot_checksum:
        image[4:8] = struct.pack(">I", boot_checksum(bytes(image[:2 * BLOCK])))

    root_number = (2 + blocks - 1) // 2
    root = bytearray(BLOCK)
    struct.pack_into(">I", root, 0, 2)                  # type: header
    struct.pack_into(">I", root, 12, BLOCK // 4 - 56)   # hash table size: 72
    struct.pack_into(">I", root, 312, 0xFFFFFFFF)       # the bitmap is valid
    struct.pack_into(">I", root, 316, root_number + 1)  # the one bitmap block
    for at in (420, 472, 484):                         # root, volume and creation dates
        struct.pack_into(">3I", root, at, *date)
    root[432] = len(VOLUME_NAME)
    root[433:433 + len(VOLUME_NAME)] = VOLUME_NAME
    struct.pack_into(">I", root, 508, 1)                # secondary type: root
    struct.pack_into(">I", root, 20, normal_checksum(root, 20))

    # Bit k of the map is block k + 2, 1 = free. Every map long that covers a block of the disk
    # is all ones (bits past the last block too, as formatted disks have them), then the root's
    # and the bitmap's own bits are cleared; longs past the disk stay 0.
    bitmap = bytearray(BLOCK)
    map_longs = (blocks - 2 + 31) // 32
    for index in range(map_longs):
        struct.pack_into(">I", bitmap, 4 + 4 * index, 0xFFFFFFFF)
    for used in (root_number, root_number + 1):
        k = used - 2
        at = 4 + (k // 32) * 4
        struct.pack_into(">I", bitmap, at, struct.unpack_from(">I", bitmap, at)[0] & ~(1 << (k % 32)))
    struct.pack_into(">I", bitmap, 0, normal_checksum(bitmap, 0))

    image[root_number * BLOCK:(root_number + 1) * BLOCK] = root
    image[(root_number + 1) * BLOCK:(root_number + 2) * BLOCK] = bitmap
    return bytes(image)


# Published vectors for these images without a boot-block checksum: root checksum, bitmap
# checksum, SHA-256 of the image.
VECTORS = {
    "dd": (0x8640C182, 0x0000C037, "cefc8c63ed627258dcc04bdce785e1f42fcba8099a4b2a380f883f9cf28e3ca1"),
    "hd": (0x8640BE12, 0xC000006E, "13930a7712669f48c518207d052b020f88478bfcc8ed13a5a7c9b0630c6370e0"),
}


def check():
    failures = 0
    for kind, (root_sum, bitmap_sum, digest) in VECTORS.items():
        blocks = GEOMETRY[kind]
        image = blank_floppy(blocks, with_boot_checksum=False)
        root = (blocks + 1) // 2 * BLOCK
        got = (struct.unpack_from(">I", image, root + 20)[0], struct.unpack_from(">I", image, root + BLOCK)[0],
               hashlib.sha256(image).hexdigest())
        if got != (root_sum, bitmap_sum, digest):
            print(f"{kind}: expected {root_sum:#x} {bitmap_sum:#x} {digest}, got {got[0]:#x} {got[1]:#x} {got[2]}")
            failures += 1
        # With the boot checksum the boot blocks' longs sum (end-around) to 0xFFFFFFFF.
        booted = blank_floppy(blocks)
        total = 0
        for value in struct.unpack(">256I", booted[:2 * BLOCK]):
            total += value
            if total > 0xFFFFFFFF:
                total = (total + 1) & 0xFFFFFFFF
        if total != 0xFFFFFFFF or booted[8:] != image[8:]:
            print(f"{kind}: boot-block checksum wrong")
            failures += 1
    print("blank floppy vectors:", "ok" if failures == 0 else f"{failures} failed")
    return failures == 0


def main(arguments):
    if arguments == ["--check"]:
        return 0 if check() else 1
    if len(arguments) != 2 or arguments[0] not in GEOMETRY:
        print(__doc__)
        return 2
    with open(arguments[1], "wb") as out:
        out.write(blank_floppy(GEOMETRY[arguments[0]]))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

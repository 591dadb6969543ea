#!/usr/bin/env python3
"""Writes the icons that the module's file carries for the file types it claims: a 3.5" floppy
disk and a hard-disk drive, each as a Windows .ico file with a 32x32 and a 16x16 image.

  make_icons.py floppy|hard-disk OUTPUT

Each picture is a list of filled rectangles on a 32-unit grid, painted in order; a pixel's
colour is the average of 4x4 samples, so the 16x16 image is the same picture made smaller
(even coordinates keep its edges sharp).

.ico layout (little-endian): a 6-byte directory header (0, type 1, image count), one 16-byte
entry per image (width, height, 0 colours, 0, 1 plane, 32 bits, data size, data offset), then
each image: a 40-byte BITMAPINFOHEADER whose height counts the colour rows and the mask rows,
the BGRA rows bottom-up, then the 1-bit transparency mask, bottom-up, rows padded to 32 bits."""

import struct
import sys

GRID = 32
SAMPLES = 4  # per pixel and axis
SIZES = (32, 16)

# (left, top, right, bottom) on the grid, right and bottom excluded; colour as (R, G, B).
FLOPPY = [
    ((2, 2, 30, 30), (0x2B, 0x3A, 0x55)),    # body
    ((8, 2, 24, 12), (0xC0, 0xC4, 0xC8)),    # metal shutter
    ((16, 4, 20, 10), (0x2B, 0x3A, 0x55)),   # the shutter's window
    ((6, 16, 26, 30), (0xF2, 0xF2, 0xEA)),   # label
    ((8, 20, 24, 22), (0x70, 0x80, 0xA0)),   # writing on the label
    ((8, 24, 20, 26), (0x70, 0x80, 0xA0)),
]
FLOPPY_CUT = 4  # the body's top-right corner is cut off by a triangle this wide

HARD_DISK = [
    ((2, 8, 30, 26), (0x8A, 0x90, 0x98)),    # body
    ((2, 8, 30, 10), (0xB8, 0xBE, 0xC4)),    # lit top edge
    ((2, 20, 30, 26), (0x5A, 0x60, 0x68)),   # front panel
    ((6, 12, 22, 14), (0x5A, 0x60, 0x68)),   # vents
    ((6, 16, 22, 18), (0x5A, 0x60, 0x68)),
    ((24, 22, 28, 24), (0x30, 0xD0, 0x40)),  # activity light
]


def floppy_colour(x, y):
    if y < 2 + x - (30 - FLOPPY_CUT):
        return None
    return paint(FLOPPY, x, y)


def hard_disk_colour(x, y):
    return paint(HARD_DISK, x, y)


def paint(shapes, x, y):
    colour = None
    for (left, top, right, bottom), rgb in shapes:
        if left <= x < right and top <= y < bottom:
            colour = rgb
    return colour


def render(colour_at, size):
    """Rows of (B, G, R, A) from the top, each pixel the average of its samples."""
    scale = GRID / size
    rows = []
    for row in range(size):
        pixels = []
        for column in range(size):
            total = [0, 0, 0]
            covered = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (column + (sx + 0.5) / SAMPLES) * scale
                    y = (row + (sy + 0.5) / SAMPLES) * scale
                    rgb = colour_at(x, y)
                    if rgb is not None:
                        covered += 1
                        for channel in range(3):
                            total[channel] += rgb[channel]
            if covered == 0:
                pixels.append((0, 0, 0, 0))
            else:
                r, g, b = (round(value / covered) for value in total)
                pixels.append((b, g, r, round(255 * covered / SAMPLES ** 2)))
        rows.append(pixels)
    return rows


def bitmap(rows):
    """The image data of one directory entry: header, colour rows, mask rows."""
    size = len(rows)
    mask_row_bytes = (size + 31) // 32 * 4
    colours = b"".join(bytes(channel for pixel in row for channel in pixel) for row in reversed(rows))
    mask = bytearray()
    for row in reversed(rows):
        bits = bytearray(mask_row_bytes)
        for column, pixel in enumerate(row):
            if pixel[3] == 0:  # transparent where the picture has no colour
                bits[column // 8] |= 0x80 >> (column % 8)
        mask += bits
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    return header + colours + bytes(mask)


def icon_file(colour_at):
    images = [(size, bitmap(render(colour_at, size))) for size in SIZES]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, data in images:
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return directory + b"".join(data for _, data in images)


KINDS = {"floppy": floppy_colour, "hard-disk": hard_disk_colour}


def main(arguments):
    if len(arguments) != 2 or arguments[0] not in KINDS:
        sys.stderr.write(__doc__)
        return 2
    with open(arguments[1], "wb") as output:
        output.write(icon_file(KINDS[arguments[0]]))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

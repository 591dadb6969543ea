#!/usr/bin/env python3
"""Writes the seed corpora of the media fuzz targets (fuzz/corpus/inflate, deflate64 and
extended_adf): small gzip and ZIP files made with gzip, zip and 7zz (Deflate64), the raw
Deflate64 streams inside the latter, and extended ADF files in both layouts with tracks stored
decoded and as raw MFM. Run from anywhere; needs gzip, zip and 7zz."""

import gzip
import os
import struct
import subprocess
import tempfile
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORPUS = os.path.join(ROOT, "fuzz", "corpus")


def sample(size, seed):
    words = [b"AmigaDOS ", b"Kickstart ", b"\0\0\0\0", b"track ", b"DH0: ", b"\n"]
    out, state = bytearray(), seed
    while len(out) < size:
        state = (state * 1103515245 + 12345) & 0xFFFFFFFF
        out += words[(state >> 16) % len(words)]
    return bytes(out[:size])


def write(folder, name, data):
    os.makedirs(os.path.join(CORPUS, folder), exist_ok=True)
    with open(os.path.join(CORPUS, folder, name), "wb") as f:
        f.write(data)


def first_zip_entry_data(archive):
    """The compressed data of a ZIP's first entry (sizes from the local header)."""
    _, _, _, method, _, _, _, csize, _, name_len, extra_len = struct.unpack("<IHHHHHIIIHH", archive[:30])
    start = 30 + name_len + extra_len
    return method, archive[start:start + csize]


def zip_with(tool_args, data, work):
    path = os.path.join(work, "disk.adf")
    with open(path, "wb") as f:
        f.write(data)
    out = os.path.join(work, "out.zip")
    if os.path.exists(out):
        os.remove(out)
    subprocess.run(tool_args + [out, "disk.adf"], cwd=work, check=True, stdout=subprocess.DEVNULL)
    with open(out, "rb") as f:
        return f.read()


def gzip_member(data, method=8, flags=0, extra=b"", name=b"", comment=b"", body=None):
    if extra:
        flags |= 0x04
    if name:
        flags |= 0x08
    if comment:
        flags |= 0x10
    out = bytearray(b"\x1f\x8b" + bytes([method, flags]) + struct.pack("<I", 0) + b"\x00\x0a")
    if extra:
        out += struct.pack("<H", len(extra)) + extra
    if name:
        out += name + b"\0"
    if comment:
        out += comment + b"\0"
    if body is None:
        compressor = zlib.compressobj(6, zlib.DEFLATED, -15)
        body = compressor.compress(data) + compressor.flush()
    out += body + struct.pack("<II", zlib.crc32(data), len(data) & 0xFFFFFFFF)
    return bytes(out)


# MFM, as the format describes it: data bits at even positions, a clock bit 1 between two 0s.
def mfm_cells(half, last):
    cells = []
    for position in range(31, -1, -1):
        if position % 2:
            cells.append(1 if not last and not (half >> (position - 1)) & 1 else 0)
        else:
            last = (half >> position) & 1
            cells.append(last)
    return cells, last


def mfm_sector(track, sector, to_gap, data, last=0):
    cells = []

    def put(half):
        nonlocal last
        c, last = mfm_cells(half, last)
        cells.extend(c)

    def odd_even(longs):
        for v in longs:
            put((v >> 1) & 0x55555555)
        for v in longs:
            put(v & 0x55555555)

    def checksum(longs):
        x = 0
        for v in longs:
            x ^= ((v >> 1) & 0x55555555) ^ (v & 0x55555555)
        return x

    put(0)
    for word in (0x4489, 0x4489):
        cells.extend((word >> i) & 1 for i in range(15, -1, -1))
    last = 1
    header = [0xFF000000 | track << 16 | sector << 8 | to_gap, 0, 0, 0, 0]
    odd_even(header[:1])
    odd_even(header[1:])
    longs = list(struct.unpack(">128I", data))
    odd_even([checksum(header)])
    odd_even([checksum(longs)])
    odd_even(longs)
    return cells


def pack(cells):
    cells = cells + [0] * (-len(cells) % 8)
    return bytes(int("".join(map(str, cells[i:i + 8])), 2) for i in range(0, len(cells), 8))


def extended_adf(tracks):
    out = bytearray(b"UAE-1ADF" + struct.pack(">HH", 0, len(tracks)))
    for kind, data, bits in tracks:
        out += struct.pack(">HBBII", 0, 0, kind, len(data), bits)
    for _, data, _ in tracks:
        out += data
    return bytes(out)


def main():
    image = sample(20000, 1)
    with tempfile.TemporaryDirectory() as work:
        # inflate: the containers as the tools write them, and hand-made gzip headers
        write("inflate", "gzip.adz", gzip.compress(image, mtime=0))
        write("inflate", "gzip-fields.adz",
              gzip_member(image, extra=b"AB\x02\x00xy", name=b"disk.adf", comment=b"seed"))
        write("inflate", "zip-stored.zip", zip_with(["zip", "-q", "-0"], image[:3000], work))
        write("inflate", "zip-deflated.zip", zip_with(["zip", "-q"], image, work))
        piped = subprocess.run(["zip", "-q", "-", "-"], input=image, check=True, stdout=subprocess.PIPE).stdout
        write("inflate", "zip-piped.zip", piped)
        runs = image[:4000] + b"\0" * 70000 + image[:4000]
        d64 = zip_with(["7zz", "a", "-bd", "-tzip", "-mm=Deflate64"], runs, work)
        write("inflate", "zip-deflate64.zip", d64)
        method, stream = first_zip_entry_data(d64)
        assert method == 9
        write("inflate", "gzip-deflate64.adz", gzip_member(runs, method=9, body=stream))
        # deflate64: raw streams
        write("deflate64", "runs.bin", stream)
        _, text_stream = first_zip_entry_data(zip_with(["7zz", "a", "-bd", "-tzip", "-mm=Deflate64"], image, work))
        write("deflate64", "text.bin", text_stream)
        write("deflate64", "stored.bin", b"\x01\x05\x00\xfa\xffhello")

    # extended_adf: a decoded track, a raw MFM track of two sectors, an empty track; and the
    # older layout with a few short tracks.
    sector0, sector1 = bytes(range(256)) * 2, sample(512, 2)
    raw = mfm_sector(0, 0, 2, sector0) + mfm_sector(0, 1, 1, sector1) + [0] * 301
    write("extended_adf", "newer.adf", extended_adf([(0, sector0 * 11, 45056), (1, pack(raw), len(raw)), (0, b"", 0)]))
    older = bytearray(b"UAE--ADF")
    lengths = [512, 1024] + [0] * 158
    for length in lengths:
        older += struct.pack(">HH", 0, length)
    older += sector0 + sector1 * 2
    write("extended_adf", "older.adf", bytes(older))


if __name__ == "__main__":
    main()

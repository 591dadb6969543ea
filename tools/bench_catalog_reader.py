#!/usr/bin/env python3
"""The peer of bench/auto_configuration_bench.cpp: reads a catalog of media the plain way.

  bench_catalog_reader.py CATALOG CALLS

Each call parses the catalog with xml.etree.ElementTree, reads from every medium listed under
xadml/catalog/application/media its first 64 KiB and the 64 KiB around its middle, where an
AmigaDOS volume keeps its root block (.adz and .hdz through gzip, which inflates up to there),
and serialises the document again. Prints "fastest_seconds=... median_seconds=... media=..."
on one line: the calls' times, without the interpreter's start."""

import gzip
import os
import statistics
import struct
import sys
import time
import xml.etree.ElementTree as ET

WINDOW = 64 * 1024
COMPRESSED = (".adz", ".hdz")


def image_size(path, compressed):
    """The image's size; for a gzip file, the size its trailer states (modulo 4 GiB)."""
    if not compressed:
        return os.path.getsize(path)
    with open(path, "rb") as raw:
        raw.seek(-4, os.SEEK_END)
        return struct.unpack("<I", raw.read(4))[0]


def read_medium(path):
    compressed = path.lower().endswith(COMPRESSED)
    size = image_size(path, compressed)
    with (gzip.open if compressed else open)(path, "rb") as image:
        head = image.read(WINDOW)
        image.seek(max(0, size // 2 - WINDOW // 2))
        middle = image.read(WINDOW)
    if not head or not middle:
        raise ValueError(f"{path} is too short")


def read_catalog(path):
    root = ET.parse(path).getroot()
    media = root.find("catalog/application/media")
    count = 0
    for medium in media if media is not None else []:
        read_medium((medium.text or "").strip())
        count += 1
    ET.tostring(root, encoding="utf-8", xml_declaration=True)
    return count


def main():
    catalog, calls = sys.argv[1], max(1, int(sys.argv[2]))
    seconds = []
    for _ in range(calls):
        start = time.perf_counter()
        count = read_catalog(catalog)
        seconds.append(time.perf_counter() - start)
    print(f"fastest_seconds={min(seconds):.9f} median_seconds={statistics.median_low(seconds):.9f} media={count}")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Makes the first inputs of the fuzz targets from the point sets of the tests.

usage: fuzz_seeds.py DATA_DIR CORPUS_DIR
"""

import struct
import sys
from pathlib import Path

LINES = 40  # of each file: short inputs are tried more often


def numbers(path):
    return [[float(word) for word in line.split()] for line in path.read_text().splitlines()[:LINES]]


def binary(file_type, rows):
    return struct.pack("<iQ", file_type, len(rows)) + b"".join(struct.pack(f"<{len(row)}d", *row) for row in rows)


def soup(mode, rows, per_call):
    """As fuzz/segment_soup_fuzz.cpp reads it: a mode, then operations."""
    parts = [bytes([mode])]
    for i, row in enumerate(rows):
        values = [int(value * 8) & 255 for value in row] if mode & 1 else row
        parts.append(b"\0" + struct.pack("<4B" if mode & 1 else "<4d", *values))
        if i % per_call == per_call - 1:
            parts.append(bytes([3 + i // per_call % 2, i & 1]))
    return b"".join(parts)


def main():
    data, corpus = Path(sys.argv[1]), Path(sys.argv[2])
    for name in ("point_file", "segment_soup", "triangle_soup", "zone_soup", "mesh", "removal", "segment_checker"):
        (corpus / f"{name}_fuzz").mkdir(parents=True, exist_ok=True)
    for path in sorted(data.glob("*.xy")):
        rows, segments = numbers(path), numbers(path.with_suffix(".seg"))
        files = {"text": path.read_bytes()[:2000]}
        for dimension, types in ((2, (20, 21)), (3, (30, 31))):
            flat = [row + [1.0] * (dimension - 2) for row in rows]
            files[f"points{dimension}"] = binary(types[0], flat)
            files[f"segments{dimension}"] = binary(types[1], [p + q for p, q in zip(flat, flat[1:])])
        for kind, content in files.items():
            (corpus / "point_file_fuzz" / f"{path.stem}_{kind}").write_bytes(content)
        for mode in range(4):
            seed = corpus / "segment_soup_fuzz" / f"{path.stem}_{mode}"
            seed.write_bytes(soup(mode, segments[:16], 4))
        # As fuzz/segment_checker_fuzz.cpp reads them: a mode, then coordinates; 12 draws them, too.
        coarse = [[int(value) & 15 for value in row] for row in segments]
        halves = bytes(16 * x + y for row in coarse for x, y in (row[:2], row[2:]))
        doubles = b"".join(struct.pack("<4d", *row) for row in segments)
        for mode, content in ((12, doubles), (9, halves), (0x83, halves)):
            (corpus / "segment_checker_fuzz" / f"{path.stem}_{mode}").write_bytes(bytes([mode]) + content)
    # As fuzz/zone_soup_fuzz.cpp reads them: points, two rings, and zones of each kind made of them.
    zones = bytes([0, 5, *b"\x11\xe2\x2d\xdc\x67\x98", 1, 1, 0x22, 3, 0xA2, 0xAA, 0x2A, 1, 0, 0x44, 3, 0x4C, 0xCC, 0xC4])
    kinds = [bytes([3, 0, kind, 0x66, 1]) for kind in range(5)]
    rest = bytes([4, 0, 1, 3, 5, 2, 1, 0, 6, 0x35, 2, 7, 3, 1, 0x55, 8, 3, 0, 9, 0, 0, 0x37, 11, 1, 4, 2, 3, 0])
    for mode in range(4):
        seed = corpus / "zone_soup_fuzz" / f"zones_{mode}"
        seed.write_bytes(bytes([mode]) + zones + b"".join(kinds) + rest)
    # As fuzz/triangle_soup_fuzz.cpp reads them: a soup of a triangulation's triangles, beside points or into nothing,
    # one with a fault, then knives, its own triangles, a refinement and a split, each with a byte that asks for a check.
    around = bytes([0, 5, *b"\x11\xe2\x2d\xdc\x67\x98", 1, 1, 0, 0x01, 0xEF, 1])
    soup_points = b"\x00\x70\xF0\x27\x76\xB9\x4C\xF8\xAF"
    carved = bytes([4, 6, *soup_points, 0xFF, 1, 1, 5, 0xC6, *soup_points, 0, 0x37, 0xA4, 0xEE, 1, 4, 0, 1])
    knives = bytes([7, 0x00, 0xFF, 1, 9, 3, 0x08, 0xF7, 0x73, 0x7E, 0x20, 0x2D, 0x25, 0x2F, 1])
    rest = bytes([6, 0x5A, 1, 1, 2, 2, *b"\x12\x51\x36\x51\x98\x36", 1, 1, 12, 0, 20, 1, 13, 0, 0, 1, 11, 3, 1])
    for mode in range(4):
        for kind, content in enumerate((carved + knives, around + carved + knives, knives + carved)):
            seed = corpus / "triangle_soup_fuzz" / f"soup_{mode}_{kind}"
            seed.write_bytes(bytes([mode]) + content + rest)
    # As fuzz/mesh_fuzz.cpp reads them: a square with a segment in it, a kind of zone, and two refinements.
    square = bytes([4, 0x00, 0xF0, 0xF0, 0xFF, 0xFF, 0x0F, 0x0F, 0x00, 0x33, 0x7A])
    refinements = bytes([1, 30, 0, 40, 0, 0, 2, 1, 25, 3, 0, 0, 9, 0])
    for mode in range(4):
        for kind in range(4):
            seed = corpus / "mesh_fuzz" / f"square_{mode}_{kind}"
            seed.write_bytes(bytes([mode]) + square + bytes([kind, 0x24]) + refinements)


if __name__ == "__main__":
    main()

"""Writes the Lab profile: device space and PCS are both Lab, in the 16-bit encoding of version 2.

Usage: lab.py OUT SIZE

A colour passes unchanged, so one identity table serves both directions. Its grid is the finest one that the size holds;
interpolation between its nodes differs from the identity by rounding only.
"""

import itertools
import sys

from icc_profile import COPYRIGHT, D50, description, lut16, profile, text, xyz

GRID = 32


def main():
    out, size = sys.argv[1], int(sys.argv[2])
    straight = [[257 * i for i in range(256)]] * 3
    levels = [(2 * 65535 * i + GRID - 1) // (2 * (GRID - 1)) for i in range(GRID)]
    nodes = [level for node in itertools.product(levels, repeat=3) for level in node]
    identity = lut16(straight, GRID, nodes, straight)
    tags = [("desc", description("CIE L*a*b*, D50")), ("cprt", text(COPYRIGHT)), ("wtpt", xyz(D50)),
            ("A2B0", identity), ("B2A0", identity)]
    with open(out, "wb") as file:
        file.write(profile("spac", "Lab ", "Lab ", tags, size))


main()

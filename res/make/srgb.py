"""Writes the sRGB profile: a matrix and one shared 1024-entry curve.

Usage: srgb.py OUT SIZE

Colorants are the IEC 61966-2-1 primaries, taken from D65 to the D50 of the PCS with the Bradford transform, in exact
fractions that are rounded to s15Fixed16 at the end. The media white is D50, since the colorants are adapted to it.
"""

import sys
from fractions import Fraction as F

from icc_profile import COPYRIGHT, D50, curve, description, fixed, profile, text, xyz

PRIMARIES = ((F("0.64"), F("0.33")), (F("0.30"), F("0.60")), (F("0.15"), F("0.06")))
D65 = (F("0.3127"), F("0.3290"))
BRADFORD = ((F("0.8951"), F("0.2664"), F("-0.1614")),
            (F("-0.7502"), F("1.7135"), F("0.0367")),
            (F("0.0389"), F("-0.0685"), F("1.0296")))


def from_chromaticity(x, y):
    return [x / y, F(1), (1 - x - y) / y]


def times(m, v):
    return [sum(a * b for a, b in zip(row, v)) for row in m]


def product(a, b):
    return transposed([times(a, column) for column in transposed(b)])


def transposed(m):
    return [list(row) for row in zip(*m)]


def inverse(m):
    """Inverse of a 3 by 3 matrix by cofactors."""
    def cofactor(i, j):
        (a, b), (c, d) = [[m[r % 3][k % 3] for k in (j + 1, j + 2)] for r in (i + 1, i + 2)]
        return a * d - b * c
    determinant = sum(m[0][j] * cofactor(0, j) for j in range(3))
    return [[cofactor(j, i) / determinant for j in range(3)] for i in range(3)]


def adaptation(source, target):
    gains = [t / s for s, t in zip(times(BRADFORD, source), times(BRADFORD, target))]
    scaled = [[gain * entry for entry in row] for gain, row in zip(gains, BRADFORD)]
    return product(inverse(BRADFORD), scaled)


def colorants():
    """The D50 colorants in s15Fixed16; the largest of each row takes up the rounding, so that white is D50 exactly."""
    white = from_chromaticity(*D65)
    unscaled = transposed([from_chromaticity(*p) for p in PRIMARIES])
    scales = times(inverse(unscaled), white)
    to_pcs = adaptation(white, [F(v, 65536) for v in D50])
    rows = product(to_pcs, [[s * entry for s, entry in zip(scales, row)] for row in unscaled])
    rounded = [[fixed(entry) for entry in row] for row in rows]
    for row, total in zip(rounded, D50):
        row[row.index(max(row))] += total - sum(row)
    return transposed(rounded)


def linear(value):
    return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4


def main():
    out, size = sys.argv[1], int(sys.argv[2])
    red, green, blue = colorants()
    transfer = curve([int(linear(i / 1023) * 65535 + 0.5) for i in range(1024)])
    tags = [("desc", description("sRGB, IEC 61966-2-1")),
            ("cprt", text(COPYRIGHT)),
            ("dmdd", description("IEC 61966-2-1 default RGB colour space")),
            ("wtpt", xyz(D50)), ("bkpt", xyz((0, 0, 0))),
            ("rXYZ", xyz(red)), ("gXYZ", xyz(green)), ("bXYZ", xyz(blue)),
            ("rTRC", transfer), ("gTRC", transfer), ("bTRC", transfer)]
    with open(out, "wb") as file:
        file.write(profile("mntr", "RGB ", "XYZ ", tags, size))


main()

#!/usr/bin/env python3
"""Tells how far a picture is from its original: compare_ppm.py ORIGINAL.ppm PICTURE.ppm

The mean difference of the samples, and the mean colour difference (CIE 1976 dE, of sRGB under D65)."""

import functools
import math
import pathlib
import sys

PIXELS_TO_COMPARE = 100_000  # of the colour difference; evenly spread over the picture
SRGB_TO_XYZ = ((0.4124, 0.3576, 0.1805), (0.2126, 0.7152, 0.0722), (0.0193, 0.1192, 0.9505))
WHITE = (0.9505, 1.0, 1.089)
LINEAR = [v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4 for v in (i / 255 for i in range(256))]


def samples(path):
    data = pathlib.Path(path).read_bytes()
    width, height = (int(number) for number in data.split(None, 3)[1:3])
    return data[-width * height * 3:]


@functools.lru_cache(maxsize=None)
def lab(red, green, blue):
    light = LINEAR[red], LINEAR[green], LINEAR[blue]
    relative = (sum(a * b for a, b in zip(row, light)) / white for row, white in zip(SRGB_TO_XYZ, WHITE))
    x, y, z = (math.cbrt(v) if v > 0.008856 else v * 7.787 + 16 / 116 for v in relative)
    return 116 * y - 16, 500 * (x - y), 200 * (y - z)


def main():
    original, picture = (samples(path) for path in sys.argv[1:3])
    if len(original) != len(picture):
        sys.exit("compare_ppm: the pictures have different sizes")
    difference = sum(abs(a - b) for a, b in zip(original, picture)) / len(original)
    step = 3 * max(1, len(original) // 3 // PIXELS_TO_COMPARE)
    distances = [math.dist(lab(*original[i:i + 3]), lab(*picture[i:i + 3])) for i in range(0, len(original), step)]
    print(f"mean difference of samples {difference:.2f} of 255, mean dE {sum(distances) / len(distances):.2f}")


if __name__ == "__main__":
    main()

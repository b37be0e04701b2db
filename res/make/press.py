"""Joins two of Argyll's profiles of a press into one.

Usage: press.py COLORIMETRIC.icc PERCEPTUAL.icc OUT SIZE CURVE_ENTRIES DESCRIPTION NOTICE

The colorimetric tables, the gamut and the media white come from the first, the perceptual tables from the second, in
which paper and press black are the white and the black of the PCS: its A2B1 is the exact way back of its gamut-mapped
B2A0. Saturation uses the perceptual tables. Argyll's private tags are left out; identification, licence notice and date
are fixed ones. To fit the size, curves longer than CURVE_ENTRIES are shortened, the tables to the PCS keep every second
node until TO_PCS_GRID is reached (their curves have straightened them), and the gamut, which only flags colours, does
so once.
"""

import sys

from icc_profile import description, profile, read_tags, text
from lut16 import Lut16

TO_PCS_GRID = 9


def read(name):
    with open(name, "rb") as file:
        return file.read()


def unwrapped(paragraphs):
    return "\n\n".join(" ".join(paragraph.split()) for paragraph in paragraphs.split("\n\n"))


def main():
    colorimetric_file, perceptual_file, out, size, curve_entries, name, notice_file = sys.argv[1:]
    colorimetric_bytes = read(colorimetric_file)
    colorimetric, perceptual = read_tags(colorimetric_bytes), read_tags(read(perceptual_file))

    def shortened(data, finest_grid=255):
        lut = Lut16(data)
        lut.shorten_curves(int(curve_entries))
        while lut.grid > finest_grid:
            lut.keep_every_second_node()
        return lut.encoded()

    gamut = Lut16(colorimetric["gamt"])
    gamut.keep_every_second_node()
    to_pcs, from_pcs = shortened(perceptual["A2B1"], TO_PCS_GRID), shortened(perceptual["B2A0"])
    tags = [("desc", description(name)), ("cprt", text(unwrapped(read(notice_file).decode("ascii")))),
            ("wtpt", colorimetric["wtpt"]), ("bkpt", colorimetric["bkpt"]),
            ("A2B0", to_pcs), ("A2B1", shortened(colorimetric["A2B1"], TO_PCS_GRID)), ("A2B2", to_pcs),
            ("B2A0", from_pcs), ("B2A1", shortened(colorimetric["B2A1"])), ("B2A2", from_pcs),
            ("gamt", gamut.encoded())]
    with open(out, "wb") as file:
        file.write(profile("prtr", colorimetric_bytes[16:20].decode(), "Lab ", tags, int(size)))


main()

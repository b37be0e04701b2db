"""Prepares a CMYK characterisation for colprof.

Usage: patches.py IN.ti3 OUT.ti3 CMYK|CMY [BLACK_L BLACK_A BLACK_B]

CMY keeps only the patches without black ink, as patches of a three-ink press. Without a black the colours stay as they
were measured. With one, the darkest print's Lab relative to paper, they become those of perceptual tables: paper is the
white of the PCS, that black is its zero, and everything between moves along, each of X, Y and Z linearly.
"""

import sys

D50 = (96.42, 100.0, 82.49)
LINEAR_BELOW = 6 / 29


def xyz_from_lab(lab):
    fy = (lab[0] + 16) / 116
    return [white * (f ** 3 if f > LINEAR_BELOW else (f - 16 / 116) * 3 * LINEAR_BELOW ** 2)
            for white, f in zip(D50, (fy + lab[1] / 500, fy, fy - lab[2] / 200))]


def lab_from_xyz(xyz):
    fx, fy, fz = [t ** (1 / 3) if t > LINEAR_BELOW ** 3 else t / (3 * LINEAR_BELOW ** 2) + 16 / 116
                  for t in (value / white for value, white in zip(xyz, D50))]
    return [116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)]


def scaled(lab, paper, black):
    """The colour with paper at D50 and black, which is relative to paper already, at zero."""
    relative = [value * white / on_paper for value, white, on_paper in zip(xyz_from_lab(lab), D50, paper)]
    return lab_from_xyz([white * (value - dark) / (white - dark) for value, white, dark in zip(relative, D50, black)])


def read_patches(name):
    """The patches as (number, four inks in percent, Lab)."""
    patches = []
    with open(name, encoding="ascii") as file:
        for line in file:
            fields = line.split()
            if len(fields) == 11 and fields[0].isdigit():
                values = [float(field) for field in fields[1:]]
                patches.append((fields[0], values[:4], values[7:]))
    return patches


def main():
    source, out, inks, *black_lab = sys.argv[1:]
    patches = [patch for patch in read_patches(source) if not any(patch[1][len(inks):])]
    if black_lab:
        black = xyz_from_lab([float(value) for value in black_lab])
        paper = xyz_from_lab(next(lab for _, ink, lab in patches if not any(ink)))
        patches = [(number, ink, scaled(lab, paper, black)) for number, ink, lab in patches]

    fields = ["SAMPLE_ID"] + [f"{inks}_{ink}" for ink in inks] + ["LAB_L", "LAB_A", "LAB_B"]
    lines = ["CTI3", 'DEVICE_CLASS "OUTPUT"', f'COLOR_REP "{inks}_LAB"', f"NUMBER_OF_FIELDS {len(fields)}",
             "BEGIN_DATA_FORMAT", " ".join(fields), "END_DATA_FORMAT", f"NUMBER_OF_SETS {len(patches)}", "BEGIN_DATA"]
    for number, ink, lab in patches:
        percents = [f"{value:g}" for value in ink[:len(inks)]]
        lines.append(" ".join([number] + percents + [f"{value:.4f}" for value in lab]))
    with open(out, "w", encoding="ascii") as file:
        file.write("\n".join(lines + ["END_DATA", ""]))


main()

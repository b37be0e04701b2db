"""Small image files made byte by byte, so that the client's readers and writers meet independent ones."""

import random
import struct
import zlib


def pixels(count, seed=1):
    return random.Random(seed).randbytes(count)


def ppm(width, height, rgb):
    return b"P6 %d %d 255\n" % (width, height) + rgb


def read_ppm(data):
    magic, width, height, maximum = data.split(None, 4)[:4]
    assert (magic, maximum) == (b"P6", b"255"), data[:20]
    size = int(width) * int(height) * 3
    header = len(data) - size
    assert 0 < header < 40
    return int(width), int(height), data[header:]


def tiff(width, height, samples, data, photometric, order="<", planar=False, tile=None, rows=None, deflate=False,
         claim=None):
    """A TIFF file of 8-bit samples. claim: the width and height that the header tells instead of the true ones."""
    planes = [data[i::samples] for i in range(samples)] if planar else [data]
    each = 1 if planar else samples
    unit_width, unit_height = tile or (width, rows or height)
    units = []
    for plane in planes:
        for y in range(0, height, unit_height):
            for x in range(0, width, unit_width):
                lines = [plane[(line * width + x) * each:][:min(unit_width, width - x) * each]
                         for line in range(y, min(y + unit_height, height))]
                if tile:
                    lines = [line.ljust(unit_width * each, b"\0") for line in lines]
                    lines += [bytes(unit_width * each)] * (unit_height - len(lines))
                units.append(b"".join(lines))
    if deflate:
        units = [zlib.compress(unit) for unit in units]

    offsets, at = [], 8
    for unit in units:
        offsets.append(at)
        at += len(unit)
    claimed = claim or (width, height)
    short, long = "H", "I"
    tags = {256: (long, [claimed[0]]), 257: (long, [claimed[1]]), 258: (short, [8] * samples),
            259: (short, [8 if deflate else 1]), 262: (short, [photometric]), 277: (short, [samples]),
            284: (short, [2 if planar else 1])}
    if samples == 4 and photometric == 2:
        tags[338] = (short, [2])
    sizes = [len(unit) for unit in units]
    if tile:
        tags |= {322: (long, [tile[0]]), 323: (long, [tile[1]]), 324: (long, offsets), 325: (long, sizes)}
    else:
        tags |= {273: (long, offsets), 278: (long, [claimed[1] if claim else unit_height]), 279: (long, sizes)}

    directory = at + at % 2
    beyond = directory + 2 + 12 * len(tags) + 4
    entries, values = b"", b""
    for tag, (kind, numbers) in sorted(tags.items()):
        packed = struct.pack(f"{order}{len(numbers)}{kind}", *numbers)
        entries += struct.pack(f"{order}HHI", tag, 3 if kind == short else 4, len(numbers))
        if len(packed) <= 4:
            entries += packed.ljust(4, b"\0")
        else:
            entries += struct.pack(f"{order}I", beyond + len(values))
            values += packed
    head = b"II" if order == "<" else b"MM"
    body = struct.pack(f"{order}HI", 42, directory) + b"".join(units) + b"\0" * (at % 2)
    return head + body + struct.pack(f"{order}H", len(tags)) + entries + bytes(4) + values


def read_tiff(data):
    """Tags and pixels of a little-endian TIFF in uncompressed strips; other pixels are left out."""
    assert data[:4] == b"II*\0", data[:4]
    at, = struct.unpack_from("<I", data, 4)
    count, = struct.unpack_from("<H", data, at)
    tags = {}
    for i in range(count):
        tag, kind, number = struct.unpack_from("<HHI", data, at + 2 + 12 * i)
        letter, size = {2: ("c", 1), 3: ("H", 2), 4: ("I", 4), 5: ("Q", 8), 7: ("B", 1)}[kind]
        where = at + 10 + 12 * i
        if size * number > 4:
            where, = struct.unpack_from("<I", data, where)
        tags[tag] = data[where:where + number] if kind == 7 else struct.unpack_from(f"<{number}{letter}", data, where)
    strips = zip(tags[273], tags[279])
    return tags, b"".join(data[offset:offset + size] for offset, size in strips) if tags[259] == (1,) else None


def jpeg(blocks, adobe=None):
    """A row of 8 x 8 blocks, each of one colour: a baseline JPEG whose codes are as simple as can be. The samples are
    stored as they are given; adobe is the transform that an Adobe marker tells."""
    components = len(blocks[0])

    def segment(marker, content):
        return b"\xff" + bytes([marker]) + struct.pack(">H", len(content) + 2) + content

    bits = ""
    before = [0] * components
    for block in blocks:
        for i, value in enumerate(block):
            level = (value - 128) * 8
            difference, before[i] = level - before[i], level
            size = abs(difference).bit_length()
            bits += f"{size:04b}"  # the code of a size is the size itself
            if size:
                bits += f"{difference if difference > 0 else difference + (1 << size) - 1:0{size}b}"
            bits += "0"  # end of block
    bits += "1" * (-len(bits) % 8)
    scan = bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8)).replace(b"\xff", b"\xff\0")

    ids = range(1, components + 1)
    return b"".join([
        b"\xff\xd8",
        b"" if adobe is None else segment(0xEE, b"Adobe\0\x64\0\0\0\0" + bytes([adobe])),
        segment(0xDB, b"\0" + b"\x01" * 64),
        segment(0xC0, struct.pack(">BHHB", 8, 8, 8 * len(blocks), components) + b"".join(b"%c\x11\0" % i for i in ids)),
        segment(0xC4, b"\0" + bytes([0, 0, 0, 12]) + bytes(12) + bytes(range(12))),
        segment(0xC4, b"\x10" + bytes([1]) + bytes(15) + b"\0"),
        segment(0xDA, bytes([components]) + b"".join(b"%c\0" % i for i in ids) + b"\0\x3f\0"),
        scan, b"\xff\xd9"])

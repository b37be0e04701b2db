"""Writing of ICC version 2 profiles: tag data types, header, tag table, padding to a fixed size.

Nothing here reads the clock: every profile carries the same date, so the same tags give the same bytes.

Padding: the library's resources have fixed sizes. A profile is filled up with zero bytes after its last tag, and these
belong to the profile, since the header's size field counts them. No tag reaches into them.
"""

import struct

D50 = (0xF6D6, 0x10000, 0xD32D)  # the PCS illuminant in s15Fixed16
COPYRIGHT = "Copyright 2026 the Qvclr15x authors. Licensed as the library is."
DATE = (2026, 1, 1, 0, 0, 0)
HEADER_SIZE = 128


def fixed(value):
    """A number as s15Fixed16, rounded to nearest."""
    return int(value * 65536 + (0.5 if value >= 0 else -0.5))


def xyz(values):
    return b"XYZ \0\0\0\0" + struct.pack(">3i", *values)


def text(string):
    return b"text\0\0\0\0" + string.encode("ascii") + b"\0"


def description(string):
    """textDescriptionType with an ASCII part only; the empty Unicode and ScriptCode parts are obligatory."""
    ascii_part = string.encode("ascii") + b"\0"
    return b"desc\0\0\0\0" + struct.pack(">I", len(ascii_part)) + ascii_part + bytes(4 + 4 + 2 + 1 + 67)


def curve(entries):
    return b"curv\0\0\0\0" + struct.pack(f">I{len(entries)}H", len(entries), *entries)


def lut16(input_tables, grid, nodes, output_tables):
    """lut16Type: tables are lists of 16-bit entries per channel, nodes one flat list, first channel slowest."""
    identity = (65536, 0, 0, 0, 65536, 0, 0, 0, 65536)
    numbers = [n for table in input_tables for n in table] + list(nodes) + [n for table in output_tables for n in table]
    head = b"mft2\0\0\0\0" + struct.pack(">4B9i", len(input_tables), len(output_tables), grid, 0, *identity)
    return head + struct.pack(f">2H{len(numbers)}H", len(input_tables[0]), len(output_tables[0]), *numbers)


def profile(device_class, space, pcs, tags, size):
    """The bytes of a profile with these (signature, data) tags, in order; equal data is stored once."""
    table = struct.pack(">I", len(tags))
    body = bytearray()
    first_byte = HEADER_SIZE + 4 + 12 * len(tags)
    offsets = {}
    for signature, data in tags:
        if data not in offsets:
            offsets[data] = first_byte + len(body)
            body += data + bytes(-len(data) % 4)
        table += struct.pack(">4sII", signature.encode(), offsets[data], len(data))

    used = first_byte + len(body)
    if used > size:
        raise SystemExit(f"profile has {used} bytes, {used - size} too many")
    header = struct.pack(">I4sI4s4s4s6H4s", size, bytes(4), 0x02400000, device_class.encode(), space.encode(),
                         pcs.encode(), *DATE, b"acsp")
    header += bytes(28) + struct.pack(">3i", *D50)  # flags to intent are zero: perceptual
    return header + bytes(HEADER_SIZE - len(header)) + table + body + bytes(size - used)


def read_tags(data):
    """The tags of a profile as a dictionary from signature to data."""
    count, = struct.unpack_from(">I", data, HEADER_SIZE)
    tags = {}
    for i in range(count):
        signature, offset, size = struct.unpack_from(">4sII", data, HEADER_SIZE + 4 + 12 * i)
        tags[signature.decode()] = data[offset:offset + size]
    return tags

"""Reading and thinning of lut16Type tables, to make a profile fit its size."""

import struct

import icc_profile


class Lut16:
    """Input tables, nodes and output tables of a lut16Type tag, as 16-bit numbers."""

    def __init__(self, data):
        inputs, outputs, self.grid = data[8:11]
        entries_in, entries_out = struct.unpack_from(">2H", data, 48)
        numbers = struct.unpack_from(f">{(len(data) - 52) // 2}H", data, 52)
        first_node = inputs * entries_in
        after_nodes = first_node + self.grid ** inputs * outputs
        self.input_tables = split(numbers[:first_node], entries_in)
        self.nodes = split(numbers[first_node:after_nodes], outputs)
        self.output_tables = split(numbers[after_nodes:after_nodes + outputs * entries_out], entries_out)

    def shorten_curves(self, entries):
        self.input_tables = [resampled(table, entries) for table in self.input_tables]
        self.output_tables = [resampled(table, entries) for table in self.output_tables]

    def keep_every_second_node(self):
        """Halves the grid along each input; the remaining nodes stay where they are when the grid is odd."""
        assert self.grid % 2 == 1
        strides = [self.grid ** i for i in reversed(range(len(self.input_tables)))]
        kept = [0]
        for stride in strides:
            kept = [base + stride * i for base in kept for i in range(0, self.grid, 2)]
        self.nodes = [self.nodes[i] for i in kept]
        self.grid = (self.grid + 1) // 2

    def encoded(self):
        flat = [number for node in self.nodes for number in node]
        return icc_profile.lut16(self.input_tables, self.grid, flat, self.output_tables)


def split(numbers, length):
    return [numbers[i:i + length] for i in range(0, len(numbers), length)]


def resampled(table, entries):
    """A curve with fewer entries, interpolated linearly; a curve that is short enough already stays as it is."""
    if len(table) <= entries:
        return table
    last = entries - 1
    result = []
    for i in range(entries):
        whole, rest = divmod(i * (len(table) - 1), last)
        following = table[min(whole + 1, len(table) - 1)]
        result.append((table[whole] * (last - rest) + following * rest + last // 2) // last)
    return result

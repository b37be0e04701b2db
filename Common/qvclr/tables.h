// Emulation tables: which pairs of spaces have one, the built-in ones, and tables from a caller's file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/memory.h"
#include "base/status.h"

namespace qv {

struct Kernel;

struct EmulationTable {
  uint32_t src_space, dst_space;  // CS_RGB stands for CS_BGR too
  const Kernel* kernel;
  uint32_t resource;  // number of the built-in table
  size_t bytes;       // of the grid: a lookup reads none behind them
};

const EmulationTable* TableFor(uint32_t src_space, uint32_t dst_space);  // null for a pair without one

// In the resource module, where it stays. Null when it is missing there or smaller than the grid.
const uint8_t* FindBuiltInTable(const EmulationTable& described);

// Reads a table from an uncompressed little-endian TIFF file of one strip, whose pixels are its bytes. `*table` holds
// `bytes` zeros: a smaller image leaves the rest of them, a larger one takes a buffer of its own. What the image says
// of its colours is of no account. kNoMemory, or the system's error number (positive); a file that ends too early is
// 38. After a failure `*table` holds nothing of use.
Status ReadTable(const QWChar* name, size_t bytes, Owned<uint8_t[]>* table);

}  // namespace qv

#include "qvclr/tables.h"

#include <array>
#include <span>
#include <utility>

#include "base/files.h"
#include "base/last_error.h"
#include "base/module.h"
#include "base/sizes.h"
#include "qvclr/kernels/kernels.h"
#include "qvclr/library.h"
#include "qvclr/spaces.h"

namespace qv {
namespace {

constexpr size_t kGridOf17 = size_t{3} * 17 * 17 * 17 * 17, kGridOf33 = size_t{3} * 33 * 33 * 33;

constexpr EmulationTable kTables[] = {
    {CS_CMYK, CS_RGB, &EmuCMYKToRGB, 111, kGridOf17},
    {CS_LAB, CS_RGB, &EmuLabToRGB, 112, kGridOf33},
    {CS_RGB, CS_LAB, &EmuRGBToLab, 113, kGridOf33},
};

// Windows' number for a read past the end, on every system: a short read leaves no error of the system's own.
constexpr auto kEndsTooEarly = static_cast<Status>(38);

// What a TIFF directory says of its image; 0 where it says nothing.
struct Image {
  uint32_t width, length, samples, strip, photometric;
};

uint32_t* FieldOfTag(uint32_t tag, Image* image) {
  switch (tag) {
    case 256: return &image->width;
    case 257: return &image->length;
    case 262: return &image->photometric;
    case 273: return &image->strip;
    case 277: return &image->samples;
    default: return nullptr;
  }
}

uint32_t Little(std::span<const uint8_t> bytes) {
  uint32_t number = 0;
  for (size_t i = bytes.size(); i > 0; --i) number = number << 8 | bytes[i - 1];
  return number;
}

Status SeekTo(File& file, int64_t offset) { return file.Seek(offset, Origin::kStart) ? kSuccess : LastErrorStatus(); }

Status ReadAll(File& file, std::span<uint8_t> bytes) {
  size_t taken = 0;
  if (!file.Read(bytes.data(), bytes.size(), &taken)) return LastErrorStatus();
  return taken == bytes.size() ? kSuccess : kEndsTooEarly;
}

template <size_t kWidth>
Status ReadNumberAt(File& file, int64_t offset, uint32_t* number) {
  std::array<uint8_t, kWidth> bytes{};
  Status status = SeekTo(file, offset);
  if (Ok(status)) status = ReadAll(file, bytes);
  *number = Little(bytes);
  return status;
}

// The value is taken as 32 bits, whatever its type. Of tags without a field nothing else is read.
Status ReadEntry(File& file, int64_t offset, Image* image) {
  uint32_t tag = 0;
  if (const Status status = ReadNumberAt<2>(file, offset, &tag); !Ok(status)) return status;
  uint32_t* const field = FieldOfTag(tag, image);
  if (!field) return kSuccess;
  std::array<uint8_t, 10> type_count_value{};
  if (const Status status = ReadAll(file, type_count_value); !Ok(status)) return status;
  *field = Little(std::span(type_count_value).last<4>());
  return kSuccess;
}

// The last one of a repeated tag holds.
Status ReadDirectory(File& file, Image* image) {
  uint32_t directory = 0, entries = 0;
  if (const Status status = ReadNumberAt<4>(file, 4, &directory); !Ok(status)) return status;
  if (const Status status = ReadNumberAt<2>(file, directory, &entries); !Ok(status)) return status;
  for (uint32_t i = 0; i < entries; ++i) {
    const int64_t offset = int64_t{directory} + 2 + int64_t{12} * i;
    if (const Status status = ReadEntry(file, offset, image); !Ok(status)) return status;
  }
  return kSuccess;
}

}  // namespace

const EmulationTable* TableFor(uint32_t src_space, uint32_t dst_space) {
  const auto described = [](uint32_t id) { return IsRgb(id) ? uint32_t{CS_RGB} : id; };
  for (const EmulationTable& table : kTables) {
    if (table.src_space == described(src_space) && table.dst_space == described(dst_space)) return &table;
  }
  return nullptr;
}

const uint8_t* FindBuiltInTable(const EmulationTable& described) {
  std::span<const uint8_t> bytes;
  const Status status = FindModuleResource(TheLibrary().resource_module.load(), "ET", described.resource, &bytes);
  return Ok(status) && bytes.size() >= described.bytes ? bytes.data() : nullptr;
}

Status ReadTable(const QWChar* name, size_t bytes, Owned<uint8_t[]>* table) {
  File file;
  if (!file.Open(name, Disposition::kReadExisting)) return LastErrorStatus();
  Image image{};
  if (const Status status = ReadDirectory(file, &image); !Ok(status)) return status;

  // Compared before anything is allocated for it.
  const size_t stored = Product(Product(image.width, image.length), image.samples);
  int64_t end = 0;
  if (!file.Seek(0, Origin::kEnd, &end)) return LastErrorStatus();
  if (stored > static_cast<uint64_t>(end)) return kEndsTooEarly;
  if (stored > bytes) {
    auto larger = NewArray<uint8_t>(stored);
    if (!larger) return kNoMemory;
    *table = std::move(larger);
  }
  if (const Status status = SeekTo(file, image.strip); !Ok(status)) return status;
  return ReadAll(file, {table->get(), stored});
}

}  // namespace qv

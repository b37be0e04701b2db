// Files that tests write, and names of files in records.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "Qvclr15x.h"
#include "support/bytes.h"

namespace qv_test {

// A folder of the test's own, empty at first, which goes with it.
class Folder {
 public:
  explicit Folder(std::string_view name) : path_(std::filesystem::temp_directory_path() / name) {
    std::filesystem::remove_all(path_);  // what an ended run left
    std::filesystem::create_directories(path_);
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::filesystem::path In(std::string_view name) const { return path_ / name; }
  std::filesystem::path Write(const std::filesystem::path& name, const Bytes& bytes) const {
    std::error_code ignored;
    std::filesystem::remove(path_ / name, ignored);  // faster than emptying
    std::ofstream(path_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

inline Bytes Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}
inline Bytes ReadResource(std::string_view name) { return Contents(std::filesystem::path(QV_RES) / name); }

inline void SetName(const std::filesystem::path& path, QWChar (&field)[260]) {
  const auto wide = path.string<QWChar>();
  std::ranges::fill(field, QWChar{0});
  std::copy_n(wide.begin(), std::min(wide.size(), std::size(field)), field);
}

// An uncompressed little-endian TIFF file whose one strip is `content`; its image claims `rows` lines of three bytes.
inline Bytes TiffOf(const Bytes& content, size_t rows) {
  constexpr uint32_t kEntries = 4, kStrip = 8 + 2 + 12 * kEntries;
  const uint32_t tags[kEntries][2] = {{256, 1}, {257, static_cast<uint32_t>(rows)}, {273, kStrip}, {277, 3}};
  Bytes file = {'I', 'I', 42, 0, 8, 0, 0, 0, kEntries, 0};
  const auto add = [&](uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) file.push_back(static_cast<uint8_t>(value >> 8 * i));
  };
  for (const auto& [tag, value] : tags) add(tag, 2), add(4, 2), add(1, 4), add(value, 4);
  file.insert(file.end(), content.begin(), content.end());
  return file;
}
inline Bytes TiffOf(const Bytes& content) { return TiffOf(content, content.size() / 3); }

}  // namespace qv_test

// Whole files, and output files that appear only when they are complete.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Qvclr15x.h"

namespace client {

// Names are UTF-8 in the client on every system; this is one as the system takes it.
std::filesystem::path NativePath(const std::string& name);

// As the library takes it; fails for one that is not UTF-8.
std::basic_string<QWChar> WideName(const std::string& name);

std::vector<uint8_t> ReadFile(const std::string& path);

// The lower-case part of a name behind its last dot, with the dot: ".tif".
std::string Extension(const std::string& path);

// A file is written under PartPath() and gets its name by Commit(); without it, nothing is left.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& PartPath() const { return part_path_; }
  void Commit();

 private:
  std::string path_, part_path_;
};

}  // namespace client

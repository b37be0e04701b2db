#include "files.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <system_error>

#include "failure.h"

namespace client {

std::filesystem::path NativePath(const std::string& name) { return std::u8string(name.begin(), name.end()); }

std::basic_string<QWChar> WideName(const std::string& name) {
  try {
    return NativePath(name).string<QWChar>();
  } catch (const std::system_error&) {
    Fail(name, ": a name that is not in UTF-8");
  }
}

std::vector<uint8_t> ReadFile(const std::string& path) {
  std::error_code error;
  const uintmax_t bytes = std::filesystem::file_size(NativePath(path), error);
  if (error) Fail(path, ": cannot be read");  // nor opened: it may be a pipe, which would wait for a writer
  std::ifstream file(NativePath(path), std::ios::binary);
  std::vector<uint8_t> content(bytes);
  if (!file.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(bytes))) {
    Fail(path, ": cannot be read");
  }
  return content;
}

std::string Extension(const std::string& path) {
  const std::u8string own = NativePath(path).extension().u8string();
  std::string extension(own.begin(), own.end());
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

OutputFile::OutputFile(const std::string& path) : path_(path), part_path_(path + ".qvclr-part") {
  // A device or a folder must not be replaced by a file.
  std::error_code error;
  const auto status = std::filesystem::status(NativePath(path), error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) Fail(path, ": is no ordinary file");
}

OutputFile::~OutputFile() {
  std::error_code ignored;
  if (!part_path_.empty()) std::filesystem::remove(NativePath(part_path_), ignored);
}

void OutputFile::Commit() {
  std::error_code error;
  std::filesystem::rename(NativePath(part_path_), NativePath(path_), error);
  if (error) Fail(path_, ": cannot be created: ", error.message());
  part_path_.clear();
}

}  // namespace client

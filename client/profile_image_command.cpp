// qvclr profile embed, extract and strip: profiles in image files.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "failure.h"
#include "files.h"
#include "names.h"
#include "profile_edit.h"
#include "profile_file.h"

namespace client {
namespace {

struct Options {
  std::string image, profile;
  bool check = false;
};

// The profile bytes of a record, in or out of an image file.
class ImageProfile {
 public:
  ImageProfile() { Q_InitICCProfile(&record_, sizeof record_); }
  ~ImageProfile() { Q_FreeICCProfile(&record_); }
  ImageProfile(const ImageProfile&) = delete;
  ImageProfile& operator=(const ImageProfile&) = delete;

  int32_t Load(const std::string& image) { return Q_LoadICCProfile(WideName(image).c_str(), &record_, nullptr); }
  int32_t Save(const std::string& image) { return Q_SaveICCProfile(WideName(image).c_str(), &record_, nullptr); }
  // By a profile file: the library keeps the bytes of any version.
  int32_t ReadFrom(const std::string& file) { return Q_FillICCProfileFromICCFile(WideName(file).c_str(), &record_); }
  std::span<const uint8_t> bytes() const {
    return {record_.profileBytes, static_cast<size_t>(record_.profileByteSize)};
  }

 private:
  IccProfileRecord record_{};
};

bool IsGif(const std::vector<uint8_t>& image) { return image.size() > 6 && std::memcmp(image.data(), "GIF8", 4) == 0; }
bool IsJpeg(const std::vector<uint8_t>& image) { return image.size() > 3 && image[0] == 0xFF && image[1] == 0xD8; }

void Require(int32_t status, const std::string& path) {
  if (status != SUCCESS) Fail(path, ": ", StatusText(status));
}

// An image without a profile is no failure where only that was asked.
bool Loads(ImageProfile* profile, const std::string& image) {
  const int32_t status = profile->Load(image);
  if (status != ERR_ICC_PROFILE_NOT_FOUND) Require(status, image);
  return status == SUCCESS;
}

void Embed(const Options& options) {
  const ProfileFile file(options.profile);  // that it is a profile at all
  if (file.NumberAt(0) != file.size()) Fail(options.profile, ": its size field is not its size");
  ImageProfile profile;
  Require(profile.ReadFrom(options.profile), options.profile);
  const bool gif = IsGif(ReadFile(options.image));
  Require(profile.Save(options.image), options.image);
  if (!options.check) return;
  if (gif) Fail(options.image, ": embedded, but profiles in GIF files cannot be read back");
  ImageProfile back;
  if (!Loads(&back, options.image) || !std::ranges::equal(back.bytes(), profile.bytes())) {
    Fail(options.image, ": the profile that is read back is another one");
  }
  std::printf("%zu bytes, read back\n", back.bytes().size());
}

// What the numbers of the profile's segments say: the library joins them as they stand.
std::string RemarkOnChunks(const std::vector<uint8_t>& jpeg) {
  constexpr char kSignature[] = "ICC_PROFILE";
  constexpr size_t kHead = 4, kNumberAt = kHead + sizeof kSignature, kTotalAt = kNumberAt + 1;
  unsigned chunks = 0, total = 0;
  for (size_t at = 2; at + kHead <= jpeg.size() && jpeg[at] == 0xFF && jpeg[at + 1] != 0xDA;) {
    if (jpeg[at + 1] == 0xFF) {
      ++at;
      continue;
    }
    const size_t end = at + 2 + (size_t{jpeg[at + 2]} << 8 | jpeg[at + 3]);
    if (end > jpeg.size()) break;
    if (jpeg[at + 1] == 0xE2 && at + kTotalAt < end &&
        std::memcmp(&jpeg[at + kHead], kSignature, sizeof kSignature) == 0) {
      if (jpeg[at + kNumberAt] != ++chunks) return "its segments are out of order";
      total = jpeg[at + kTotalAt];
    }
    at = end;
  }
  return chunks == total ? "" : std::to_string(chunks) + " of its " + std::to_string(total) + " segments are there";
}

void Extract(const Options& options) {
  ImageProfile profile;
  Require(profile.Load(options.image), options.image);
  const std::vector<uint8_t> image = options.check ? ReadFile(options.image) : std::vector<uint8_t>();
  WriteProfile(options.profile, profile.bytes());
  if (!options.check) return;
  if (const std::string remark = IsJpeg(image) ? RemarkOnChunks(image) : ""; !remark.empty()) {
    Fail(options.image, ": the profile is damaged: ", remark);
  }
  const std::span<const uint8_t> bytes = profile.bytes();
  const uint64_t claimed = bytes.size() < 4 ? kHeaderBytes : BigEndian(bytes.first(4));
  if (claimed > bytes.size()) Fail(options.image, ": the profile is truncated by ", claimed - bytes.size(), " bytes");
  if (claimed < bytes.size()) Fail(options.image, ": ", bytes.size() - claimed, " bytes follow the profile");
  std::printf("%zu bytes, as many as the profile tells\n", bytes.size());
}

void Strip(const Options& options) {
  ImageProfile nothing;
  Require(nothing.Save(options.image), options.image);
  ImageProfile back;
  if (options.check && Loads(&back, options.image)) Fail(options.image, ": there is a profile still");
}

CLI::App* AddImageCommand(CLI::App* group, const char* name, const char* help, const std::shared_ptr<Options>& options,
                          void (*run)(const Options&)) {
  CLI::App* command = group->add_subcommand(name, help);
  command->add_option("IMAGE", options->image, "an image file, told by its content")->required();
  command->callback([options, run] { run(*options); });
  return command;
}

}  // namespace

void AddProfileImageCommands(CLI::App* group) {
  const auto options = std::make_shared<Options>();
  CLI::App* embed = AddImageCommand(group, "embed", "Put a profile into a TIFF, JPEG or GIF file", options, Embed);
  embed->add_option("PROFILE", options->profile, "an ICC profile")->required();
  embed->add_flag("--check", options->check, "read it back and compare");
  CLI::App* extract =
      AddImageCommand(group, "extract", "Write the profile of a TIFF, JPEG, PostScript or PICT file", options, Extract);
  extract->add_option("PROFILE", options->profile, "the file to write")->required();
  extract->add_flag("--check", options->check, "fail when the profile is not whole");
  CLI::App* strip = AddImageCommand(group, "strip", "Remove the profile of a TIFF or JPEG file", options, Strip);
  strip->add_flag("--check", options->check, "look whether it is gone");
}

}  // namespace client

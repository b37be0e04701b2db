// qvclr convert IN OUT: an image or raw pixels from one colour space to another, band by band.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

#include "commands.h"
#include "converter.h"
#include "failure.h"
#include "files.h"
#include "image.h"
#include "progress.h"

namespace client {
namespace {

constexpr size_t kBandBytes = 1024 * 1024;

struct Options {
  std::string in, out, from, to, method, size, white, profile, source_profile, dest_profile, table;
  std::optional<int32_t> black;
  bool raw = false, compress = false, quiet = false, time = false;
};

std::unique_ptr<ImageSource> OpenSource(const Options& options) {
  if (options.size.empty()) return OpenImage(options.in);
  if (options.from.empty()) Fail("raw pixels (--size) need --from, the space that they are in");
  unsigned width = 0, height = 0;
  char end = 0;
  if (std::sscanf(options.size.c_str(), "%9ux%9u%c", &width, &height, &end) != 2) {
    Fail("'", options.size, "' is no size WIDTHxHEIGHT");
  }
  return OpenRaw(options.in, ParseSpace(options.from), width, height);
}

// The space that the pixels are taken for; another one than the image's own must have pixels of the same size.
const Space& SourceSpace(const Options& options, const ImageInfo& image) {
  if (options.from.empty()) return *image.space;
  const Space& space = ParseSpace(options.from);
  if (space.bits != image.space->bits) {
    Fail(options.in, ": holds ", image.space->name, ", which cannot be taken for ", space.name);
  }
  return space;
}

std::vector<uint8_t> ProfileFor(const Space& space, const std::string& path) {
  constexpr size_t kHeaderBytes = 128, kSpaceAt = 16, kSignatureAt = 36;
  std::vector<uint8_t> profile = ReadFile(path);
  const std::string text(profile.begin(), profile.end());
  if (text.size() < kHeaderBytes || text.compare(kSignatureAt, 4, "acsp") != 0) Fail(path, ": no ICC profile");
  std::string profile_space = text.substr(kSpaceAt, 4);
  profile_space.erase(profile_space.find_last_not_of(' ') + 1);
  std::ranges::transform(profile_space, profile_space.begin(), [](char c) { return c < 'a' ? char(c + 32) : c; });
  if (profile_space != space.name) Fail(path, ": a profile of ", profile_space, ", not of ", space.name);
  return profile;
}

std::unique_ptr<ImageSink> CreateSink(const Options& options, const std::string& path, const ImageInfo& info) {
  const std::string extension = Extension(options.out);
  if (!options.raw && (extension == ".tif" || extension == ".tiff")) {
    TiffOptions tiff{.compress = options.compress, .profile = {}};
    if (!options.profile.empty()) tiff.profile = ProfileFor(*info.space, options.profile);
    return CreateTiff(path, info, tiff);
  }
  if (!options.profile.empty() || options.compress) Fail("--embed and --compress are for TIFF output");
  if (options.raw || extension != ".ppm") return CreateRaw(path, info);
  if (info.space->id != CS_RGB) Fail("PPM files hold rgb only, not ", info.space->name, " (--raw writes any space)");
  return CreatePpm(path, info);
}

void FlipLabCoding(std::vector<uint8_t>& pixels) {
  for (size_t i = 0; i + 2 < pixels.size(); i += 3) {
    pixels[i + 1] ^= 0x80;
    pixels[i + 2] ^= 0x80;
  }
}

// Files need the one method that reads them, which is also the method where none is named.
const Method& ChooseMethod(const Options& options) {
  const bool profiles = !options.source_profile.empty() || !options.dest_profile.empty();
  const bool table = !options.table.empty();
  const char* by_files = profiles ? "custom" : table ? "custom-table" : "formula";
  const Method& method = ParseMethod(options.method.empty() ? by_files : options.method);
  if (profiles && method.id != METHOD_CUSTOM_ICC) Fail("--src-profile and --dst-profile need --method custom");
  if (table && method.id != METHOD_CUSTOM_TABLE) Fail("--table needs --method custom-table");
  if (!profiles && method.id == METHOD_CUSTOM_ICC) Fail("--method custom needs --src-profile or --dst-profile");
  if (!table && method.id == METHOD_CUSTOM_TABLE) Fail("--method custom-table needs --table");
  return method;
}

int32_t LinesPerBand(const Space& from, const Space& to, const ImageInfo& image) {
  if (from.Planar() || to.Planar()) return image.height;  // planes span the whole frame
  const size_t lines = kBandBytes / std::max(LineBytes(from, image.width), LineBytes(to, image.width));
  return static_cast<int32_t>(std::clamp(lines, size_t{1}, static_cast<size_t>(image.height)));
}

void Convert(const Options& options) {
  const Space& to = ParseSpace(options.to);
  ConverterOptions settings{ChooseMethod(options), {},           options.black, options.source_profile,
                            options.dest_profile,  options.table};
  if (!options.white.empty()) settings.white_point = ParseWhitePoint(options.white);

  auto source = OpenSource(options);
  const ImageInfo image = source->info();
  const Space& from = SourceSpace(options, image);
  Converter converter(from, to, settings);

  ImageInfo result = image;
  result.space = &to;
  result.lab = converter.LabHasOffset() ? LabCoding::kOffset : LabCoding::kSigned;
  const bool flip_lab = from.id == CS_LAB && image.lab != LabCoding::kUnknown && image.lab != result.lab;

  OutputFile file(options.out);
  const auto sink = CreateSink(options, file.PartPath(), result);
  const int32_t band_lines = LinesPerBand(from, to, image);
  std::vector<uint8_t> before(LineBytes(from, image.width) * static_cast<size_t>(band_lines));
  std::vector<uint8_t> after(LineBytes(to, image.width) * static_cast<size_t>(band_lines));
  {
    Progress progress(image.height, options.quiet);
    for (int32_t done = 0; done < image.height;) {
      const int32_t lines = std::min(band_lines, image.height - done);
      source->ReadLines(before.data(), lines);
      if (flip_lab) FlipLabCoding(before);
      converter.Convert(before.data(), after.data(), image.width, lines);
      sink->WriteLines(after.data(), lines);
      progress.Reached(done += lines);
    }
  }
  sink->Finish();
  source.reset();  // the output may replace the input, which must not be open then
  file.Commit();

  if (options.time) {
    const double megapixels = 1e-6 * image.width * image.height;
    const double seconds = converter.Seconds();
    std::printf("%.3f megapixels in %.6f s: %.1f megapixels per second\n", megapixels, seconds, megapixels / seconds);
  }
}

}  // namespace

void AddConvertCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("convert", "Convert an image or raw pixels to another colour space");
  command->add_option("IN", options->in, "PPM, PGM, TIFF or JPEG image; raw pixels with --size")->required();
  command->add_option("OUT", options->out, ".ppm, .tif or .tiff; raw pixels otherwise")->required();
  command->add_option("--to", options->to, "colour space of the output")->required();
  command->add_option("--from", options->from, "colour space of the input (the image's own)");
  command->add_option("--method", options->method, MethodNames() + " (formula, or what the files below are for)");
  command->add_option("--white", options->white, "white point of profiles: d50, d55, d65, d75, 9300 or x,y (d50)");
  const auto add_file = [command](const char* option, std::string& name, const char* what) {
    command->add_option(option, name, what)->check([](const std::string& text) {
      return text.empty() ? "a file name is needed" : "";
    });
  };
  add_file("--src-profile", options->source_profile, "ICC profile of the input, for method custom");
  add_file("--dst-profile", options->dest_profile, "ICC profile of the output, for method custom");
  add_file("--table", options->table, "TIFF file with the table of method custom-table");
  command->add_option("--black", options->black, "black generation of CMYK by formula and table, in thousandths (175)");
  command->add_option("--size", options->size, "WIDTHxHEIGHT of raw input");
  command->add_flag("--raw", options->raw, "raw output whatever its name is");
  command->add_flag("--compress", options->compress, "deflate TIFF output");
  command->add_option("--embed", options->profile, "ICC profile to embed in TIFF output");
  command->add_flag("--time", options->time, "print the speed of the conversion alone");
  command->add_flag("--quiet", options->quiet, "no progress line");
  command->footer("Colour spaces: " + SpaceNames() +
                  "\nor their numbers.\n"
                  "A pair without rgb or bgr on a side is converted by formula, whatever the method.");
  command->callback([options] { Convert(*options); });
}

}  // namespace client

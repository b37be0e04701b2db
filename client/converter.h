// A converter of the library, with the time that its conversions took.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "names.h"

namespace client {

struct ConverterOptions {
  Method method{};
  std::optional<WhitePointParams> white_point;
  std::optional<int32_t> black;                     // black generation in thousandths
  std::string source_profile, dest_profile, table;  // file names; empty: none
};

class Converter {
 public:
  Converter(const Space& from, const Space& to, const ConverterOptions& options);
  ~Converter();
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  void Convert(const uint8_t* from, uint8_t* to, int32_t width, int32_t height);
  double Seconds() const { return time_.count(); }  // spent in Convert()

  // Whether a and b of Lab are stored as value + 128, as profiles have them; else they are signed bytes.
  bool LabHasOffset() const { return by_profiles_; }

 private:
  std::string route_;  // for failures: "rgb to cmyk by formula"
  bool by_profiles_;
  ColorConverter* handle_ = nullptr;
  std::chrono::duration<double> time_{0};
};

}  // namespace client

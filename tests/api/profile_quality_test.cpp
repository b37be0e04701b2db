// What the built-in CMYK profile is worth: its press data, and a picture's way to ink and back.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "support/converters.h"

namespace {

using namespace qv_test;

struct Close {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, Close>;

class Engine {
 public:
  Engine(const Profile& from, uint32_t from_format, const Profile& to, uint32_t to_format, uint32_t intent)
      : transform_(cmsCreateTransform(from.get(), from_format, to.get(), to_format, intent, cmsFLAGS_NOOPTIMIZE)) {}
  ~Engine() { cmsDeleteTransform(transform_); }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  template <typename To, typename From>
  To Convert(const From& from) const {
    To to{};
    cmsDoTransform(transform_, &from, &to, 1);
    return to;
  }

 private:
  cmsHTRANSFORM transform_;
};

struct Rgb {
  uint8_t r, g, b;
};
struct Ink {
  double c, m, y, k;  // percent
};

Profile Open(const char* file) {
  return Profile(cmsOpenProfileFromFile((std::string(QV_RES "/") + file).c_str(), "r"));
}

TEST(CmykProfile, ReproducesItsPressData) {
  const Profile cmyk = Open("cmyk.icc"), lab(cmsCreateLab4Profile(nullptr));
  const Engine to_lab(cmyk, TYPE_CMYK_DBL, lab, TYPE_Lab_DBL, INTENT_ABSOLUTE_COLORIMETRIC);
  std::ifstream data(QV_FOGRA39L);
  std::string line;
  const auto is = [&](const char* keyword) { return line.substr(0, line.find_last_not_of(" \r\t") + 1) == keyword; };
  while (std::getline(data, line) && !is("BEGIN_DATA")) {
  }
  double sum = 0;
  int patches = 0;
  while (std::getline(data, line) && !is("END_DATA")) {
    std::istringstream fields(line);
    std::string id;
    Ink ink{};
    double x, y, z;
    cmsCIELab measured{};
    fields >> id >> ink.c >> ink.m >> ink.y >> ink.k >> x >> y >> z >> measured.L >> measured.a >> measured.b;
    ASSERT_TRUE(fields) << line;
    const auto printed = to_lab.Convert<cmsCIELab>(ink);
    sum += cmsDeltaE(&printed, &measured);
    ++patches;
  }
  EXPECT_EQ(patches, 1617);
  EXPECT_LT(sum / patches, 0.5);
  RecordProperty("mean_delta_e", std::to_string(sum / patches));
}

TEST(CmykProfile, BringsColoursOfItsGamutBack) {
  const Profile srgb = Open("srgb.icc"), cmyk = Open("cmyk.icc"), lab(cmsCreateLab4Profile(nullptr));
  const Engine lab_of_rgb(srgb, TYPE_RGB_8, lab, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC);
  const Engine ink_of_lab(lab, TYPE_Lab_DBL, cmyk, TYPE_CMYK_DBL, INTENT_RELATIVE_COLORIMETRIC);
  const Engine lab_of_ink(cmyk, TYPE_CMYK_DBL, lab, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC);
  const ConverterPtr to_ink = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));
  const ConverterPtr back = MakeConverter(CS_CMYK, CS_RGB, Params(METHOD_ICC));
  ASSERT_TRUE(to_ink && back);
  double sum = 0;
  int colours = 0;
  for (int i = 0; i < 16 * 16 * 16; ++i) {
    const auto level = [&](int shift) { return static_cast<uint8_t>((i >> shift & 15) * 17); };
    const Rgb rgb = {level(8), level(4), level(0)};
    const auto wanted = lab_of_rgb.Convert<cmsCIELab>(rgb);
    const auto printed = lab_of_ink.Convert<cmsCIELab>(ink_of_lab.Convert<Ink>(wanted));
    if (cmsDeltaE(&wanted, &printed) > 2) continue;
    uint8_t ink[4];
    Rgb returned;
    ASSERT_EQ(Q_ClrConvert(to_ink.get(), &rgb, ink, 1, 1, 0, 0), SUCCESS);
    ASSERT_EQ(Q_ClrConvert(back.get(), ink, &returned, 1, 1, 0, 0), SUCCESS);
    const auto seen = lab_of_rgb.Convert<cmsCIELab>(returned);
    sum += cmsDeltaE(&wanted, &seen);
    ++colours;
  }
  EXPECT_GT(colours, 1000);
  EXPECT_LT(sum / colours, 3);
  RecordProperty("mean_delta_e", std::to_string(sum / colours));
  RecordProperty("colours", colours);
}

}  // namespace

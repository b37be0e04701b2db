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

// The engine without rounding; both profiles are closed.
template <typename To, typename From>
auto Engine(cmsHPROFILE from, uint32_t from_format, cmsHPROFILE to, uint32_t to_format, uint32_t intent) {
  std::shared_ptr<void> transform(cmsCreateTransform(from, from_format, to, to_format, intent, cmsFLAGS_NOOPTIMIZE),
                                  cmsDeleteTransform);
  for (cmsHPROFILE profile : {from, to}) cmsCloseProfile(profile);
  return [transform](const From& colour) {
    To converted{};
    cmsDoTransform(transform.get(), &colour, &converted, 1);
    return converted;
  };
}

struct Rgb {
  uint8_t r, g, b;
};
struct Ink {
  double c, m, y, k;  // percent
};

cmsHPROFILE Open(const char* file) { return cmsOpenProfileFromFile((std::string(QV_RES "/") + file).c_str(), "r"); }
cmsHPROFILE Lab() { return cmsCreateLab4Profile(nullptr); }

TEST(CmykProfile, ReproducesItsPressData) {
  const auto to_lab =
      Engine<cmsCIELab, Ink>(Open("cmyk.icc"), TYPE_CMYK_DBL, Lab(), TYPE_Lab_DBL, INTENT_ABSOLUTE_COLORIMETRIC);
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
    const auto printed = to_lab(ink);
    sum += cmsDeltaE(&printed, &measured);
    ++patches;
  }
  EXPECT_EQ(patches, 1617);
  EXPECT_LT(sum / patches, 0.5);
  RecordProperty("mean_delta_e", std::to_string(sum / patches));
}

TEST(CmykProfile, BringsColoursOfItsGamutBack) {
  constexpr uint32_t kIntent = INTENT_RELATIVE_COLORIMETRIC;
  const auto lab_of_rgb = Engine<cmsCIELab, Rgb>(Open("srgb.icc"), TYPE_RGB_8, Lab(), TYPE_Lab_DBL, kIntent);
  const auto ink_of_lab = Engine<Ink, cmsCIELab>(Lab(), TYPE_Lab_DBL, Open("cmyk.icc"), TYPE_CMYK_DBL, kIntent);
  const auto lab_of_ink = Engine<cmsCIELab, Ink>(Open("cmyk.icc"), TYPE_CMYK_DBL, Lab(), TYPE_Lab_DBL, kIntent);
  const ConverterPtr to_ink = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));
  const ConverterPtr back = MakeConverter(CS_CMYK, CS_RGB, Params(METHOD_ICC));
  ASSERT_TRUE(to_ink && back);
  double sum = 0;
  int colours = 0;
  for (int i = 0; i < 16 * 16 * 16; ++i) {
    const auto level = [&](int shift) { return static_cast<uint8_t>((i >> shift & 15) * 17); };
    const Rgb rgb = {level(8), level(4), level(0)};
    const auto wanted = lab_of_rgb(rgb);
    const auto printed = lab_of_ink(ink_of_lab(wanted));
    if (cmsDeltaE(&wanted, &printed) > 2) continue;
    uint8_t ink[4];
    Rgb returned;
    ASSERT_EQ(Q_ClrConvert(to_ink.get(), &rgb, ink, 1, 1, 0, 0), SUCCESS);
    ASSERT_EQ(Q_ClrConvert(back.get(), ink, &returned, 1, 1, 0, 0), SUCCESS);
    const auto seen = lab_of_rgb(returned);
    sum += cmsDeltaE(&wanted, &seen);
    ++colours;
  }
  EXPECT_GT(colours, 1000);
  EXPECT_LT(sum / colours, 3);
  RecordProperty("mean_delta_e", std::to_string(sum / colours));
  RecordProperty("colours", colours);
}

}  // namespace

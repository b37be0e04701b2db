// What the built-in CMYK profile is worth: its press data, from ink and back to it.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <fstream>
#include <sstream>
#include <string>

namespace {

struct Ink {
  double c, m, y, k;  // percent
};

// The engine without rounding.
cmsHTRANSFORM Transform(cmsHPROFILE from, uint32_t from_format, cmsHPROFILE to, uint32_t to_format) {
  cmsHTRANSFORM transform =
      cmsCreateTransform(from, from_format, to, to_format, INTENT_ABSOLUTE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
  EXPECT_TRUE(transform);
  for (cmsHPROFILE profile : {from, to}) cmsCloseProfile(profile);
  return transform;
}

TEST(CmykProfile, ReproducesItsPressData) {
  const auto open = [] { return cmsOpenProfileFromFile(QV_RES "/cmyk.icc", "r"); };
  cmsHTRANSFORM to_lab = Transform(open(), TYPE_CMYK_DBL, cmsCreateLab4Profile(nullptr), TYPE_Lab_DBL);
  cmsHTRANSFORM to_ink = Transform(cmsCreateLab4Profile(nullptr), TYPE_Lab_DBL, open(), TYPE_CMYK_DBL);
  std::ifstream data(QV_FOGRA39L);
  std::string line;
  const auto is = [&](const char* keyword) { return line.substr(0, line.find_last_not_of(" \r\t") + 1) == keyword; };
  while (std::getline(data, line) && !is("BEGIN_DATA")) {
  }
  double forward = 0, back = 0;
  int patches = 0;
  for (; std::getline(data, line) && !is("END_DATA"); ++patches) {
    std::istringstream fields(line);
    std::string id;
    Ink ink{}, chosen{};
    double x, y, z;
    cmsCIELab measured{}, printed{}, reprinted{};
    fields >> id >> ink.c >> ink.m >> ink.y >> ink.k >> x >> y >> z >> measured.L >> measured.a >> measured.b;
    ASSERT_TRUE(fields) << line;
    cmsDoTransform(to_lab, &ink, &printed, 1);
    cmsDoTransform(to_ink, &measured, &chosen, 1);
    cmsDoTransform(to_lab, &chosen, &reprinted, 1);
    forward += cmsDeltaE(&printed, &measured);
    back += cmsDeltaE(&reprinted, &measured);
  }
  for (cmsHTRANSFORM transform : {to_lab, to_ink}) cmsDeleteTransform(transform);
  EXPECT_EQ(patches, 1617);
  EXPECT_LT(forward / patches, 0.5);
  EXPECT_LT(back / patches, 2.0);
  RecordProperty("mean_delta_e", std::to_string(forward / patches));
  RecordProperty("mean_delta_e_back", std::to_string(back / patches));
}

}  // namespace

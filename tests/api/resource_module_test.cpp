// SetResModule: profiles and tables from a library of resources, and what its absence of them gives.
#include <gtest/gtest.h>

#include "support/converters.h"
#include "support/system.h"

namespace {

using namespace qv_test;

TEST(ResourceModule, IsReadWhenAConverterIsMade) {
  void *const library = LoadModule(kLibrary), *const satellite = LoadModule(kSatellite), *const system = SystemModule();
  ASSERT_TRUE(library && satellite && system);
  const Bytes pixel = {1, 2, 3, 4};
  const ConversionParams icc = Params(METHOD_ICC), table = Params(METHOD_TABLE);
  const ConverterPtr by_icc = MakeConverter(CS_RGB, CS_CMYK, icc);
  const Bytes ink = Converted(by_icc, pixel, 1, 4);

  SetResModule(satellite);
  EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, icc), SUCCESS);
  EXPECT_EQ(InitStatus(CS_RGB, CS_LAB, icc), ERR_PROFILE_OPEN) << "a profile of another colour space";
  EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK, icc), ERR_PROFILE_OPEN) << "no profile";
  EXPECT_EQ(InitStatus(CS_RGB, CS_CMY, icc), 1814) << "the type is there, the number is not";
  SetResModule(system);
  const int32_t status = InitStatus(CS_RGB, CS_CMYK, icc);
  EXPECT_TRUE(status == 1812 || status == 1813) << status;
  EXPECT_EQ(InitStatus(CS_RGB, CS_HSV, icc), ERR_UNSUPPORTED_COLORSPACE) << "the pair is looked at first";
  EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK, Params(METHOD_FORMULA)), SUCCESS) << "formulas need no resources";
  EXPECT_EQ(Converted(by_icc, pixel, 1, 4), ink);
  // Tables that are missing show in conversion.
  for (const auto& [src, dst] : {std::pair{CS_CMYK, CS_RGB}, {CS_RGB, CS_LAB}, {CS_LAB, CS_BGR}}) {
    SetResModule(library);  // the library by its own handle
    const ConverterPtr before = MakeConverter(src, dst, table);
    const Bytes expected = Converted(before, pixel, 1, 3);
    SetResModule(satellite);
    const ConverterPtr without = MakeConverter(src, dst, table);
    Bytes target(3, 0xEE);
    EXPECT_EQ(Q_ClrConvert(without.get(), pixel.data(), target.data(), 1, 1, 0, 0), ERR_UNSUPPORTED_METHOD);
    EXPECT_EQ(target, Bytes(3, 0xEE));
    EXPECT_EQ(Converted(before, pixel, 1, 3), expected) << "it keeps the table that it was made with";
  }
  SetResModule(library);
  EXPECT_EQ(InitStatus(CS_RGB, CS_CMYK, icc), SUCCESS);
  for (void* module : {satellite, system, library}) UnloadModule(module);
}

}  // namespace

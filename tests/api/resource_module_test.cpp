// SetResModule: profiles from a library of resources, and what its absence of them gives.
#include <gtest/gtest.h>

#include "support/converters.h"
#include "support/load_module.h"

namespace {

using namespace qv_test;

int32_t IccStatus(uint32_t dst) {
  ColorConverter* handle = nullptr;
  const ConversionParams params = Params(METHOD_ICC);
  const int32_t status = Q_ClrInit(&handle, CS_RGB, dst, &params);
  if (status == SUCCESS) Q_ClrFree(handle);
  return status;
}

TEST(ResourceModule, IsReadWhenAConverterIsMade) {
  void* library = LoadModule(kLibrary);
  void* satellite = LoadModule(kSatellite);
  void* system = SystemModule();
  ASSERT_TRUE(library && satellite && system);
  const ConverterPtr made_before = MakeConverter(CS_RGB, CS_CMYK, Params(METHOD_ICC));

  SetResModule(satellite);
  EXPECT_EQ(IccStatus(CS_BGR), SUCCESS);
  EXPECT_EQ(IccStatus(CS_LAB), ERR_PROFILE_OPEN) << "a profile of another colour space";
  EXPECT_EQ(IccStatus(CS_CMYK), ERR_PROFILE_OPEN) << "no profile";
  EXPECT_EQ(IccStatus(CS_CMY), 1814) << "the type is there, the number is not";
  SetResModule(system);
  const int32_t status = IccStatus(CS_CMYK);
  EXPECT_TRUE(status == 1812 || status == 1813) << status;
  EXPECT_EQ(IccStatus(CS_HSV), ERR_UNSUPPORTED_COLORSPACE) << "the pair is looked at first";
  EXPECT_TRUE(MakeConverter(CS_RGB, CS_CMYK)) << "formulas need no resources";
  const uint8_t pixel[3] = {1, 2, 3};
  uint8_t ink[4];
  EXPECT_EQ(Q_ClrConvert(made_before.get(), pixel, ink, 1, 1, 0, 0), SUCCESS);

  SetResModule(library);  // the library by its own handle
  EXPECT_EQ(IccStatus(CS_CMYK), SUCCESS);
  UnloadModule(satellite);
  UnloadModule(system);
  UnloadModule(library);
}

}  // namespace

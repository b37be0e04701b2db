// Methods 2 and 4: the built-in profiles and the caller's, as files and in memory, held against the engine called
// directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "support/converters.h"
#include "support/icc_reference.h"
#include "support/system.h"

namespace {

using namespace qv_test;
using std::filesystem::path;

// By the built-in profiles.
Bytes Reference(const IccSide& from, const IccSide& to, const Bytes& source) {
  return ConvertedByEngine(from, BuiltInProfile(from), to, BuiltInProfile(to), source);
}

constexpr int32_t kWidth = 251, kHeight = 64;
Bytes Source(size_t pixel) {
  Bytes source = RandomBytes(size_t{kWidth} * kHeight * pixel);
  for (size_t i = 0; i < 16 * pixel; ++i) source[i] = (i / pixel) >> (i % pixel) & 1 ? 255 : 0;
  return source;
}

void ExpectConversion(const ConverterPtr& converter, const Bytes& source, const Bytes& expected) {
  constexpr int32_t kPadIn = 5, kPadOut = 2;
  // Padded lines that end at an inaccessible page; what stands between them is kept.
  const size_t in_line = source.size() / kHeight, out_line = expected.size() / kHeight;
  GuardedBuffer in(kHeight * (in_line + kPadIn) - kPadIn);
  GuardedBuffer out(Bytes(kHeight * (out_line + kPadOut) - kPadOut, 0xEE));
  for (size_t y = 0; y < kHeight; ++y) std::memcpy(in.data() + y * (in_line + kPadIn), &source[y * in_line], in_line);
  ASSERT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), kWidth, kHeight, kPadIn, kPadOut), SUCCESS);
  for (size_t y = 0; y < kHeight; ++y) {
    const uint8_t* line = out.data() + y * (out_line + kPadOut);
    ASSERT_EQ(std::memcmp(line, &expected[y * out_line], out_line), 0) << "line " << y;
    ASSERT_TRUE(y + 1 == kHeight || (line[out_line] == 0xEE && line[out_line + 1] == 0xEE)) << "padding " << y;
  }
  ASSERT_EQ(Q_ClrConvert(converter.get(), in.data() + 1, out.data(), kWidth, kHeight, kPadIn, kPadOut),
            ERR_BAD_POINTER);
  // In place, and onto the input's second line: as if out of place.
  for (const size_t shift : {size_t{0}, in_line}) {
    Bytes buffer(shift + std::max(source.size(), expected.size()));
    std::ranges::copy(source, buffer.begin());
    ASSERT_EQ(Q_ClrConvert(converter.get(), buffer.data(), buffer.data() + shift, kWidth, kHeight, 0, 0), SUCCESS);
    EXPECT_EQ(std::memcmp(buffer.data() + shift, expected.data(), expected.size()), 0) << "shift " << shift;
  }
}

TEST(BuiltInProfiles, EqualTheEngineCalledDirectly) {
  for (const IccSide& rgb : {kRgb, kBgr}) {
    for (const IccSide& other : {kCmyk, kCmy, kLab, rgb.space == CS_RGB ? kBgr : kRgb}) {
      for (const auto& [from, to] : {std::pair(rgb, other), {other, rgb}}) {
        SCOPED_TRACE(testing::Message() << from.space << " to " << to.space);
        const Bytes source = Source(from.pixel);
        ExpectConversion(MakeConverter(from.space, to.space, Params(METHOD_ICC)), source, Reference(from, to, source));
      }
    }
  }
  for (const uint32_t id : kSpaces) {
    const bool served = id == 2 || id == 6 || id == 7 || id == 11 || id == 12;
    if (id == CS_RGB) continue;
    EXPECT_EQ(InitStatus(CS_RGB, id, Params(METHOD_ICC)), served ? SUCCESS : ERR_UNSUPPORTED_COLORSPACE) << id;
    EXPECT_EQ(InitStatus(id, CS_RGB, Params(METHOD_ICC)), served ? SUCCESS : ERR_UNSUPPORTED_COLORSPACE) << id;
  }
}

// The coding of CS_CMYK_PROFILE in 65536ths (JFIF), one sum per sample.
void CmykFromYccK(const uint8_t* ycck, uint8_t* cmyk) {
  const int y = ycck[0], cb = ycck[1] - 128, cr = ycck[2] - 128;
  const int paper[3] = {y + ((91881 * cr + 32768) >> 16), y + ((-22554 * cb - 46802 * cr + 32768) >> 16),
                        y + ((116130 * cb + 32768) >> 16)};
  for (int i = 0; i < 3; ++i) cmyk[i] = static_cast<uint8_t>(255 - std::clamp(paper[i], 0, 255));
  cmyk[3] = ycck[3];
}
void YccKFromCmyk(const uint8_t* cmyk, uint8_t* ycck) {
  const int r = 255 - cmyk[0], g = 255 - cmyk[1], b = 255 - cmyk[2];
  ycck[0] = static_cast<uint8_t>((19595 * r + 38470 * g + 7471 * b + 0x8000) >> 16);
  ycck[1] = static_cast<uint8_t>((-11059 * r - 21709 * g + 32768 * b + 0x807FFF) >> 16);
  ycck[2] = static_cast<uint8_t>((32768 * r - 27439 * g - 5329 * b + 0x807FFF) >> 16);
  ycck[3] = cmyk[3];
}
Bytes EachPixel(void (*convert)(const uint8_t*, uint8_t*), const Bytes& from) {
  Bytes to(from.size());
  for (size_t i = 0; i < from.size(); i += 4) convert(&from[i], &to[i]);
  return to;
}

TEST(BuiltInProfiles, CarryCmykProfileAsCmyk) {
  const ConversionParams icc = Params(METHOD_ICC);
  for (const IccSide& rgb : {kRgb, kBgr}) {
    const Bytes ycck = Source(4), pixels = Source(3);
    ExpectConversion(MakeConverter(CS_CMYK_PROFILE, rgb.space, icc), ycck,
                     Reference(kCmyk, rgb, EachPixel(CmykFromYccK, ycck)));
    ExpectConversion(MakeConverter(rgb.space, CS_CMYK_PROFILE, icc), pixels,
                     EachPixel(YccKFromCmyk, Reference(rgb, kCmyk, pixels)));
  }
}

struct CustomProfiles : testing::Test {
  const Folder folder{"qv_custom_profiles"};
  ConversionParams params = Params(METHOD_CUSTOM_ICC);
};

// A caller's profile of one side, and its file.
struct Custom {
  IccSide side;
  Bytes profile;
  path file;
};

TEST_F(CustomProfiles, EqualTheEngineCalledDirectly) {
  const auto make = [&](const char* rgb_file, double factor, const char* name) {
    std::vector<Custom> list;
    for (const IccSide& side : {kRgb, kBgr, kCmyk, kCmy, kLab}) {
      const Bytes profile = IsRgb(side) ? Contents(path(QV_PROFILES) / rgb_file) : AlteredProfile(side, factor);
      list.push_back({side, profile, folder.Write(name + std::to_string(side.space), profile)});
    }
    return list;
  };
  constexpr size_t kPixels = 700;
  const std::vector<Custom> targets = make("LStar-RGB.icc", 0.8, "out");
  for (const Custom& from : make("compatibleWithAdobeRGB1998.icc", 0.9, "in")) {
    const Bytes source = RandomBytes(kPixels * from.side.pixel);
    for (const Custom& to : targets) {
      if (!IsRgb(from.side) && !IsRgb(to.side) && from.side.space != to.side.space) continue;
      for (const auto& [lends_source, names_other] :
           {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
        SCOPED_TRACE(testing::Message() << from.side.space << " to " << to.side.space << ", " << lends_source
                                        << names_other);
        const Custom &own = lends_source ? from : to, &other = lends_source ? to : from;
        params = Params(METHOD_CUSTOM_ICC);
        auto *own_name = &params.sSourceProfileName, *other_name = &params.sDestProfileName;
        if (!lends_source) std::swap(own_name, other_name);
        SetName(path(QV_RES) / own.side.file, *own_name);  // memory goes before it
        if (names_other) SetName(other.file, *other_name);
        Bytes lent = own.profile;
        IccMemoryProfile memory = {0, lent.data(), static_cast<uint32_t>(lent.size())};
        (lends_source ? params.pSourceProfileMemory : params.pDestProfileMemory) = &memory;
        const ConverterPtr converter = MakeConverter(from.side.space, to.side.space, params);
        std::ranges::fill(lent, uint8_t{0xDD});
        std::memset(&memory, 0xDD, sizeof memory);
        const Bytes others = names_other ? other.profile : BuiltInProfile(other.side);
        ASSERT_EQ(Converted(converter, source, kPixels, kPixels * to.side.pixel),
                  ConvertedByEngine(from.side, lends_source ? own.profile : others, to.side,
                                    lends_source ? others : own.profile, source));
      }
    }
  }
}

TEST_F(CustomProfiles, HaveNamesOfUpTo259Characters) {
  const path deep = folder.In("") / std::u16string(100, u'Ж');
  std::filesystem::create_directories(deep);
  const size_t left = 259 - deep.string<QWChar>().size() - 1;
  for (const size_t more : {0, 1}) {
    const path name = deep / std::string(left + more, 'n');
    folder.Write(name, BuiltInProfile(kRgb));  // not every system makes the longer one
    SetName(name, params.sSourceProfileName);
    EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), more == 0 ? SUCCESS : ERR_PROFILE_NAME) << name;
  }
}

TEST_F(CustomProfiles, AreRefusedWithTheirReasons) {
  EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), ERR_PROFILE_NAME) << "nothing given";
  const Bytes head = First(BuiltInProfile(kRgb), 140);
  for (const bool source : {true, false}) {
    params = Params(METHOD_CUSTOM_ICC);
    auto& name = source ? params.sSourceProfileName : params.sDestProfileName;
    const IccSide &other_space = source ? kRgb : kCmyk, &own_space = source ? kCmyk : kRgb;
    for (const auto& [file, status] : {std::pair{folder.In("absent"), ERR_PROFILE_NAME},
                                       {folder.Write("empty", {}), ERR_PROFILE_OPEN},
                                       {folder.Write("head", head), ERR_PROFILE_OPEN},
                                       {folder.In("").parent_path(), ERR_PROFILE_OPEN},
                                       {path(QV_RES) / other_space.file, ERR_PROFILE_OPEN}}) {
      SetName(file, name);
      EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), status) << file;
    }
    SetName(folder.In("absent"), name);  // memory goes before it
    const Bytes other = BuiltInProfile(other_space);
    const GuardedBuffer own(BuiltInProfile(own_space));
    const struct {
      const void* bytes;
      size_t count;
      int32_t status;
      size_t readable = sizeof(IccMemoryProfile);
    } kCases[] = {{own.data(), own.size(), SUCCESS},
                  {own.data(), own.size(), ERR_BAD_POINTER, 15},
                  {own.data(), own.size() + 1, ERR_BAD_POINTER},
                  {nullptr, 1, ERR_BAD_POINTER},
                  {own.data(), 0, ERR_PROFILE_OPEN},
                  {own.data(), 140, ERR_PROFILE_OPEN},
                  {other.data(), other.size(), ERR_PROFILE_OPEN}};
    for (const auto& [bytes, count, status, readable] : kCases) {
      const IccMemoryProfile record = {0, bytes, static_cast<uint32_t>(count)};
      const GuardedBuffer lent({reinterpret_cast<const uint8_t*>(&record), readable});
      (source ? params.pSourceProfileMemory : params.pDestProfileMemory) =
          reinterpret_cast<const IccMemoryProfile*>(lent.data());
      EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), status) << count << " bytes, " << readable;
    }
  }
}

TEST_F(CustomProfiles, AreLookedAtOnlyForPairsOfTheEngine) {
  SetName(folder.In("absent"), params.sSourceProfileName);
  params.pDestProfileMemory = reinterpret_cast<const IccMemoryProfile*>(uintptr_t{16});
  for (const ConversionParams& given : {Params(METHOD_CUSTOM_ICC), params}) {
    for (const auto& [from, to] : {std::pair{CS_RGB, CS_YUV}, {CS_XYZ, CS_BGR}, {CS_HSV, CS_HSV}, {CS_RGB, CS_HSI}})
      EXPECT_EQ(InitStatus(from, to, given), ERR_UNSUPPORTED_COLORSPACE) << from << ' ' << to;
    // Neither side is RGB: the formulas convert.
    const Bytes source = RandomBytes(4 * 100);
    EXPECT_EQ(Converted(MakeConverter(CS_CMYK, CS_LAB, given), source, 100, 300),
              Converted(MakeConverter(CS_CMYK, CS_LAB), source, 100, 300));
  }
}

// CS_CMYK_PROFILE takes CMYK profiles; its conversion is not done, and what is told differs: intended.
TEST_F(CustomProfiles, DoNothingForCmykProfile) {
  for (const auto& [from, to] :
       {std::pair{CS_CMYK_PROFILE, CS_RGB}, {CS_BGR, CS_CMYK_PROFILE}, {CS_CMYK_PROFILE, CS_CMYK_PROFILE}}) {
    SCOPED_TRACE(testing::Message() << from << " to " << to);
    SetName(path(QV_RES) / (from == CS_CMYK_PROFILE ? kCmyk : kRgb).file, params.sSourceProfileName);
    SetName(path(QV_RES) / (to == CS_CMYK_PROFILE ? kCmyk : kRgb).file, params.sDestProfileName);
    for (const uint32_t method : {METHOD_CUSTOM_ICC, METHOD_TABLE, METHOD_CUSTOM_TABLE}) {
      if (from == to && method != METHOD_CUSTOM_ICC) continue;
      params.nActiveMethod = method;
      params.nMethodMask = METHOD_CUSTOM_ICC | method;
      const ConverterPtr converter = MakeConverter(from, to, params);
      const Bytes source = RandomBytes(4 * 10), untouched(4 * 10, 0xEE);
      Bytes target = untouched;
      EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), 10, 1, 0, 0),
                method == METHOD_CUSTOM_ICC ? FAILURE : SUCCESS);
      EXPECT_EQ(target, untouched) << method;
    }
    std::swap(params.sSourceProfileName, params.sDestProfileName);
    EXPECT_EQ(InitStatus(from, to, params), from == to ? SUCCESS : ERR_PROFILE_OPEN) << "RGB and CMYK the wrong way";
  }
}

}  // namespace

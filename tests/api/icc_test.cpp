// Methods 2 and 4: the built-in profiles and the caller's, as files and in memory, held against the engine called
// directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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

const std::pair<IccSide, IccSide> kPairs[] = {{kRgb, kCmyk}, {kBgr, kCmyk}, {kCmyk, kRgb}, {kCmyk, kBgr}, {kRgb, kCmy},
                                              {kBgr, kCmy},  {kCmy, kRgb},  {kCmy, kBgr},  {kRgb, kLab},  {kBgr, kLab},
                                              {kLab, kRgb},  {kLab, kBgr},  {kRgb, kBgr},  {kBgr, kRgb}};

TEST(BuiltInProfiles, EqualTheEngineCalledDirectly) {
  constexpr int32_t kWidth = 251, kHeight = 64, kPadIn = 5, kPadOut = 2;
  for (const auto& [from, to] : kPairs) {
    SCOPED_TRACE(std::to_string(from.space) + " to " + std::to_string(to.space));
    const ConverterPtr converter = MakeConverter(from.space, to.space, Params(METHOD_ICC));
    Bytes source = RandomBytes(size_t{kWidth} * kHeight * from.pixel);
    for (size_t i = 0; i < 16 * from.pixel; ++i) source[i] = (i / from.pixel) >> (i % from.pixel) & 1 ? 255 : 0;
    const Bytes expected = Reference(from, to, source);

    // Padded lines that end at an inaccessible page; what stands between them is kept.
    const size_t in_line = kWidth * from.pixel, out_line = kWidth * to.pixel;
    GuardedBuffer in(kHeight * (in_line + kPadIn) - kPadIn), out(kHeight * (out_line + kPadOut) - kPadOut);
    std::memset(out.data(), 0xEE, out.size());
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
      std::memcpy(buffer.data(), source.data(), source.size());
      ASSERT_EQ(Q_ClrConvert(converter.get(), buffer.data(), buffer.data() + shift, kWidth, kHeight, 0, 0), SUCCESS);
      EXPECT_EQ(std::memcmp(buffer.data() + shift, expected.data(), expected.size()), 0) << "shift " << shift;
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
  constexpr size_t kWidth = 37, kHeight = 40, kPad = 3;
  for (const IccSide& rgb : {kRgb, kBgr}) {
    for (const bool decodes : {true, false}) {
      SCOPED_TRACE(testing::Message() << (decodes ? "from" : "to") << " CS_CMYK_PROFILE, other side " << rgb.space);
      const size_t in_line = kWidth * (decodes ? 4 : 3), out_line = kWidth * (decodes ? 3 : 4);
      const Bytes source = RandomBytes(in_line * kHeight);
      const Bytes expected = decodes ? Reference(kCmyk, rgb, EachPixel(CmykFromYccK, source))
                                     : EachPixel(YccKFromCmyk, Reference(rgb, kCmyk, source));
      const uint32_t src_space = decodes ? uint32_t{CS_CMYK_PROFILE} : rgb.space;
      const ConverterPtr converter =
          MakeConverter(src_space, decodes ? rgb.space : uint32_t{CS_CMYK_PROFILE}, Params(METHOD_ICC));
      const size_t in_stride = in_line + kPad, out_stride = out_line + kPad;
      Bytes in(in_stride * kHeight), wanted(out_stride * kHeight, 0xEE), in_place(std::max(in.size(), wanted.size()));
      for (size_t y = 0; y < kHeight; ++y) {
        std::copy_n(&source[y * in_line], in_line, &in[y * in_stride]);
        std::copy_n(&expected[y * out_line], out_line, &wanted[y * out_stride]);
      }
      Bytes out(wanted.size(), 0xEE);
      EXPECT_EQ(Q_ClrConvert(converter.get(), in.data(), out.data(), kWidth, kHeight, kPad, kPad), SUCCESS);
      EXPECT_EQ(out, wanted);
      std::ranges::copy(in, in_place.begin());
      EXPECT_EQ(Q_ClrConvert(converter.get(), in_place.data(), in_place.data(), kWidth, kHeight, kPad, kPad), SUCCESS);
      for (size_t y = 0; y < kHeight; ++y)
        ASSERT_EQ(std::memcmp(&in_place[y * out_stride], &expected[y * out_line], out_line), 0) << "in place, " << y;
    }
  }
}

struct CustomProfiles : testing::Test {
  const Folder folder{"qv_custom_profiles"};
  ConversionParams params = Params(METHOD_CUSTOM_ICC);
};

// A caller's profile of one side, and its file.
struct Custom {
  IccSide side;
  Bytes profile, built_in;
  path file;
};

TEST_F(CustomProfiles, EqualTheEngineCalledDirectly) {
  const auto make = [&](const char* rgb_file, double factor, const char* name) {
    const Bytes rgb = Contents(path(QV_PROFILES) / rgb_file);
    std::vector<Custom> list;
    for (const IccSide& side : {kRgb, kBgr, kCmyk, kCmy, kLab}) {
      const Bytes profile = IsRgb(side) ? rgb : AlteredProfile(side, factor);
      list.push_back({side, profile, BuiltInProfile(side), folder.Write(name + std::to_string(side.space), profile)});
    }
    return list;
  };
  constexpr size_t kPixels = 700;
  const std::vector<Custom> targets = make("LStar-RGB.icc", 0.8, "out");
  for (const Custom& from : make("compatibleWithAdobeRGB1998.icc", 0.9, "in")) {
    const Bytes source = RandomBytes(kPixels * from.side.pixel);
    for (const Custom& to : targets) {
      if (!IsRgb(from.side) && !IsRgb(to.side) && from.side.space != to.side.space) continue;
      for (const auto& [is_source, in_memory, other_as_file] :
           {std::array{false, true, false}, {true, false, false}, {true, true, true}}) {
        SCOPED_TRACE(testing::Message() << from.side.space << " to " << to.side.space << ", " << is_source
                                        << in_memory);
        params = Params(METHOD_CUSTOM_ICC);
        const Custom &given = is_source ? from : to, &other = is_source ? to : from;
        // Memory goes before a name.
        SetName(in_memory ? path(QV_RES) / given.side.file : given.file,
                is_source ? params.sSourceProfileName : params.sDestProfileName);
        if (other_as_file) SetName(other.file, is_source ? params.sDestProfileName : params.sSourceProfileName);
        Bytes lent = given.profile;
        IccMemoryProfile memory = {0, lent.data(), static_cast<uint32_t>(lent.size())};
        if (in_memory) (is_source ? params.pSourceProfileMemory : params.pDestProfileMemory) = &memory;
        const ConverterPtr converter = MakeConverter(from.side.space, to.side.space, params);
        std::ranges::fill(lent, uint8_t{0xDD});
        std::memset(&memory, 0xDD, sizeof memory);
        const Bytes& from_profile = is_source || other_as_file ? from.profile : from.built_in;
        const Bytes& to_profile = !is_source || other_as_file ? to.profile : to.built_in;
        ASSERT_EQ(Converted(converter, source, kPixels, kPixels * to.side.pixel),
                  ConvertedByEngine(from.side, from_profile, to.side, to_profile, source));
      }
    }
  }
}

TEST_F(CustomProfiles, HaveNamesOfEveryScriptAndUpTo259Characters) {
  const Bytes profile = BuiltInProfile(kRgb);
  const path deep = folder.In("") / std::u16string(100, u'Ж');
  std::filesystem::create_directories(deep);
  const size_t left = 259 - deep.string<QWChar>().size() - 1;
  for (const path& name : {folder.In("") / u"Профиль монитора.icc", folder.In("") / u"\U0001F308 色彩.icc",
                           deep / std::string(left, 'n')}) {
    folder.Write(name, profile);
    params = Params(METHOD_CUSTOM_ICC);
    SetName(name, params.sSourceProfileName);
    EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), SUCCESS) << name;
    std::swap(params.sSourceProfileName, params.sDestProfileName);
    EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), SUCCESS) << name;
  }
  const path too_long = deep / std::string(left + 1, 'n');
  folder.Write(too_long, profile);  // not every system makes it
  SetName(too_long, params.sDestProfileName);
  EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), ERR_PROFILE_NAME);
}

TEST_F(CustomProfiles, AreRefusedWithTheirReasons) {
  EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), ERR_PROFILE_NAME) << "nothing given";
  const Bytes head = First(BuiltInProfile(kRgb), 140);
  for (const bool source : {true, false}) {
    params = Params(METHOD_CUSTOM_ICC);
    auto& name = source ? params.sSourceProfileName : params.sDestProfileName;
    const IccSide &other_space = source ? kRgb : kCmyk, &own_space = source ? kCmyk : kRgb;
    for (const auto& [file, status] : {std::pair{folder.In("absent"), ERR_PROFILE_NAME},
                                       {folder.In("absent") / "absent", ERR_PROFILE_NAME},
                                       {folder.Write("text", Text("text")), ERR_PROFILE_OPEN},
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
                  {nullptr, 0, ERR_PROFILE_OPEN},
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

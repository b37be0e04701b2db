// Method 4: the caller's profiles, as files and in memory, held against the engine called directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/converters.h"
#include "support/guarded.h"
#include "support/icc_reference.h"

namespace {

using namespace qv_test;
using std::filesystem::path;
using Name = std::basic_string<QWChar>;

int32_t InitStatus(uint32_t src, uint32_t dst, const ConversionParams& params) {
  ColorConverter* const untouched = reinterpret_cast<ColorConverter*>(uintptr_t{16});
  ColorConverter* handle = untouched;
  const int32_t status = Q_ClrInit(&handle, src, dst, &params);
  EXPECT_EQ(handle == untouched, status != SUCCESS);
  if (status == SUCCESS) EXPECT_EQ(Q_ClrFree(handle), SUCCESS);
  return status;
}

template <typename Char, size_t kUnits>
void SetName(Char (&field)[kUnits], const std::basic_string<Char>& name) {
  std::ranges::fill(field, Char{0});
  std::copy_n(name.begin(), std::min(name.size(), kUnits), field);
}
void SetName(QWChar (&field)[260], const path& name) { SetName(field, name.string<QWChar>()); }

void WriteFile(const path& name, const Bytes& bytes) {
  std::ofstream(name, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

struct CustomProfiles : testing::Test {
  CustomProfiles() { std::filesystem::create_directories(folder); }
  ~CustomProfiles() override { std::filesystem::remove_all(folder); }

  path folder = std::filesystem::temp_directory_path() / "qv_custom_profiles";
};

enum class Given : uint8_t { kNothing, kFile, kMemoryAndFile };

// A caller's profile of one side, and its file.
struct Custom {
  IccSide side;
  Bytes profile;
  path file;

  void Give(Given how, IccMemoryProfile* record, QWChar (&name)[260], const IccMemoryProfile** memory) {
    if (how == Given::kFile) SetName(name, file);
    if (how != Given::kMemoryAndFile) return;
    SetName(name, path(QV_RES) / side.file);  // the profile that must not be taken
    *record = {0, profile.data(), static_cast<uint32_t>(profile.size())};
    *memory = record;
  }
  const Bytes& Taken(Given how, const Bytes& built_in) const { return how == Given::kNothing ? built_in : profile; }
};

TEST_F(CustomProfiles, EqualTheEngineCalledDirectly) {
  const path working_spaces = QV_PROFILES;
  const Bytes adobe = FileBytes(working_spaces / "compatibleWithAdobeRGB1998.icc");
  const Bytes l_star = FileBytes(working_spaces / "LStar-RGB.icc");
  ASSERT_TRUE(!adobe.empty() && !l_star.empty());
  std::vector<Custom> sources = {{kRgb, adobe, {}}, {kBgr, adobe, {}}},
                      targets = {{kRgb, l_star, {}}, {kBgr, l_star, {}}};
  for (const IccSide& side : {kCmyk, kCmy, kLab}) {
    sources.push_back({side, AlteredProfile(side, 0.9), {}});
    targets.push_back({side, AlteredProfile(side, 0.8), {}});
  }
  for (std::vector<Custom>* list : {&sources, &targets}) {
    for (Custom& custom : *list) {
      custom.file = folder / (std::to_string(custom.side.space) + (list == &sources ? " in" : " out"));
      WriteFile(custom.file, custom.profile);
    }
  }

  constexpr int32_t kPixels = 700;
  constexpr std::pair<Given, Given> kSettings[] = {
      {Given::kNothing, Given::kMemoryAndFile}, {Given::kFile, Given::kNothing}, {Given::kMemoryAndFile, Given::kFile}};
  for (const Custom& from : sources) {
    const Bytes source = RandomBytes(kPixels * from.side.pixel), from_built_in = BuiltInProfile(from.side);
    for (const Custom& to : targets) {
      if (!IsRgb(from.side) && !IsRgb(to.side) && from.side.space != to.side.space) continue;
      const Bytes to_built_in = BuiltInProfile(to.side);
      const Bytes by_built_in = ConvertedByEngine(from.side, from_built_in, to.side, to_built_in, source);
      for (const auto& [in, out] : kSettings) {
        SCOPED_TRACE(testing::Message() << from.side.space << " to " << to.side.space << ", given "
                                        << static_cast<int>(in) << " and " << static_cast<int>(out));
        ConversionParams params = Params(METHOD_CUSTOM_ICC);
        Custom lent_in = from, lent_out = to;
        IccMemoryProfile in_record, out_record;
        lent_in.Give(in, &in_record, params.sSourceProfileName, &params.pSourceProfileMemory);
        lent_out.Give(out, &out_record, params.sDestProfileName, &params.pDestProfileMemory);
        const ConverterPtr converter = MakeConverter(from.side.space, to.side.space, params);
        ASSERT_TRUE(converter);
        for (Custom* lent : {&lent_in, &lent_out}) std::ranges::fill(lent->profile, uint8_t{0xDD});
        std::memset(&in_record, 0xDD, sizeof in_record);
        std::memset(&out_record, 0xDD, sizeof out_record);

        const Bytes expected =
            ConvertedByEngine(from.side, from.Taken(in, from_built_in), to.side, to.Taken(out, to_built_in), source);
        EXPECT_NE(expected, by_built_in);
        Bytes target(expected.size());
        ASSERT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), kPixels, 1, 0, 0), SUCCESS);
        EXPECT_EQ(target, expected);
      }
    }
  }
}

TEST_F(CustomProfiles, HaveNamesOfEveryScriptAndUpTo259Characters) {
  const Bytes profile = BuiltInProfile(kRgb);
  ConversionParams params = Params(METHOD_CUSTOM_ICC);
  const path deep = folder / std::u16string(100, u'Ж');
  std::filesystem::create_directories(deep);
  const size_t left = 259 - deep.string<QWChar>().size() - 1;
  const path longest = deep / std::string(left, 'n');
  for (const path& name :
       {folder / u"Профиль монитора.icc", folder / u"色彩 配置.icc", folder / u"\U0001F308.icc", longest}) {
    WriteFile(name, profile);
    SetName(params.sSourceProfileName, name);
    SetName(params.sDestProfileName, Name());
    EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), SUCCESS) << name;
    std::swap(params.sSourceProfileName, params.sDestProfileName);
    EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), SUCCESS) << name;
  }
  const path too_long = deep / std::string(left + 1, 'n');
  WriteFile(too_long, profile);  // not every system makes it
  SetName(params.sDestProfileName, too_long);
  ASSERT_NE(params.sDestProfileName[259], 0);
  EXPECT_EQ(InitStatus(CS_RGB, CS_BGR, params), ERR_PROFILE_NAME);
}

// The narrow names that the system's own narrow functions open.
TEST_F(CustomProfiles, HaveNarrowNames) {
  const std::string in = folder.string() + "/";
  for (const char16_t* name : {u"plain.icc", u"Größe.icc", u"Цвет.icc"}) WriteFile(folder / name, BuiltInProfile(kRgb));
  const std::string longest = in + std::string(259 - in.size(), 'n'), too_long = longest + "n";
  for (const std::string& name : {longest, too_long}) WriteFile(name, BuiltInProfile(kRgb));
  int taken = 0;
  for (const std::string& name : {in + "plain.icc",
                                  in + "Gr\xC3\xB6\xC3\x9F"
                                       "e.icc",
                                  in + "Gr\xF6\xDF"
                                       "e.icc",
                                  in + "\xD0\xA6\xD0\xB2\xD0\xB5\xD1\x82.icc", in + "\xD6\xE2\xE5\xF2.icc",
                                  in + "absent.icc", longest, too_long}) {
    ConversionParamsA params{};
    params.nActiveMethod = params.nMethodMask = METHOD_CUSTOM_ICC;
    SetName(params.sSourceProfileName, name);
    ColorConverter* handle = nullptr;
    const int32_t status = Q_ClrInitA(&handle, CS_RGB, CS_BGR, &params);
    const bool opens = std::ifstream(name.c_str()).good() && name != too_long;
    EXPECT_EQ(status, opens ? SUCCESS : ERR_PROFILE_NAME) << name;
    if (status == SUCCESS) ++taken, Q_ClrFree(handle);
  }
  EXPECT_GE(taken, 2);
}

TEST_F(CustomProfiles, AreRefusedWithTheirReasons) {
  const Bytes rgb = BuiltInProfile(kRgb), text = {'t', 'e', 'x', 't'}, head(rgb.begin(), rgb.begin() + 140);
  WriteFile(folder / "text", text);
  WriteFile(folder / "empty", {});
  WriteFile(folder / "head", head);
  const auto expect = [](const ConversionParams& params, int32_t status, const std::string& what) {
    EXPECT_EQ(InitStatus(CS_CMYK, CS_RGB, params), status) << what;
  };
  expect(Params(METHOD_CUSTOM_ICC), ERR_PROFILE_NAME, "nothing given");
  for (const bool source : {true, false}) {
    ConversionParams params = Params(METHOD_CUSTOM_ICC);
    const IccSide& other_space = source ? kRgb : kCmyk;
    for (const auto& [name, status] : {std::pair{folder / "absent", ERR_PROFILE_NAME},
                                       {folder / "absent" / "absent", ERR_PROFILE_NAME},
                                       {folder / "text", ERR_PROFILE_OPEN},
                                       {folder / "empty", ERR_PROFILE_OPEN},
                                       {folder / "head", ERR_PROFILE_OPEN},
                                       {folder, ERR_PROFILE_OPEN},
                                       {path(QV_RES) / other_space.file, ERR_PROFILE_OPEN}}) {
      SetName(source ? params.sSourceProfileName : params.sDestProfileName, name);
      expect(params, status, name.string());
    }

    // The name of no file stays, and memory goes before it.
    SetName(source ? params.sSourceProfileName : params.sDestProfileName, folder / "absent");
    const Bytes other = BuiltInProfile(other_space), fitting = BuiltInProfile(source ? kCmyk : kRgb);
    const GuardedBuffer guarded{std::span<const uint8_t>(fitting)};
    const auto with_memory = [&](const void* bytes, size_t count, size_t readable = sizeof(IccMemoryProfile)) {
      const IccMemoryProfile record = {0, bytes, static_cast<uint32_t>(count)};
      const GuardedBuffer lent({reinterpret_cast<const uint8_t*>(&record), readable});
      (source ? params.pSourceProfileMemory : params.pDestProfileMemory) =
          reinterpret_cast<const IccMemoryProfile*>(lent.data());
      return InitStatus(CS_CMYK, CS_RGB, params);
    };
    EXPECT_EQ(with_memory(guarded.data(), guarded.size()), SUCCESS);
    EXPECT_EQ(with_memory(guarded.data(), guarded.size(), 15), ERR_BAD_POINTER);
    EXPECT_EQ(with_memory(guarded.data(), guarded.size() + 1), ERR_BAD_POINTER);
    EXPECT_EQ(with_memory(nullptr, 1), ERR_BAD_POINTER);
    EXPECT_EQ(with_memory(nullptr, 0), ERR_PROFILE_OPEN);
    EXPECT_EQ(with_memory(guarded.data(), 0), ERR_PROFILE_OPEN);
    EXPECT_EQ(with_memory(guarded.data(), 140), ERR_PROFILE_OPEN);
    EXPECT_EQ(with_memory(text.data(), text.size()), ERR_PROFILE_OPEN);
    EXPECT_EQ(with_memory(other.data(), other.size()), ERR_PROFILE_OPEN);
  }
}

TEST_F(CustomProfiles, AreLookedAtOnlyForPairsOfTheEngine) {
  const ConversionParams nothing = Params(METHOD_CUSTOM_ICC);
  ConversionParams absent = nothing;
  SetName(absent.sSourceProfileName, folder / "absent");
  absent.pDestProfileMemory = reinterpret_cast<const IccMemoryProfile*>(uintptr_t{16});
  for (const ConversionParams& params : {nothing, absent}) {
    for (const auto& [from, to] : {std::pair{CS_RGB, CS_YUV}, {CS_XYZ, CS_BGR}, {CS_HSV, CS_HSV}, {CS_RGB, CS_HSI}}) {
      EXPECT_EQ(InitStatus(from, to, params), ERR_UNSUPPORTED_COLORSPACE) << from << ' ' << to;
    }
    // Neither side is RGB: the formulas convert.
    const ConverterPtr converter = MakeConverter(CS_CMYK, CS_LAB, params);
    ASSERT_TRUE(converter);
    const Bytes source = RandomBytes(4 * 100);
    Bytes target(3 * 100), expected(3 * 100);
    EXPECT_EQ(Q_ClrConvert(converter.get(), source.data(), target.data(), 100, 1, 0, 0), SUCCESS);
    EXPECT_EQ(Q_ClrConvertDirect(CS_CMYK, CS_LAB, source.data(), expected.data(), 100, 1, 0, 0), SUCCESS);
    EXPECT_EQ(target, expected);
  }
}

// CS_CMYK_PROFILE takes CMYK profiles; its conversion is not done, and what is told differs: intended.
TEST_F(CustomProfiles, DoNothingForCmykProfile) {
  ConversionParams params = Params(METHOD_CUSTOM_ICC | METHOD_TABLE);
  params.nEmulationTableKind = METHOD_TABLE;
  for (const auto& [from, to] :
       {std::pair{CS_CMYK_PROFILE, CS_RGB}, {CS_BGR, CS_CMYK_PROFILE}, {CS_CMYK_PROFILE, CS_CMYK_PROFILE}}) {
    SCOPED_TRACE(testing::Message() << from << " to " << to);
    SetName(params.sSourceProfileName, path(QV_RES) / (from == CS_CMYK_PROFILE ? kCmyk : kRgb).file);
    SetName(params.sDestProfileName, path(QV_RES) / (to == CS_CMYK_PROFILE ? kCmyk : kRgb).file);
    for (const uint32_t method : {METHOD_CUSTOM_ICC, METHOD_TABLE, METHOD_CUSTOM_TABLE}) {
      if (from == to && method != METHOD_CUSTOM_ICC) continue;
      params.nActiveMethod = method;
      params.nMethodMask = METHOD_CUSTOM_ICC | method;
      const ConverterPtr converter = MakeConverter(from, to, params);
      ASSERT_TRUE(converter) << method;
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

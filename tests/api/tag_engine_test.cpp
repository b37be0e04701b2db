// Tags between this library and the colour engine: what either writes, the other reads.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "support/converters.h"
#include "support/icc_reference.h"

namespace {

using namespace qv_test;

struct Close {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using EngineProfile = std::unique_ptr<void, Close>;
struct FreePipeline {
  void operator()(cmsPipeline* pipeline) const { cmsPipelineFree(pipeline); }
};
using Pipeline = std::unique_ptr<cmsPipeline, FreePipeline>;

class Record {
 public:
  Record() {
    Q_InitICCProfile(&record_, sizeof record_);
    Q_InitICCHeader(&record_);
    Q_SetICCDeviceClass(&record_, cmsSigDisplayClass);
    Q_SetICCColorSpace(&record_, cmsSigRgbData);
    Q_SetICCConnectionSpace(&record_, cmsSigXYZData);
  }
  ~Record() { Q_FreeICCProfile(&record_); }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  const IccProfileRecord& operator*() const { return record_; }
  template <typename T>
  void Set(uint32_t signature, uint32_t type, const T& tag) {
    EXPECT_EQ(Q_SetICCTagData(&record_, &tag, signature, type), SUCCESS);
  }
  // The record as the engine sees it, which then knows these bytes.
  EngineProfile Opened() {
    EXPECT_EQ(Q_GenerateICCPointer(&record_), SUCCESS);
    return EngineProfile(cmsOpenProfileFromMem(record_.profileBytes, static_cast<uint32_t>(record_.profileByteSize)));
  }

 private:
  IccProfileRecord record_;
};

template <typename T>
const T* Find(const EngineProfile& profile, cmsTagSignature signature) {
  return static_cast<const T*>(cmsReadTag(profile.get(), signature));
}
template <typename T>
const T& Read(const EngineProfile& profile, cmsTagSignature signature) {
  static const T none[9] = {};
  const T* tag = Find<T>(profile, signature);
  EXPECT_TRUE(tag) << std::hex << signature;
  return tag ? *tag : *none;
}

// The engine writes its tags anew, with the encodings of `version`. What this library reads of them it writes as they
// were; where it arranges parts otherwise, the engine finds the same.
Bytes WrittenByEngine(const EngineProfile& profile, double version) {
  const EngineProfile anew(cmsCreateProfilePlaceholder(nullptr));
  cmsSetProfileVersion(anew.get(), version);
  for (int i = 0; i < cmsGetTagCount(profile.get()); ++i) {
    const cmsTagSignature tag = cmsGetTagSignature(profile.get(), static_cast<uint32_t>(i));
    EXPECT_TRUE(cmsWriteTag(anew.get(), tag, cmsReadTag(profile.get(), tag))) << std::hex << tag;
  }
  uint32_t size = 0;
  EXPECT_TRUE(cmsSaveProfileToMem(anew.get(), nullptr, &size));
  Bytes bytes(size);
  EXPECT_TRUE(cmsSaveProfileToMem(anew.get(), bytes.data(), &size));
  bytes[8] = 4;  // the record takes version 4 only
  return bytes;
}
Bytes TagOf(const IccProfileRecord& record, uint32_t index) {
  const IccTagEntry entry = record.tagTable[index];
  const uint8_t* begin = record.tagData + entry.offset - (132 + 12 * record.tagCount);
  return {begin, begin + entry.size};
}
void ExpectKept(const EngineProfile& profile, double version = 4.2) {
  const Bytes made = WrittenByEngine(profile, version);
  IccProfileRecord from;
  Q_InitICCProfile(&from, sizeof from);
  ASSERT_EQ(Q_FillICCProfileStructure(&from, made.data(), static_cast<uint32_t>(made.size())), SUCCESS);
  EXPECT_EQ(from.tagCount, cmsGetTagCount(profile.get()));
  Record again;
  for (uint32_t i = 0; i < from.tagCount; ++i) {
    const uint32_t signature = from.tagTable[i].signature, type = Q_GetICCTagTypeSig(&from, signature);
    uint8_t tag[128];
    ASSERT_EQ(Q_GetICCTagData(&from, tag, signature), SUCCESS) << std::hex << signature;
    again.Set(signature, type, tag);
    Q_FreeICCTagType(tag, type);
    const bool in_any_order =
        type == cmsSigMultiLocalizedUnicodeType || type == cmsSigLutAtoBType || type == cmsSigLutBtoAType;
    if (!in_any_order) EXPECT_EQ(TagOf(*again, i), TagOf(from, i)) << std::hex << signature;
  }
  Q_FreeICCProfile(&from);
  const Bytes made_again = WrittenByEngine(again.Opened(), version);
  EXPECT_TRUE(std::ranges::equal(std::span(made_again).subspan(128), std::span(made).subspan(128)));
}

uint32_t Fixed(double value) { return static_cast<uint32_t>(std::lround(value * 65536)); }

void ExpectXyz(const cmsCIEXYZ& read, double x, double y, double z) {
  EXPECT_EQ(read.X, x);
  EXPECT_EQ(read.Y, y);
  EXPECT_EQ(read.Z, z);
}

TEST(TagsForTheEngine, CarryNumbers) {
  Record record;
  uint32_t white[] = {Fixed(0.75), Fixed(1), Fixed(-1.5)};
  uint32_t adaptation[9];
  for (int i = 0; i < 9; ++i) adaptation[i] = Fixed(i - 4.25);
  uint32_t coordinates[] = {Fixed(0.5), Fixed(0.25), Fixed(0.125), Fixed(0.625), Fixed(0.75), Fixed(0.0625)};
  uint8_t order[] = {2, 0, 3, 1};
  record.Set(cmsSigMediaWhitePointTag, cmsSigXYZType, IccNumberArrayTagType{0, 0, white, 1});
  record.Set(cmsSigChromaticAdaptationTag, cmsSigS15Fixed16ArrayType, IccNumberArrayTagType{0, 0, adaptation, 9});
  record.Set(cmsSigTechnologyTag, cmsSigSignatureType, IccSignatureTagType{0, 0, 0x435254});
  record.Set(cmsSigCalibrationDateTimeTag, cmsSigDateTimeType, IccDateTimeTagType{0, 0, {2026, 11, 21, 16, 48, 59}});
  record.Set(cmsSigMeasurementTag, cmsSigMeasurementType,
             IccMeasurementTagType{0, 0, 1, {Fixed(0.5), Fixed(2), Fixed(-3)}, 2, Fixed(0.75), 5});
  record.Set(
      cmsSigViewingConditionsTag, cmsSigViewingConditionsType,
      IccViewingConditionsTagType{0, 0, {Fixed(96), Fixed(100), Fixed(82)}, {Fixed(19), Fixed(20), Fixed(16)}, 8});
  record.Set(cmsSigChromaticityTag, cmsSigChromaticityType, IccChromaticityTagType{0, 0, 3, 1, coordinates});
  record.Set(cmsSigColorantOrderTag, cmsSigColorantOrderType, IccColorantOrderTagType{0, 0, 4, order});

  const EngineProfile profile = record.Opened();
  ASSERT_TRUE(profile);
  ExpectXyz(Read<cmsCIEXYZ>(profile, cmsSigMediaWhitePointTag), 0.75, 1, -1.5);
  const double* matrix = &Read<double>(profile, cmsSigChromaticAdaptationTag);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(matrix[i], i - 4.25);
  EXPECT_EQ(Read<cmsSignature>(profile, cmsSigTechnologyTag), cmsSigCRTDisplay) << "three letters, completed";
  const tm& date = Read<tm>(profile, cmsSigCalibrationDateTimeTag);
  EXPECT_EQ(date.tm_year, 126);
  EXPECT_EQ(date.tm_mon, 10);
  EXPECT_EQ(date.tm_mday, 21);
  EXPECT_EQ((date.tm_hour * 60 + date.tm_min) * 60 + date.tm_sec, (16 * 60 + 48) * 60 + 59);
  const auto& measured = Read<cmsICCMeasurementConditions>(profile, cmsSigMeasurementTag);
  EXPECT_EQ(measured.Observer, 1u);
  ExpectXyz(measured.Backing, 0.5, 2, -3);
  EXPECT_EQ(measured.Geometry, 2u);
  EXPECT_EQ(measured.Flare, 0.75);
  EXPECT_EQ(measured.IlluminantType, 5u);
  const auto& viewed = Read<cmsICCViewingConditions>(profile, cmsSigViewingConditionsTag);
  ExpectXyz(viewed.IlluminantXYZ, 96, 100, 82);
  ExpectXyz(viewed.SurroundXYZ, 19, 20, 16);
  EXPECT_EQ(viewed.IlluminantType, 8u);
  const auto& primaries = Read<cmsCIExyYTRIPLE>(profile, cmsSigChromaticityTag);
  EXPECT_EQ(primaries.Red.x, 0.5);
  EXPECT_EQ(primaries.Red.y, 0.25);
  EXPECT_EQ(primaries.Green.x, 0.125);
  EXPECT_EQ(primaries.Blue.y, 0.0625);
  EXPECT_TRUE(std::ranges::equal(order, std::span(&Read<uint8_t>(profile, cmsSigColorantOrderTag), 4)));
  ExpectKept(profile);
}

TEST(TagsForTheEngine, CarryCurves) {
  uint16_t entries[256], gamma[] = {0x01CD};
  for (uint32_t i = 0; i < 256; ++i) entries[i] = static_cast<uint16_t>(i * i + i / 2);
  uint32_t parameters[7];
  constexpr double g = 2.25, a = 0.75, b = 0.125, c = 0.25, d = 0.5, e = 0.0625, f = 0.03125;
  std::ranges::transform(std::initializer_list<double>{g, a, b, c, d, e, f}, parameters, Fixed);
  const auto power = [](double x) { return std::pow(std::max(a * x + b, 0.0), g); };
  const auto expect = [](auto set, auto model) {
    Record record;
    set(record);
    const EngineProfile profile = record.Opened();
    const auto* curve = Find<cmsToneCurve>(profile, cmsSigGrayTRCTag);
    ASSERT_TRUE(curve);
    for (int i = 0; i < 256; ++i) {
      const double x = i / 255.0;
      EXPECT_NEAR(cmsEvalToneCurveFloat(curve, static_cast<float>(x)), model(x), 2e-5) << i;
    }
    ExpectKept(profile);
  };
  const auto curv = [](uint32_t count, uint16_t* of) {
    return [=](Record& record) { record.Set(cmsSigGrayTRCTag, cmsSigCurveType, IccCurveTagType{0, 0, count, of}); };
  };
  const auto para = [&](uint16_t function) {
    return [=, &parameters](Record& record) {
      const IccParametricCurveTagType tag = {0, 0, function, 0, parameters};
      record.Set(cmsSigGrayTRCTag, cmsSigParametricCurveType, tag);
    };
  };
  expect(curv(0, entries), [](double x) { return x; });
  expect(curv(1, gamma), [](double x) { return std::pow(x, 0x1CD / 256.0); });
  expect(curv(256, entries), [&](double x) { return entries[std::lround(x * 255)] / 65535.0; });
  expect(para(0), [](double x) { return std::pow(x, g); });
  expect(para(1), power);
  expect(para(2), [=](double x) { return power(x) + c; });
  expect(para(3), [=](double x) { return x >= d ? power(x) : c * x; });
  expect(para(4), [=](double x) { return x >= d ? power(x) + e : c * x + f; });
}

std::wstring TextOf(const cmsMLU* text, const char* language, const char* country) {
  wchar_t wide[100] = {};
  cmsMLUgetWide(text, language, country, wide, 100);
  return wide;
}

TEST(TagsForTheEngine, CarryTextsAndNames) {
  Record record;
  std::u16string english = u"Paper", german = u"Büttenpapier", japanese = u"紙";
  const auto text = [](const char(&code)[5], std::u16string& of) {
    const auto two = [&](int i) { return static_cast<uint16_t>(code[i] << 8 | code[i + 1]); };
    return IccLocalizedText{two(0), two(2), static_cast<uint32_t>(2 * of.size()), reinterpret_cast<uint16_t*>(&of[0])};
  };
  IccLocalizedText texts[] = {text("enUS", english), text("deDE", german), text("jaJP", japanese)};
  record.Set(cmsSigProfileDescriptionTag, cmsSigMultiLocalizedUnicodeType, IccMultiLocalizedTagType{0, 0, 3, texts});
  IccColorant colorants[] = {{"Cyan", {1, 2, 0xFFFE}}, {"Orange", {0x8000, 0x4000, 3}}};
  record.Set(cmsSigColorantTableTag, cmsSigColorantTableType, IccColorantTableTagType{0, 0, 2, colorants});
  uint16_t inks[2][4] = {{1, 2, 3, 4}, {0xFFFF, 0x8000, 0x7FFF, 0x0100}};
  IccNamedColor named[] = {{"one", {5, 6, 7}, inks[0]}, {"two", {0x0800, 0x0900, 0x0A00}, inks[1]}};
  record.Set(cmsSigNamedColor2Tag, cmsSigNamedColor2Type, IccNamedColorsTagType{0, 0, 7, 2, 4, "pre", "post", named});
  uint8_t maker[] = {'m', 'l', 'u', 'c', 0, 0, 0, 0, 0, 0, 0, 1,  0, 0,   0, 12,
                     'e', 'n', 'U', 'S', 0, 0, 0, 4, 0, 0, 0, 28, 0, 'M', 0, 'k'};
  uint8_t nothing[] = {'m', 'l', 'u', 'c', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 12};
  IccProfileDescription profiles[] = {
      {0x61626364, 0x65666768, 0x8000000000000001, cmsSigCRTDisplay, maker, sizeof maker, nothing, sizeof nothing},
      {1, 2, 3, cmsSigFilmScanner, nothing, sizeof nothing, maker, sizeof maker}};
  record.Set(cmsSigProfileSequenceDescTag, cmsSigProfileSequenceDescType, IccProfileSequenceTagType{0, 0, 2, profiles});

  const EngineProfile profile = record.Opened();
  ASSERT_TRUE(profile);
  const auto* translations = Find<cmsMLU>(profile, cmsSigProfileDescriptionTag);
  EXPECT_EQ(cmsMLUtranslationsCount(translations), 3u);
  EXPECT_EQ(TextOf(translations, "en", "US"), L"Paper");
  EXPECT_EQ(TextOf(translations, "de", "DE"), L"Büttenpapier");
  EXPECT_EQ(TextOf(translations, "ja", "JP"), L"紙");

  const auto expect_color = [&](cmsTagSignature tag, uint32_t i, const char* name, const uint16_t* pcs,
                                const uint16_t* device) {
    const auto* list = Find<cmsNAMEDCOLORLIST>(profile, tag);
    ASSERT_TRUE(list);
    char read[256], prefix[33], suffix[33];
    uint16_t read_pcs[3], read_device[16];
    EXPECT_EQ(cmsNamedColorCount(list), 2u);
    ASSERT_TRUE(cmsNamedColorInfo(list, i, read, prefix, suffix, read_pcs, read_device));
    EXPECT_STREQ(read, name);
    EXPECT_TRUE(std::equal(read_pcs, read_pcs + 3, pcs));
    if (!device) return;
    EXPECT_TRUE(std::equal(read_device, read_device + 4, device));
    EXPECT_STREQ(prefix, "pre");
    EXPECT_STREQ(suffix, "post");
  };
  for (uint32_t i = 0; i < 2; ++i) {
    const IccColorant colorant = colorants[i];
    const IccNamedColor color = named[i];
    uint16_t pcs[3];
    std::memcpy(pcs, colorant.pcs, sizeof pcs);
    expect_color(cmsSigColorantTableTag, i, colorant.name, pcs, nullptr);
    std::memcpy(pcs, color.pcs, sizeof pcs);
    expect_color(cmsSigNamedColor2Tag, i, color.name, pcs, inks[i]);
  }
  const auto& sequence = Read<cmsSEQ>(profile, cmsSigProfileSequenceDescTag);
  ASSERT_EQ(sequence.n, 2u);
  EXPECT_EQ(sequence.seq[0].deviceMfg, 0x61626364u);
  EXPECT_EQ(sequence.seq[0].deviceModel, 0x65666768u);
  EXPECT_EQ(sequence.seq[0].attributes, 0x8000000000000001u);
  EXPECT_EQ(sequence.seq[1].technology, cmsSigFilmScanner);
  EXPECT_EQ(TextOf(sequence.seq[0].Manufacturer, "en", "US"), L"Mk");
  EXPECT_EQ(TextOf(sequence.seq[0].Model, "en", "US"), L"");
  EXPECT_EQ(TextOf(sequence.seq[1].Model, "en", "US"), L"Mk");
  ExpectKept(profile);
}

// Tables of random numbers, which the engine gets once from a tag and once by its own functions.
struct Tables {
  static constexpr uint32_t kGrid[] = {2, 3, 4}, kNodes = 2 * 3 * 4 * 3;

  Tables() {
    const Bytes random = RandomBytes(sizeof curves + sizeof nodes + kNodes);
    std::memcpy(curves, random.data(), sizeof curves);
    std::memcpy(nodes, random.data() + sizeof curves, sizeof nodes);
    std::copy_n(random.end() - kNodes, kNodes, bytes);
    for (int i = 0; i < 12; ++i) factors[i] = (i % 4 == 0 ? 0.5 : 0) + i / 64.0;
    std::ranges::transform(factors, matrix, Fixed);
    for (int i = 0; i < 9; ++i) parametric[i] = {.curve = {cmsSigCurveType, 0, 5, curves[i]}};
    parametric[4].parametric = {cmsSigParametricCurveType, 0, 0, 0, power};
  }
  cmsStage* Curves(int set) const {
    cmsToneCurve* made[3];
    for (int i = 0; i < 3; ++i) {
      const bool is_power = parametric[3 * set + i].curve.typeSignature != cmsSigCurveType;
      made[i] = is_power ? cmsBuildGamma(nullptr, 1.5) : cmsBuildTabulatedToneCurve16(nullptr, 5, curves[3 * set + i]);
    }
    cmsStage* stage = cmsStageAllocToneCurves(nullptr, 3, made);
    cmsFreeToneCurveTriple(made);
    return stage;
  }
  cmsStage* Clut(bool of_bytes, const uint32_t* grid = kGrid) const {
    uint16_t wide[kNodes];
    for (uint32_t i = 0; i < kNodes; ++i) wide[i] = of_bytes ? static_cast<uint16_t>(bytes[i] * 257) : nodes[i];
    return cmsStageAllocCLut16bitGranular(nullptr, grid, 3, 3, wide);
  }
  cmsStage* Matrix(bool offsets) const {
    return cmsStageAllocMatrix(nullptr, 3, 3, factors, offsets ? factors + 9 : nullptr);
  }

  uint16_t curves[9][5], nodes[kNodes];
  uint8_t bytes[kNodes];
  double factors[12];
  uint32_t matrix[12], power[1] = {Fixed(1.5)};
  IccCurveElement parametric[9];
};

void ExpectSame(Record& record, cmsTagSignature tag, double version, std::initializer_list<cmsStage*> stages) {
  const Pipeline model(cmsPipelineAlloc(nullptr, 3, 3));
  for (cmsStage* stage : stages) ASSERT_TRUE(cmsPipelineInsertStage(model.get(), cmsAT_END, stage));
  const EngineProfile profile = record.Opened();
  const auto* read = Find<cmsPipeline>(profile, tag);
  ASSERT_TRUE(read);
  EXPECT_EQ(cmsPipelineStageCount(read), stages.size());
  const Bytes points = RandomBytes(3 * 1000, 5);
  for (size_t i = 0; i < points.size(); i += 3) {
    const float in[] = {points[i] / 255.0f, points[i + 1] / 255.0f, points[i + 2] / 255.0f};
    float out[3], wanted[3];
    cmsPipelineEvalFloat(in, out, read);
    cmsPipelineEvalFloat(in, wanted, model.get());
    for (int k = 0; k < 3; ++k) ASSERT_NEAR(out[k], wanted[k], 1e-6) << i;
  }
  ExpectKept(profile, version);
}

TEST(TagsForTheEngine, CarryTables) {
  Tables t;
  const uint32_t cube[] = {2, 2, 2};
  Record lut;
  IccLutTagType lut_tag = {0, 0, 3, 3, 2, 0, {}, 5, 5, t.curves, t.nodes, t.curves[6]};
  std::memcpy(lut_tag.matrix, t.matrix, sizeof lut_tag.matrix);
  lut.Set(cmsSigAToB0Tag, cmsSigLut16Type, lut_tag);
  ExpectSame(lut, cmsSigAToB0Tag, 2.1, {t.Matrix(false), t.Curves(0), t.Clut(false, cube), t.Curves(2)});

  for (const bool of_bytes : {false, true}) {
    IccClut clut = {{2, 3, 4}, static_cast<uint8_t>(of_bytes ? 1 : 2), {}, 0, nullptr};
    clut.elements = of_bytes ? static_cast<void*>(t.bytes) : t.nodes;
    const IccLutAToBTagType whole = {
        0, 0, 3, 3, 0, &t.parametric[0], t.matrix, &t.parametric[3], &clut, &t.parametric[6]};
    Record to_pcs, from_pcs, curves_only;
    to_pcs.Set(cmsSigAToB0Tag, cmsSigLutAtoBType, whole);
    ExpectSame(to_pcs, cmsSigAToB0Tag, 4.2, {t.Curves(2), t.Clut(of_bytes), t.Curves(1), t.Matrix(true), t.Curves(0)});
    from_pcs.Set(cmsSigBToA0Tag, cmsSigLutBtoAType, whole);
    ExpectSame(from_pcs, cmsSigBToA0Tag, 4.2,
               {t.Curves(0), t.Matrix(true), t.Curves(1), t.Clut(of_bytes), t.Curves(2)});
    curves_only.Set(cmsSigAToB0Tag, cmsSigLutAtoBType, IccLutAToBTagType{0, 0, 3, 3, 0, &t.parametric[3]});
    ExpectSame(curves_only, cmsSigAToB0Tag, 4.2, {t.Curves(1)});
  }
}

}  // namespace

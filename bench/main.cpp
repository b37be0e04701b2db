// Every pair of RGB with another space by formulas, some that meet in RGB, and those that ICC profiles and emulation
// tables serve, through the exported functions; the same by other libraries, where the build found them; two threads
// against one; and every kernel on every instruction set.
#include <benchmark/benchmark.h>

#include <memory>

#include "Qvclr15x.h"
#include "measure.h"
#include "qvclr/icc_transform.h"
#include "qvclr/library.h"
#include "qvclr/tables.h"

namespace {

using namespace qv_bench;

constexpr struct {
  Size size;
  Content content;
} kFrames[] = {{{16, 1}, Content::kPhoto},      {{256, 64}, Content::kPhoto},     {{256, 64}, Content::kRandom},
               {{1920, 1080}, Content::kPhoto}, {{1920, 1080}, Content::kRandom}, {{4000, 3000}, Content::kPhoto},
               {{4000, 3000}, Content::kRandom}};

void Register(const char* group, const std::string& pair, const qv::Space& from, const qv::Space& to,
              const Convert& convert) {
  for (const auto& [size, content] : kFrames) {
    if (!qv::Ok(qv::CheckSizeRules({&from, size.width, size.height, 0}, {&to, size.width, size.height, 0}))) continue;
    const Case c{group, pair, &from, &to, size, content};
    c.Register("this", convert);
    for (const Peer& peer : Peers()) {
      if (peer.group == group && peer.pair == c.pair) c.Register(peer.who, peer.convert);
    }
  }
}

void RegisterFormulas(const qv::Space& from, const qv::Space& to) {
  Register("formulas", PairName(from, to), from, to, [&](const uint8_t* src, uint8_t* dst, Size size) {
    return Q_ClrConvertDirect(from.id, to.id, src, dst, size.width, size.height, 0, 0) == SUCCESS;
  });
}

void RegisterConverter(const char* group, const std::string& pair, const qv::Space& from, const qv::Space& to,
                       const ConversionParams& params) {
  ColorConverter* made = nullptr;
  if (Q_ClrInit(&made, from.id, to.id, &params) != SUCCESS) return;
  const std::shared_ptr<ColorConverter> converter(made, [](ColorConverter* handle) { Q_ClrFree(handle); });
  Register(group, pair, from, to, [=](const uint8_t* src, uint8_t* dst, Size size) {
    return Q_ClrConvert(converter.get(), src, dst, size.width, size.height, 0, 0) == SUCCESS;
  });
}

ConversionParams ParamsOf(uint32_t method) {
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = params.nMethodMask = params.nEmulationTableKind = method;
  return params;
}

void RegisterMethod(const char* group, uint32_t method, const qv::Space& from, const qv::Space& to) {
  RegisterConverter(group, PairName(from, to), from, to, ParamsOf(method));
}

// Profiles of two kinds of RGB.
void RegisterWideRgb() {
  std::span<const uint8_t> srgb;
  if (!qv::Ok(qv::FindBuiltInProfile(*qv::FindSpace(CS_BGR), &srgb))) return;
  const auto memory = [](std::span<const uint8_t> profile) {
    IccMemoryProfile of{};
    of.pBytes = profile.data();
    of.nByteCount = static_cast<uint32_t>(profile.size());
    return of;
  };
  const IccMemoryProfile source = memory(WideRgbProfile()), target = memory(srgb);
  ConversionParams params = ParamsOf(METHOD_CUSTOM_ICC);
  params.pSourceProfileMemory = &source;
  params.pDestProfileMemory = &target;
  RegisterConverter("ICC", kWideRgbPair, *qv::FindSpace(CS_RGB), *qv::FindSpace(CS_BGR), params);
}

void RegisterPair(const qv::Space& from, const qv::Space& to) {
  RegisterFormulas(from, to);
  if (from.icc_format != 0 && to.icc_format != 0) RegisterMethod("ICC", METHOD_ICC, from, to);
  if (qv::TableFor(from.id, to.id)) RegisterMethod("tables", METHOD_TABLE, from, to);
}

}  // namespace

int main(int argc, char** argv) {
  qv::AttachLibrary();
  const qv::Space& rgb = *qv::FindSpace(CS_RGB);
  for (const qv::Space& space : qv::AllSpaces()) {
    if (space.id == CS_RGB) continue;
    RegisterPair(rgb, space);
    RegisterPair(space, rgb);
  }
  RegisterWideRgb();
  constexpr uint32_t kMeetInRgb[][2] = {{CS_CMY, CS_CMYK}, {CS_HSV, CS_XYZ}, {CS_YCBCR, CS_HLS},
                                        {CS_LAB, CS_HSV},  {CS_HLS, CS_LAB}, {CS_YUY2, CS_YCBCR}};
  for (const auto& [from, to] : kMeetInRgb) RegisterFormulas(*qv::FindSpace(from), *qv::FindSpace(to));
  RegisterThreads();
  RegisterTargets();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::ClearRegisteredBenchmarks();  // and the converters that they hold
  qv::DetachLibrary();
  return 0;
}

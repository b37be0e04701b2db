// LittleCMS by itself, with the same profiles: as ICC conversion, and with a table of the emulation tables' grid.
#include <lcms2.h>

#include <memory>

#include "Qvclr15x.h"
#include "measure.h"
#include "qvclr/icc_transform.h"

namespace qv_bench {
namespace {

cmsHPROFILE OpenProfile(const qv::Space& space) {
  std::span<const uint8_t> bytes;
  return qv::Ok(qv::FindBuiltInProfile(space, &bytes))
             ? cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()))
             : nullptr;
}

// Made when it is first run: the profiles are not there before the library is attached.
Peer Transform(const char* group, const std::string& pair, const qv::Space& in, const qv::Space& out,
               const std::function<cmsHPROFILE()>& open_source, cmsUInt32Number flags) {
  const auto transform = std::make_shared<std::shared_ptr<void>>();
  return {"LittleCMS", group, pair, [=, &in, &out](const uint8_t* src, uint8_t* dst, Size size) {
            if (!*transform) {
              cmsHPROFILE source = open_source(), target = OpenProfile(out);
              transform->reset(
                  cmsCreateTransform(source, in.icc_format, target, out.icc_format, INTENT_PERCEPTUAL, flags),
                  [](void* made) { cmsDeleteTransform(made); });
              cmsCloseProfile(source);
              cmsCloseProfile(target);
            }
            cmsDoTransform(transform->get(), src, dst,
                           static_cast<cmsUInt32Number>(size.width) * static_cast<cmsUInt32Number>(size.height));
            return true;
          }};
}

Peer Transform(const char* group, uint32_t from, uint32_t to, cmsUInt32Number flags) {
  const qv::Space &in = *qv::FindSpace(from), &out = *qv::FindSpace(to);
  return Transform(
      group, PairName(in, out), in, out, [&in] { return OpenProfile(in); }, flags);
}

std::vector<Peer> All() {
  std::vector<Peer> peers;
  for (const uint32_t space : {CS_BGR, CS_CMYK, CS_CMY, CS_LAB}) {
    peers.push_back(Transform("ICC", CS_RGB, space, 0));
    peers.push_back(Transform("ICC", space, CS_RGB, 0));
  }
  const auto open_wide = [] {
    const std::span<const uint8_t> bytes = WideRgbProfile();
    return cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  };
  peers.push_back(Transform("ICC", kWideRgbPair, *qv::FindSpace(CS_RGB), *qv::FindSpace(CS_BGR), open_wide, 0));
  peers.push_back(Transform("tables", CS_CMYK, CS_RGB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(17)));
  peers.push_back(Transform("tables", CS_RGB, CS_LAB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(33)));
  peers.push_back(Transform("tables", CS_LAB, CS_RGB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(33)));
  return peers;
}

const AddPeers kLittleCms(All());

}  // namespace

std::span<const uint8_t> WideRgbProfile() {
  static const std::vector<uint8_t> bytes = [] {
    const cmsCIExyY white = {0.3127, 0.329, 1};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 563.0 / 256);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> saved(size);
    cmsSaveProfileToMem(profile, saved.data(), &size);
    cmsCloseProfile(profile);
    return saved;
  }();
  return bytes;
}

}  // namespace qv_bench

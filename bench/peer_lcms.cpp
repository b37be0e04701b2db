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
Peer Transform(const char* group, uint32_t from, uint32_t to, cmsUInt32Number flags) {
  const qv::Space &in = *qv::FindSpace(from), &out = *qv::FindSpace(to);
  const auto transform = std::make_shared<std::shared_ptr<void>>();
  return {"LittleCMS", group, PairName(in, out), [=, &in, &out](const uint8_t* src, uint8_t* dst, Size size) {
            if (!*transform) {
              cmsHPROFILE source = OpenProfile(in), target = OpenProfile(out);
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

std::vector<Peer> All() {
  std::vector<Peer> peers;
  for (const uint32_t space : {CS_BGR, CS_CMYK, CS_CMY, CS_LAB}) {
    peers.push_back(Transform("ICC", CS_RGB, space, 0));
    peers.push_back(Transform("ICC", space, CS_RGB, 0));
  }
  peers.push_back(Transform("tables", CS_CMYK, CS_RGB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(17)));
  peers.push_back(Transform("tables", CS_RGB, CS_LAB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(33)));
  peers.push_back(Transform("tables", CS_LAB, CS_RGB, cmsFLAGS_FORCE_CLUT | cmsFLAGS_GRIDPOINTS(33)));
  return peers;
}

const AddPeers kLittleCms(All());

}  // namespace
}  // namespace qv_bench

#include "qvclr/icc_methods.h"

#include <algorithm>
#include <cstring>

#include "base/files.h"
#include "base/readable.h"
#include "qvclr/icc_engine.h"
#include "qvclr/icc_shared.h"
#include "qvclr/spaces.h"
#include "qvclr/white_point.h"

namespace qv {
namespace {

struct IccPair {
  IccSide in{}, out{};
};

// CS_CMYK_PROFILE is carried to and from the engine as CMYK.
const Space* IccSpace(uint32_t id) {
  const Space* space = FindSpace(id == CS_CMYK_PROFILE ? uint32_t{CS_CMYK} : id);
  return space && space->icc_format != 0 ? space : nullptr;
}

Status PlanPair(ColorConverter* converter, IccPair* pair) {
  if (converter->route == kRouteTwoSteps) return kUnsupportedColorSpace;
  pair->in.space = IccSpace(converter->src_space);
  pair->out.space = IccSpace(converter->dst_space);
  if (!pair->in.space || !pair->out.space) return kUnsupportedColorSpace;
  converter->icc_in_format = pair->in.space->icc_format;
  converter->icc_out_format = pair->out.space->icc_format;
  return kSuccess;
}

// The white point is that of the side that is not RGB; between two RGB sides there is none, and between two others it
// would come and go.
Status WhiteBetween(const IccPair& pair, const ColorConverter& converter, WhitePoint* white) {
  if (!converter.white_point || IsRgb(*pair.in.space) == IsRgb(*pair.out.space)) return kSuccess;
  return WhiteOf(*converter.white_point, white);
}

void Drop(IccTransform*& transform) {
  IccTransform::Delete(transform);
  transform = nullptr;
}

// The caller's profile of one side.
struct CustomProfile {
  const QWChar (&name)[260];
  const IccMemoryProfile* memory;

  bool IsGiven() const { return memory || name[0] != 0; }
};

Status ReadProfile(const QWChar (&name)[260], Owned<uint8_t[]>* bytes, std::span<const uint8_t>* profile) {
  if (!NamesExistingFile(name)) return kProfileName;
  File file;
  int64_t size = 0;
  if (!file.Open(name, Disposition::kReadExisting) || !file.Seek(0, Origin::kEnd, &size)) return kProfileOpen;
  if (size > static_cast<int64_t>(kLargestEngineBlock) || !file.Seek(0, Origin::kStart)) return kProfileOpen;
  *bytes = NewArray<uint8_t>(static_cast<size_t>(size));
  if (!*bytes) return kNoMemory;
  size_t taken = 0;
  if (!file.Read(bytes->get(), static_cast<size_t>(size), &taken)) return kProfileOpen;
  *profile = {bytes->get(), taken};
  return kSuccess;
}

// The bytes of a side's profile; those of a file are kept in `file`.
Status FindProfile(const CustomProfile& custom, const Space& space, Owned<uint8_t[]>* file,
                   std::span<const uint8_t>* profile) {
  if (custom.memory) {
    *profile = {static_cast<const uint8_t*>(custom.memory->pBytes), custom.memory->nByteCount};
    return kSuccess;
  }
  return custom.name[0] != 0 ? ReadProfile(custom.name, file, profile) : FindBuiltInProfile(space, profile);
}

Status TakeMemoryProfile(const IccMemoryProfile* from, IccMemoryProfile** field) {
  if (!from) return kSuccess;
  IccMemoryProfile profile;
  if (!IsReadable(from, sizeof profile)) return kBadPointer;
  std::memcpy(&profile, from, sizeof profile);
  if (profile.nByteCount == 0) return kProfileOpen;
  if (!IsReadable(profile.pBytes, profile.nByteCount)) return kBadPointer;
  auto copy = New<IccMemoryProfile>();
  auto bytes = NewArray<uint8_t>(profile.nByteCount);
  if (!copy || !bytes) return kNoMemory;
  std::memcpy(bytes.get(), profile.pBytes, profile.nByteCount);
  profile.pBytes = bytes.release();
  *copy = profile;
  *field = copy.release();
  return kSuccess;
}

}  // namespace

Status MakeBuiltInIcc(ColorConverter* converter) {
  IccPair pair;
  if (const Status status = PlanPair(converter, &pair); !Ok(status)) return status;
  Drop(converter->built_in_icc);
  for (IccSide* side : {&pair.in, &pair.out}) {
    if (const Status status = FindBuiltInProfile(*side->space, &side->profile); !Ok(status)) return status;
  }
  WhitePoint white;
  if (const Status status = WhiteBetween(pair, *converter, &white); !Ok(status)) return status;
  return ShareTransform(pair.in, pair.out, white, &converter->built_in_icc);
}

Status MakeCustomIcc(ColorConverter* converter) {
  IccPair pair;
  if (const Status status = PlanPair(converter, &pair); !Ok(status)) return status;
  Drop(converter->custom_icc);
  const CustomProfile in{converter->src_profile_name, converter->src_profile_memory};
  const CustomProfile out{converter->dst_profile_name, converter->dst_profile_memory};
  if (!in.IsGiven() && !out.IsGiven()) return kProfileName;
  Owned<uint8_t[]> in_file, out_file;
  if (const Status s = FindProfile(in, *pair.in.space, &in_file, &pair.in.profile); !Ok(s)) return s;
  if (const Status s = FindProfile(out, *pair.out.space, &out_file, &pair.out.profile); !Ok(s)) return s;
  WhitePoint white;
  if (const Status status = WhiteBetween(pair, *converter, &white); !Ok(status)) return status;
  return IccTransform::Make(pair.in, pair.out, white, &converter->custom_icc);
}

Status TakeProfiles(const ConversionParams& params, ColorConverter* converter) {
  IccPair pair;
  if (const Status status = PlanPair(converter, &pair); !Ok(status)) return status;
  TakeProfileNames(params, converter);
  const Status status = TakeMemoryProfile(params.pSourceProfileMemory, &converter->src_profile_memory);
  return Ok(status) ? TakeMemoryProfile(params.pDestProfileMemory, &converter->dst_profile_memory) : status;
}

void TakeProfileNames(const ConversionParams& params, ColorConverter* converter) {
  std::ranges::copy(params.sSourceProfileName, converter->src_profile_name);
  std::ranges::copy(params.sDestProfileName, converter->dst_profile_name);
  if (params.sSourceProfileName[0] != 0) DropMemoryProfile(converter->src_profile_memory);
  if (params.sDestProfileName[0] != 0) DropMemoryProfile(converter->dst_profile_memory);
}

}  // namespace qv

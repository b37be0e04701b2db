#include <hwy/highway.h>

#include <set>

#include "Qvclr15x.h"
#include "measure.h"
#include "qvclr/kernel.h"
#include "qvclr/kernels/kernels.h"
#include "qvclr/tables.h"
#include "scalar_form.h"

namespace qv_bench {
namespace {

struct OnTarget {
  int64_t target;
  explicit OnTarget(int64_t t) : target(t) {
    if (target != 0) hwy::SetSupportedTargetsForTest(target);
  }
  ~OnTarget() {
    if (target != 0) hwy::SetSupportedTargetsForTest(0);
  }
  OnTarget(const OnTarget&) = delete;
  OnTarget& operator=(const OnTarget&) = delete;
};

// Target 0 leaves what is chosen.
Convert Kernelwise(const qv::Kernel& kernel, const qv::Space& from, const qv::Space& to, const uint8_t* table,
                   int64_t target) {
  return [&kernel, &from, &to, table, target](const uint8_t* src, uint8_t* dst, Size size) {
    const OnTarget chosen(target);
    qv::RowArgs args;
    args.table = table;
    return qv::Ok(
        qv::RunKernel(kernel, {&from, size.width, size.height, 0}, src, {&to, size.width, size.height, 0}, dst, args));
  };
}

void RegisterKernel(const qv::Kernel& kernel, const qv::Space& from, const qv::Space& to, const uint8_t* table) {
  const Case c{"targets", kernel.name, &from, &to, {256, 64}, Content::kPhoto};
  const auto& scalar = *static_cast<const qv::Kernel*>(ScalarFormOf(kernel.name));
  c.Register("scalar form", Kernelwise(scalar, from, to, table, 0));
  for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
    if (target == HWY_SCALAR || target == HWY_EMU128) continue;
    c.Register(hwy::TargetName(target), Kernelwise(kernel, from, to, table, target));
  }
}

}  // namespace

void RegisterTargets() {
  const qv::Space& rgb = *qv::FindSpace(CS_RGB);
  std::set<const qv::Kernel*> known;
  const auto add = [&](const qv::Kernel& kernel, const qv::Space& from, const qv::Space& to,
                       const uint8_t* table = nullptr) {
    if (known.insert(&kernel).second) RegisterKernel(kernel, from, to, table);
  };
  for (const qv::Space& space : qv::AllSpaces()) {
    add(*space.from_rgb, rgb, space);
    add(*space.to_rgb, space, rgb);
  }
  for (const auto& [from, to] : {std::pair{CS_CMYK, CS_RGB}, {CS_RGB, CS_LAB}, {CS_LAB, CS_RGB}}) {
    const qv::EmulationTable& table = *qv::TableFor(from, to);
    add(*table.kernel, *qv::FindSpace(from), *qv::FindSpace(to), qv::FindBuiltInTable(table));
  }
}

}  // namespace qv_bench

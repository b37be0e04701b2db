// babl, for the spaces that it has in bytes.
#include <babl/babl.h>

#include "measure.h"

namespace qv_bench {
namespace {

Peer Fish(const char* pair, const char* from, const char* to) {
  return {"babl", "formulas", pair,
          [=, fish = static_cast<const Babl*>(nullptr)](const uint8_t* src, uint8_t* dst, Size size) mutable {
            if (!fish) {
              babl_init();
              fish = babl_fish(babl_format(from), babl_format(to));
            }
            babl_process(fish, src, dst, static_cast<long>(size.width) * size.height);
            return true;
          }};
}

const AddPeers kBabl({Fish("RGB>LAB", "R'G'B' u8", "CIE Lab u8"), Fish("LAB>RGB", "CIE Lab u8", "R'G'B' u8"),
                      Fish("RGB>YCBCR", "R'G'B' u8", "Y'CbCr u8"), Fish("YCBCR>RGB", "Y'CbCr u8", "R'G'B' u8"),
                      Fish("RGB>CMYK", "R'G'B' u8", "CMYK u8"), Fish("CMYK>RGB", "CMYK u8", "R'G'B' u8")});

}  // namespace
}  // namespace qv_bench

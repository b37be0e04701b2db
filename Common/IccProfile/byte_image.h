// Whole profiles as bytes: parsing them into a record and generating them from one.
#pragma once

#include <span>

#include "base/status.h"

namespace qv {

// Fills a fresh record from a profile of `length` bytes, of which `available` are there; the others read as 0.
Status FillFromBytes(IccProfileRecord* record, std::span<const uint8_t> available, uint32_t length);

// Takes the bytes as they are, without looking into them.
Status FillOpaque(IccProfileRecord* record, std::span<const uint8_t> available, uint32_t length);

Status GenerateImage(IccProfileRecord* record);

}  // namespace qv

// Words of the command line as what profiles hold. Each fails with a line for the user.
#pragma once

#include <cstdint>
#include <string>

#include "Qvclr15x.h"

namespace client {

// Up to four characters, completed with spaces, or 0x and eight digits.
uint32_t ParseSignature(const std::string& text);

// Decimal, within a range.
uint64_t ParseWhole(const std::string& text, uint64_t most);

// YYYY-MM-DD hh:mm:ss. Whether there is such a day is for `check` to say.
IccDateTime ParseDate(const std::string& text);
IccDateTime Now();  // in UTC

// Fixed-point numbers, to the nearest. The library's own encoders are made for numbers without a fraction: of 1.5 they
// make 0x18, not 0x00018000.
uint16_t ParseFixed8(const std::string& text);         // u8Fixed8
uint32_t ParseFixed16(const std::string& text);        // u16Fixed16
uint32_t ParseSignedFixed16(const std::string& text);  // s15Fixed16

}  // namespace client

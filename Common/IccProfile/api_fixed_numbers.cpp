// Exported: fixed-point numbers.
#include "IccProfile/fixed_numbers.h"
#include "Qvclr15x.h"

using namespace qv;

extern "C" double Q_U8Fixed8NumberToDouble(uint16_t value) { return DoubleFromFixed8(value); }
extern "C" uint16_t Q_DoubleToU8Fixed8Number(double value) { return Fixed8FromDouble(value); }
extern "C" double Q_2bFixed2bNumberToDouble(uint32_t value) { return DoubleFromFixed16(value); }
extern "C" uint32_t Q_DoubleTo2bFixed2bNumber(double value) { return Fixed16FromDouble(value); }

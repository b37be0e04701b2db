#include "converter.h"

#include "failure.h"

namespace client {

Converter::Converter(const Space& from, const Space& to, const ConverterOptions& options)
    : route_(std::string(from.name) + " to " + to.name + " by " + options.method.name) {
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = options.method.id;
  params.nMethodMask = options.method.id;
  if (options.white_point) params.pWhitePoint = &*options.white_point;
  CmykParams cmyk{sizeof(CmykParams), options.black.value_or(0), 0};
  if (options.black) params.pCmykParams = &cmyk;

  const int32_t status = Q_ClrInit(&handle_, from.id, to.id, &params);
  if (status != SUCCESS) Fail(StatusText(status), " (", route_, ")");
}

Converter::~Converter() { Q_ClrFree(handle_); }

void Converter::Convert(const uint8_t* from, uint8_t* to, int32_t width, int32_t height) {
  const auto start = std::chrono::steady_clock::now();
  const int32_t status = Q_ClrConvert(handle_, from, to, width, height, 0, 0);
  time_ += std::chrono::steady_clock::now() - start;
  if (status != SUCCESS) Fail(StatusText(status), " (", route_, ", ", width, " x ", height, " pixels)");
}

}  // namespace client

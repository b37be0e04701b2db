#include "converter.h"

#include <algorithm>
#include <iterator>

#include "failure.h"
#include "files.h"

namespace client {
namespace {

// Without an RGB side the library converts by formula, whatever the method; equal spaces it leaves to the method.
bool LeftToMethod(const Space& from, const Space& to) {
  const auto is_rgb = [](const Space& space) { return space.id == CS_RGB || space.id == CS_BGR; };
  return from.id == to.id || is_rgb(from) || is_rgb(to);
}

bool GoesByProfiles(const Space& from, const Space& to, const Method& method) {
  return (method.id == METHOD_ICC || method.id == METHOD_CUSTOM_ICC) && LeftToMethod(from, to);
}

// Where there is neither a table nor the formula that makes CMYK, the library reports success and writes nothing.
bool LacksTable(const Space& from, const Space& to, const Method& method) {
  const auto has_table = [](const Space& space) { return space.id == CS_CMYK || space.id == CS_LAB; };
  return (method.id == METHOD_TABLE || method.id == METHOD_CUSTOM_TABLE) && LeftToMethod(from, to) &&
         from.id != to.id && !has_table(from) && !has_table(to);
}

void SetName(const std::string& name, QWChar (&field)[260]) {
  const std::basic_string<QWChar> wide = WideName(name);
  if (wide.size() >= std::size(field)) Fail(name, ": a name of more than ", std::size(field) - 1, " characters");
  std::ranges::copy(wide, field);
}

}  // namespace

Converter::Converter(const Space& from, const Space& to, const ConverterOptions& options)
    : route_(std::string(from.name) + " to " + to.name + " by " + options.method.name),
      by_profiles_(GoesByProfiles(from, to, options.method)) {
  if (LacksTable(from, to, options.method)) Fail("there is no table for this pair of colour spaces (", route_, ")");
  ConversionParams params{};
  params.uStructSize = sizeof params;
  params.nActiveMethod = options.method.id;
  params.nMethodMask = options.method.id;
  params.nEmulationTableKind = options.method.id;
  if (options.white_point) params.pWhitePoint = &*options.white_point;
  CmykParams cmyk{sizeof(CmykParams), options.black.value_or(0), 0};
  if (options.black) params.pCmykParams = &cmyk;
  SetName(options.source_profile, params.sSourceProfileName);
  SetName(options.dest_profile, params.sDestProfileName);
  SetName(options.table, params.sEmulationTableName);

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

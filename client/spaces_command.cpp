// qvclr spaces: the colour spaces as a table, with the bytes that some colours have in each.
#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "names.h"

namespace client {
namespace {

struct Colour {
  const char* name;
  std::array<uint8_t, 3> rgb;
};
constexpr Colour kColours[] = {{"black", {0, 0, 0}},    {"white", {255, 255, 255}}, {"mid-grey", {128, 128, 128}},
                               {"red", {255, 0, 0}},    {"yellow", {255, 255, 0}},  {"green", {0, 255, 0}},
                               {"cyan", {0, 255, 255}}, {"blue", {0, 0, 255}},      {"magenta", {255, 0, 255}}};

// Every size rule takes such a frame.
constexpr int32_t kWidth = 8, kHeight = 4;
constexpr size_t kPixels = size_t{kWidth} * kHeight;

// The samples of one colour, in the order of the layout: those of a pixel, of a group, or one of each plane.
std::vector<uint8_t> StoredBytes(const Space& space, const Colour& colour) {
  std::vector<uint8_t> rgb, stored(kPixels * 4);
  for (size_t i = 0; i < kPixels; ++i) rgb.insert(rgb.end(), colour.rgb.begin(), colour.rgb.end());
  const int32_t status = Q_ClrConvertDirect(CS_RGB, space.id, rgb.data(), stored.data(), kWidth, kHeight, 0, 0);
  if (status != SUCCESS) Fail(space.name, ": ", StatusText(status));
  if (space.Planar()) return {stored[0], stored[kPixels], stored[kPixels + kPixels / 16]};
  stored.resize(space.bits == 12 ? 12 : space.bits == 32 || space.bits == 16 ? 4 : 3);
  return stored;
}

void PrintSpaces() {
  std::printf("| id | name | bits | size | layout |\n|---|---|---|---|---|\n");
  for (const Space& space : AllSpaces()) {
    std::printf("| %u | %s | %u | %s | %s |\n", space.id, space.name, space.bits, space.size_rule, space.layout);
  }
  std::printf("\n| stored by formula |");
  for (const Colour& colour : kColours) std::printf(" %s |", colour.name);
  std::printf("\n|---|---|---|---|---|---|---|---|---|---|\n");
  for (const Space& space : AllSpaces()) {
    std::printf("| %s |", space.name);
    for (const Colour& colour : kColours) {
      for (const uint8_t byte : StoredBytes(space, colour)) std::printf(" %u", byte);
      std::printf(" |");
    }
    std::printf("\n");
  }
}

}  // namespace

void AddSpacesCommand(CLI::App& app) {
  app.add_subcommand("spaces", "List the colour spaces and the bytes of some colours in each")->callback(PrintSpaces);
}

}  // namespace client

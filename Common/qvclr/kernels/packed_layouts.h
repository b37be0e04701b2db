// Where the samples of the packed video layouts stand.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qv {

// Of a group of pixels, in its bytes.
struct Layout {
  uint8_t pixels, bytes;
  uint8_t sharing;  // pixels to a chroma sample
  uint8_t y[8], u[2], v[2];
};
inline constexpr Layout kYuy2 = {2, 4, 2, {0, 2}, {1}, {3}};
inline constexpr Layout kUyvy = {2, 4, 2, {1, 3}, {0}, {2}};
inline constexpr Layout kY41p = {8, 12, 4, {1, 3, 5, 7, 8, 9, 10, 11}, {0, 4}, {2, 6}};

// Of pixel `x`, in a row.
constexpr size_t LumaAt(const Layout& layout, size_t x) {
  return x / layout.pixels * layout.bytes + layout.y[x % layout.pixels];
}
constexpr size_t UAt(const Layout& layout, size_t x) {
  return x / layout.pixels * layout.bytes + layout.u[x % layout.pixels / layout.sharing];
}
constexpr size_t VAt(const Layout& layout, size_t x) {
  return x / layout.pixels * layout.bytes + layout.v[x % layout.pixels / layout.sharing];
}
constexpr size_t BytesOf(const Layout& layout, size_t pixels) { return pixels / layout.pixels * layout.bytes; }

}  // namespace qv

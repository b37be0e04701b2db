// Conversions of packed frames, each timed against memcpy moving as many bytes in the same run.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "qvclr/frame.h"

namespace qv_bench {

enum class Content : uint8_t { kPhoto, kRandom };  // smooth gradients with some noise; or noise

struct Size {
  int32_t width, height;
};

// False when the pixels or the size are refused.
using Convert = std::function<bool(const uint8_t* src, uint8_t* dst, Size size)>;

// A benchmark of the name group/pair/size/content/who. Its counters: million pixels a second, the share of memcpy's
// speed, and nanoseconds a call.
struct Case {
  std::string group, pair;
  const qv::Space *from, *to;
  Size size;
  Content content;
  void Register(const std::string& who, Convert convert) const;
};

std::string NameOf(const qv::Space& space);  // without the prefix of its identifier
std::string PairName(const qv::Space& from, const qv::Space& to);

// Another library's conversion; `pair` as PairName has it.
struct Peer {
  std::string who, group, pair;
  Convert convert;
};
std::vector<Peer>& Peers();
struct AddPeers {
  explicit AddPeers(const std::vector<Peer>& peers) { Peers().insert(Peers().end(), peers.begin(), peers.end()); }
};

// A profile of more colours than the built-in one's, and the pair from it to BGR by that.
std::span<const uint8_t> WideRgbProfile();
inline constexpr char kWideRgbPair[] = "wide RGB>BGR";

void RegisterThreads();
void RegisterTargets();  // every kernel on every instruction set, and its scalar form without vectors of any kind

}  // namespace qv_bench

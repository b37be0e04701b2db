#include "reference/postscript_model.h"

#include <cctype>
#include <optional>
#include <string>

#include "Qvclr15x.h"

namespace qv_test {
namespace {

enum class State : uint8_t { kScanning, kPairs, kDamaged, kEnded };

// One step over `text`, which begins at the current place; takes away what it passes.
State Scan(std::string_view& text) {
  if (text.size() < 5) return State::kDamaged;
  if (text[0] != '%') {
    text.remove_prefix(1);
    return State::kScanning;
  }
  if (text[1] == '%') {
    if (text.size() < 15) return State::kDamaged;
    if (text.starts_with("%%EndICCProfile")) return State::kEnded;
    text.remove_prefix(2);
    return State::kScanning;
  }
  const bool data = text[1] == ' ';
  text.remove_prefix(2);
  return data ? State::kPairs : State::kScanning;
}

State Pair(std::string_view& text, std::optional<uint8_t>& byte) {
  if (text.size() < 4) return State::kDamaged;
  const bool first = std::isxdigit(static_cast<unsigned char>(text[0])) != 0;
  const bool second = std::isxdigit(static_cast<unsigned char>(text[1])) != 0;
  if (first && second) byte = static_cast<uint8_t>(std::stoi(std::string(text.substr(0, 2)), nullptr, 16));
  if (first) {
    text.remove_prefix(second ? 2 : 1);
    return second ? State::kPairs : State::kScanning;
  }
  struct Rule {
    std::string_view opening;
    size_t skip;
    State next;
  };
  for (const Rule& rule : {Rule{"\r\n ", 3, State::kPairs},
                           {"\r\n", 2, State::kScanning},
                           {"\r", 1, State::kScanning},
                           {"%", 0, State::kScanning}}) {
    if (!text.starts_with(rule.opening)) continue;
    text.remove_prefix(rule.skip);
    return rule.next;
  }
  return State::kDamaged;
}

}  // namespace

PostScriptModel::PostScriptModel(std::string_view file) {
  constexpr std::string_view kBegin = "%%BeginICCProfile:";
  const size_t begin = file.find(kBegin);
  status = ERR_ICC_PROFILE_NOT_FOUND;
  if (begin == file.npos) return;
  std::string_view text = file.substr(begin + kBegin.size());
  status = ERR_ICC_PROFILE_NO_DATA;
  if (text.empty()) return;
  State state = State::kScanning;
  while (state == State::kScanning || state == State::kPairs) {
    std::optional<uint8_t> byte;
    state = state == State::kScanning ? Scan(text) : Pair(text, byte);
    if (byte) bytes.push_back(*byte);
  }
  bytes.resize(bytes.empty() ? 0 : (bytes.size() - 1) / 80 * 80);
  status = state == State::kDamaged ? ERR_ICC_PROFILE_DATA : bytes.empty() ? ERR_ICC_PROFILE_NOT_FOUND : SUCCESS;
}

}  // namespace qv_test

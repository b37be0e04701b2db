// What the profile commands show, as a tree: gathered once, printed as text or as JSON.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace client {

struct Member;
struct Signature {
  uint32_t number;
};

struct Value
    : std::variant<std::monostate, uint64_t, double, std::string, Signature, std::vector<Value>, std::vector<Member>> {
  using variant::variant;
};
using List = std::vector<Value>;
using Members = std::vector<Member>;

struct Member {
  std::string name;
  Value value;
};

// Its four characters when all of them are printable ASCII, else "0x" and its digits.
std::string SignatureText(uint32_t signature);
std::string Quoted(uint32_t signature);  // the same, characters in single quotes
std::string Hex(uint64_t number, int digits);
std::string HexBytes(std::span<const uint8_t> bytes);

std::string AsJson(const Value& value);

// A line per member, names and values in two columns; what does not fit in a line follows with a further indent.
std::string AsOutline(const Members& members, size_t indent);

// A line per row under the names of the first row's members; all rows have the same ones.
std::string AsTable(const List& rows);

}  // namespace client

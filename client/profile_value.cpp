#include "profile_value.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "profile_text.h"

namespace client {
namespace {

bool Printable(uint32_t signature) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    const uint32_t byte = signature >> shift & 0xFF;
    if (byte < 0x20 || byte > 0x7E) return false;
  }
  return true;
}

std::string Decimal(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.5f", number);  // tells every s15Fixed16 from its neighbours
  return text;
}

// Calls add(item) for each item, and puts the separator between them.
template <typename Items, typename Add>
std::string Joined(const Items& items, const std::string& separator, Add&& add) {
  std::string text;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += separator;
    text += add(items[i]);
  }
  return text;
}

std::string Escaped(const std::string& text) {
  std::string escaped = "\"";
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", c);
      escaped += code;
    } else {
      if (c == '"' || c == '\\') escaped += '\\';
      escaped += c;
    }
  }
  return escaped + '"';
}

bool Compound(const Value& value) {
  return std::holds_alternative<List>(value) || std::holds_alternative<Members>(value);
}

struct JsonPrinter {
  std::string indent = "\n";

  std::string operator()(std::monostate) const { return "null"; }
  std::string operator()(uint64_t number) const { return std::to_string(number); }
  std::string operator()(double number) const { return Decimal(number); }
  std::string operator()(const std::string& text) const { return Escaped(text); }
  std::string operator()(Signature signature) const { return Escaped(SignatureText(signature.number)); }
  std::string operator()(const List& list) const {
    return Bracketed('[', list, ']', std::ranges::any_of(list, Compound),
                     [](const JsonPrinter& inner, const Value& value) { return std::visit(inner, value); });
  }
  std::string operator()(const Members& members) const {
    return Bracketed('{', members, '}', std::ranges::any_of(members, Compound, &Member::value),
                     [](const JsonPrinter& inner, const Member& member) {
                       return Escaped(member.name) + ": " + std::visit(inner, member.value);
                     });
  }

  // On one line unless an item is compound itself.
  template <typename Items, typename Add>
  std::string Bracketed(char open, const Items& items, char close, bool nested, Add&& add) const {
    const JsonPrinter inner{nested ? indent + "  " : indent};
    std::string text(1, open), separator = nested ? "," : ", ";
    if (nested) separator += inner.indent;
    if (nested) text += inner.indent;
    text += Joined(items, separator, [&](const auto& item) { return add(inner, item); });
    if (nested) text += indent;
    return text += close;
  }
};

// On one line. Of two members the values tell enough.
struct TextPrinter {
  std::string operator()(std::monostate) const { return "none"; }
  std::string operator()(uint64_t number) const { return std::to_string(number); }
  std::string operator()(double number) const { return Decimal(number); }
  std::string operator()(const std::string& text) const { return Visible(text); }
  std::string operator()(Signature signature) const { return Quoted(signature.number); }
  std::string operator()(const List& list) const {
    return Joined(list, ", ", [this](const Value& value) { return std::visit(*this, value); });
  }
  std::string operator()(const Members& members) const {
    const bool named = members.size() > 2;
    return Joined(members, named ? "; " : " ", [&](const Member& member) {
      return (named ? member.name + " " : "") + std::visit(*this, member.value);
    });
  }
};

std::string Text(const Value& value) { return std::visit(TextPrinter{}, value); }

std::string Padded(const std::string& text, size_t width, bool right) {
  const std::string padding(width - std::min(width, text.size()), ' ');
  return right ? padding + text : text + padding;
}

bool Plain(const Value& value) {
  const auto* list = std::get_if<List>(&value);
  return list ? std::ranges::none_of(*list, Compound) : !Compound(value);
}
bool FitsInLine(const Value& value) {
  if (const auto* list = std::get_if<List>(&value); list && list->size() == 1) return FitsInLine(list->front());
  const auto* members = std::get_if<Members>(&value);
  return members ? std::ranges::all_of(*members, Plain, &Member::value) : Plain(value);
}

std::string OutlineOf(const Value& value, size_t indent) {
  if (const auto* members = std::get_if<Members>(&value)) return AsOutline(*members, indent);
  const auto& list = std::get<List>(value);
  Members lines;
  for (size_t i = 0; i < list.size(); ++i) lines.push_back({std::to_string(i + 1), list[i]});
  return AsOutline(lines, indent);
}

}  // namespace

std::string Hex(uint64_t number, int digits) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%0*" PRIX64, digits, number);
  return text;
}

std::string HexBytes(std::span<const uint8_t> bytes) {
  std::string text;
  for (const uint8_t byte : bytes) text += Hex(byte, 2).substr(2);
  return text;
}

std::string SignatureText(uint32_t signature) {
  if (!Printable(signature)) return Hex(signature, 8);
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(signature >> shift & 0xFF);
  return text;
}

std::string Quoted(uint32_t signature) {
  if (!Printable(signature)) return Hex(signature, 8);
  std::string text(1, '\'');
  text += SignatureText(signature);
  return text += '\'';
}

std::string AsJson(const Value& value) { return std::visit(JsonPrinter{}, value) + "\n"; }

std::string AsOutline(const Members& members, size_t indent) {
  const std::string margin(indent, ' ');
  size_t width = 0;
  for (const Member& member : members) width = std::max(width, FitsInLine(member.value) ? member.name.size() : 0);
  std::string lines;
  for (const Member& member : members) {
    if (FitsInLine(member.value)) {
      lines += margin + Padded(member.name, width + 2, false) + Text(member.value) + "\n";
    } else {
      lines += margin + member.name + "\n" + OutlineOf(member.value, indent + 2);
    }
  }
  return lines;
}

std::string AsTable(const List& rows) {
  if (rows.empty()) return "";
  const auto text_of = [&](const Value& row, size_t column) { return Text(std::get<Members>(row)[column].value); };
  const auto& columns = std::get<Members>(rows[0]);
  std::vector<size_t> widths;
  for (size_t i = 0; i < columns.size(); ++i) {
    size_t width = columns[i].name.size();
    for (const Value& row : rows) width = std::max(width, text_of(row, i).size());
    widths.push_back(width);
  }
  std::string table;
  const auto add_line = [&](auto&& cell) {
    std::string line;
    for (size_t i = 0; i < columns.size(); ++i) {
      const bool right = std::holds_alternative<uint64_t>(columns[i].value);
      if (i > 0) line += "  ";
      line += Padded(cell(i), widths[i], right);
    }
    table += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  };
  add_line([&](size_t i) { return columns[i].name; });
  for (const Value& row : rows) add_line([&](size_t i) { return text_of(row, i); });
  return table;
}

}  // namespace client

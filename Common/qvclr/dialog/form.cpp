#include "qvclr/dialog/form.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "qvclr/params.h"
#include "qvclr/spaces.h"
#include "qvclr/tables.h"

namespace qv {
namespace {

constexpr int32_t LabParams::*kLabNumbers[] = {&LabParams::nLOffset, &LabParams::nLRange,  &LabParams::nAOffset,
                                               &LabParams::nARange,  &LabParams::nBOffset, &LabParams::nBRange};
constexpr int kWholeNumbers[] = {QV_EDIT_BLACK,   QV_EDIT_LAB,     QV_EDIT_LAB + 1, QV_EDIT_LAB + 2,
                                 QV_EDIT_LAB + 3, QV_EDIT_LAB + 4, QV_EDIT_LAB + 5};

template <typename SomeDraft>
auto& WholeNumber(int edit, SomeDraft& draft) {
  return edit == QV_EDIT_BLACK ? draft.cmyk.nBlackParam : draft.lab.*kLabNumbers[edit - QV_EDIT_LAB];
}

struct NameField {
  int edit;
  QWChar (ConversionParams::*name)[260];
};
constexpr NameField kNames[] = {{QV_EDIT_SOURCE, &ConversionParams::sSourceProfileName},
                                {QV_EDIT_DEST, &ConversionParams::sDestProfileName},
                                {QV_EDIT_TABLE, &ConversionParams::sEmulationTableName}};

bool IsLab(const Draft& draft) { return EitherIs(CS_LAB, draft.src_space, draft.dst_space); }

uint32_t ShownMethod(const Draft& draft) {
  const uint32_t method = draft.params.nActiveMethod;
  const bool known = std::has_single_bit(method) && (method & (kEveryMethod | METHOD_AUTOMATIC)) != 0;
  const bool by_table = method == METHOD_TABLE || method == METHOD_CUSTOM_TABLE;
  return known && (!by_table || TableFor(draft.src_space, draft.dst_space)) ? method : uint32_t{METHOD_FORMULA};
}

template <typename Number>
FieldText TextOf(Number number, QWChar decimal_mark) {
  std::array<char, 64> digits{};
  std::to_chars(digits.data(), digits.data() + digits.size() - 1, number);
  FieldText text{};
  std::ranges::transform(std::string_view(digits.data()), text.begin(), [&](char digit) {
    return static_cast<QWChar>(digit == '.' && decimal_mark == ',' ? ',' : digit);
  });
  return text;
}

// A point and a comma are both decimal marks, wherever the user is from.
template <typename Number>
std::optional<Number> NumberIn(const FieldText& text) {
  std::array<char, std::tuple_size_v<FieldText>> digits{};
  std::ranges::transform(text, digits.begin(), [](QWChar unit) {
    if (unit == ',') return '.';
    return unit < 128 ? static_cast<char>(unit) : '?';
  });
  std::string_view number(digits.data());
  number.remove_prefix(std::min(number.find_first_not_of(' '), number.size()));
  number = number.substr(0, number.find_last_not_of(' ') + 1);
  Number value{};
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  return error == std::errc() && end == number.data() + number.size() ? std::optional(value) : std::nullopt;
}

bool HasNarrowForm(const FieldText& name) {
  std::array<char, 260> narrow{};
  return NarrowFromWide(name.data(), narrow);
}

Fault TakeNames(const Form& form, Draft* draft) {
  for (const NameField& field : kNames) {
    if (!IsUsed(field.edit, form, *draft)) continue;
    const FieldText& name = form.Text(field.edit);
    if (draft->narrow_names && !HasNarrowForm(name)) return {field.edit, QV_TEXT_NO_NARROW_NAME};
    std::ranges::copy(name, draft->params.*field.name);
  }
  return {};
}

Fault TakeWhitePoint(const Form& form, Draft* draft) {
  if (!IsUsed(QV_WHITE, form, *draft)) return {};
  draft->white_point.nWhitePoint = form.white_point;
  if (!IsUsed(QV_EDIT_X, form, *draft)) return {};
  const auto x = NumberIn<double>(form.Text(QV_EDIT_X));
  if (!x) return {QV_EDIT_X, QV_TEXT_NO_NUMBER};
  const auto y = NumberIn<double>(form.Text(QV_EDIT_Y));
  if (!y) return {QV_EDIT_Y, QV_TEXT_NO_NUMBER};
  draft->white_point.x = *x;
  draft->white_point.y = *y;
  return {};
}

Fault TakeWholeNumbers(const Form& form, Draft* draft) {
  for (const int edit : kWholeNumbers) {
    if (!IsUsed(edit, form, *draft)) continue;
    const auto number = NumberIn<int32_t>(form.Text(edit));
    if (!number) return {edit, QV_TEXT_NO_WHOLE_NUMBER};
    WholeNumber(edit, *draft) = *number;
  }
  return {};
}

}  // namespace

bool HasDialog(uint32_t src_space, uint32_t dst_space) {
  const uint32_t other = IsRgb(src_space) ? dst_space : src_space;
  return (IsRgb(src_space) || IsRgb(dst_space)) && (other == CS_CMYK || other == CS_LAB);
}

Form FormOf(const Draft& draft, QWChar decimal_mark) {
  const uint32_t white = draft.params.pWhitePoint ? draft.white_point.nWhitePoint : 50;
  const bool is_listed = std::ranges::find(kWhitePoints, white) != kWhitePoints.end();
  Form form{};
  form.method = ShownMethod(draft);
  form.white_point = is_listed ? white : kWhitePoints[0];
  form.blue_first = EitherIs(CS_BGR, draft.src_space, draft.dst_space);
  for (const NameField& field : kNames) {
    const auto& name = draft.params.*field.name;
    // Without a terminator it is no name.
    if (std::ranges::find(name, QWChar{0}) != std::end(name)) std::ranges::copy(name, form.Text(field.edit).begin());
  }
  if (draft.params.pWhitePoint) {
    form.Text(QV_EDIT_X) = TextOf<double>(draft.white_point.x, decimal_mark);
    form.Text(QV_EDIT_Y) = TextOf<double>(draft.white_point.y, decimal_mark);
  }
  const bool has_numbers = IsLab(draft) ? draft.params.pLabParams != nullptr : draft.params.pCmykParams != nullptr;
  for (const int edit : kWholeNumbers) {
    if (has_numbers && (edit != QV_EDIT_BLACK) == IsLab(draft)) {
      form.Text(edit) = TextOf(WholeNumber(edit, draft), decimal_mark);
    }
  }
  return form;
}

bool IsUsed(int control, const Form& form, const Draft& draft) {
  const ConversionParams& given = draft.params;
  const uint32_t method = form.method;
  const bool lab = IsLab(draft);
  switch (control) {
    case QV_METHOD_TABLE:
    case QV_METHOD_CUSTOM_TABLE: return TableFor(draft.src_space, draft.dst_space) != nullptr;
    case QV_EDIT_SOURCE:
    case QV_BROWSE_SOURCE: return method == METHOD_CUSTOM_ICC && !given.pSourceProfileMemory;
    case QV_EDIT_DEST:
    case QV_BROWSE_DEST: return method == METHOD_CUSTOM_ICC && !given.pDestProfileMemory;
    case QV_EDIT_TABLE:
    case QV_BROWSE_TABLE: return method == METHOD_CUSTOM_TABLE;
    case QV_WHITE:
    case QV_EDIT_X:
    case QV_EDIT_Y: {
      const bool by_profile =
          method == METHOD_ICC || method == METHOD_CUSTOM_ICC || (method == METHOD_AUTOMATIC && !lab);
      return given.pWhitePoint && by_profile && (control == QV_WHITE || form.white_point == 0);
    }
    case QV_EDIT_BLACK: return given.pCmykParams && !lab && method == METHOD_FORMULA;
    default: break;
  }
  if (control < QV_EDIT_LAB || control > QV_EDIT_LAST) return true;
  return given.pLabParams && lab && (method == METHOD_FORMULA || method == METHOD_AUTOMATIC);
}

Fault TakeForm(const Form& form, Draft* draft) {
  ConversionParams& params = draft->params;
  params.nActiveMethod = params.nMethodMask = form.method;
  if (form.method == METHOD_TABLE) params.nEmulationTableKind = METHOD_TABLE;
  uint32_t& rgb_side = IsRgb(draft->src_space) ? draft->src_space : draft->dst_space;
  rgb_side = form.blue_first ? CS_BGR : CS_RGB;

  Fault fault = TakeNames(form, draft);
  if (!fault.control) fault = TakeWhitePoint(form, draft);
  if (!fault.control) fault = TakeWholeNumbers(form, draft);
  return fault;
}

}  // namespace qv
